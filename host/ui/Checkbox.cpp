#include "host/ui/Checkbox.h"

#include "host/ui/TextMetrics.h"
#include "host/ui/UifStd.h"

namespace {
constexpr int boxSide = 14; // the tick box, pixels
constexpr int margin = 3;   // left of the box and right of the label
} // namespace

Checkbox::Checkbox(const LightweightString<wchar_t>& label, bool checked, int width, int height)
    : Button({width > 0 ? width : calcWidth(label, 0, 0, false), height > 0 ? height : UifStd::getRowHeight()},
             LightweightString<char>()),
      label_(label), checked_(checked) {}

int Checkbox::calcWidth(const LightweightString<wchar_t>& label, int borderType, int, bool) {
  const int frame = borderType != 0 ? 2 : 0;
  return frame + margin + boxSide + UifStd::getWidgetGap() + measureText(label).x + margin;
}

void Checkbox::setState(bool checked, bool redrawNow) {
  if (checked_ == checked) return;
  checked_ = checked;
  if (redrawNow) redraw();
}

void Checkbox::clicked() {
  checked_ = !checked_;
  redraw();
  sendMessage(LightweightString<char>(messagePrefix) + (checked_ ? "On" : "Off"));
}

void Checkbox::draw() {
  const int w = width(), h = height();
  const Palette& p = getPalette();
  drawRect({0, 0, w, h}, p.window(3));
  const int y0 = (h - boxSide) / 2;
  const PixelBox box{margin, y0, margin + boxSide, y0 + boxSide};
  drawRect(box, isPressed() ? p.window(1) : Colour(1, 1, 1));
  drawFrame(box, p.window(6), 1);
  const Colour ink = inkColour();
  if (checked_) {
    CanvasRenderer r = canvas().renderer();
    // A tick: down from the left third to the bottom, then up to the top right.
    r.renderPrimitive(Glib::LineDescription{{box.x0 + 3, box.y0 + 7}, {box.x0 + 6, box.y0 + 3}, fromColour(ink), 2});
    r.renderPrimitive(Glib::LineDescription{{box.x0 + 6, box.y0 + 3}, {box.x1 - 3, box.y1 - 3}, fromColour(ink), 2});
  }
  drawText({box.x1 + UifStd::getWidgetGap(), 0, w - margin, h}, label_, ink, {}, 0);
}
