#include "graph_view/ViewNotice.h"

#include <algorithm>

#include "graph_view/FXGraphView.h"
#include "host/ui/TextMetrics.h"

namespace {
constexpr int height = 22, inset = 8;
} // namespace

void ViewNotice::say(const LightweightString<wchar_t>& text) {
  text_ = text;
  view_.redraw();
}

void ViewNotice::clear() {
  if (text_.empty()) return;
  text_ = {};
  view_.redraw();
}

bool ViewNotice::mouse(const Event& e) {
  if (e.type == Event::mouseDown) clear();
  return false;
}

bool ViewNotice::key(const Event& e) {
  if (e.type == Event::keyDown) clear();
  return false;
}

void ViewNotice::draw() {
  if (text_.empty()) return;
  const auto w = view_.getWindowPos();
  const int width = std::min(w.x1 - w.x0 - 2 * inset, measureText(text_).x + 24);
  const FXGraphView::PixelBox box{w.x0 + inset, w.y0 + inset, w.x0 + inset + width, w.y0 + inset + height};
  if (!view_.drawArea(box)) return;
  {
    CanvasRenderer r = view_.canvas().renderer();
    r.renderPrimitive(Glib::RectDescription{box, fromColour(Colour(0.35, 0.12, 0.08, 0.92))});
    r.addModifiedArea(box);
  }
  view_.drawText({box.x0 + 12, box.y0, box.x1 - 6, box.y1}, text_, Colour(1, 0.93, 0.85), {});
}
