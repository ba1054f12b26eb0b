// The navigator: the whole graph in miniature in a corner of the view, the
// visible window framed in it; a click or drag in it moves the view.
#include "graph_view/Navigator.h"

#include <algorithm>

#include "graph_view/FXGraphView.h"
#include "host/config/EditorPreferences.h"

namespace {
constexpr int maxWidth = 160, maxHeight = 110, margin = 8, inset = 4;
} // namespace

Navigator::Navigator(FXGraphView& view) : ViewPart(view), on_(prefs().getPreference(preference, true)) {}

void Navigator::setOn(bool on) {
  if (on == on_) return;
  on_ = on;
  view_.endNavigating();
  prefs().setPreference(preference, on);
  view_.redraw();
}

bool Navigator::map(Map& out) const {
  if (!on_ || view_.nodes().empty()) return false;
  // Hidden while everything fits the view.
  const auto w = view_.getWindowPos();
  const XY<double> lo = view_.viewToGraphSpace(XY<double>(w.x0, w.y0)),
                   hi = view_.viewToGraphSpace(XY<double>(w.x1, w.y1));
  const FXGraphView::GraphBox visible{std::min(lo.x, hi.x), std::min(lo.y, hi.y), std::max(lo.x, hi.x),
                                      std::max(lo.y, hi.y)};
  const FXGraphView::GraphBox g = view_.getGraphExtents();
  if (g.x0 >= visible.x0 && g.x1 <= visible.x1 && g.y0 >= visible.y0 && g.y1 <= visible.y1) return false;
  // The graph with half a window round it: the frame shows whole wherever
  // the navigator puts the view, and the miniature keeps still while the
  // view moves. A view centred off the graph widens it, so that its frame
  // never leaves the box.
  const double halfW = (visible.x1 - visible.x0) / 2, halfH = (visible.y1 - visible.y0) / 2;
  out.graph = {std::min(g.x0 - halfW, visible.x0), std::min(g.y0 - halfH, visible.y0),
               std::max(g.x1 + halfW, visible.x1), std::max(g.y1 + halfH, visible.y1)};
  const double gw = std::max(out.graph.x1 - out.graph.x0, 1e-9), gh = std::max(out.graph.y1 - out.graph.y0, 1e-9);
  const int roomW = std::min(maxWidth, (w.x1 - w.x0) / 3), roomH = std::min(maxHeight, (w.y1 - w.y0) / 3);
  if (roomW < 24 || roomH < 24) return false; // no room for it
  out.scale = std::min((roomW - 2 * inset) / gw, (roomH - 2 * inset) / gh);
  const int bw = static_cast<int>(gw * out.scale) + 2 * inset, bh = static_cast<int>(gh * out.scale) + 2 * inset;
  // The bottom-right corner, clear of the scroll bars.
  out.box = {w.x1 - margin - bw, w.y0 + margin, w.x1 - margin, w.y0 + margin + bh};
  return true;
}

bool Navigator::geometry(PixelBox& box, PixelBox& window) const {
  Map m;
  if (!map(m)) return false;
  const auto w = view_.getWindowPos();
  auto toPixel = [&](XY<double> p) {
    return XY<int>(m.box.x0 + inset + static_cast<int>((p.x - m.graph.x0) * m.scale),
                   m.box.y0 + inset + static_cast<int>((p.y - m.graph.y0) * m.scale));
  };
  const XY<int> a = toPixel(view_.viewToGraphSpace(XY<double>(w.x0, w.y0))),
                b = toPixel(view_.viewToGraphSpace(XY<double>(w.x1, w.y1)));
  box = m.box;
  // Inside the box, rounding or not.
  window = {std::max(std::min(a.x, b.x), box.x0), std::max(std::min(a.y, b.y), box.y0),
            std::min(std::max(a.x, b.x), box.x1), std::min(std::max(a.y, b.y), box.y1)};
  return true;
}

int Navigator::nodeBoxes() const {
  Map m;
  return map(m) ? drawnBoxes_ : 0;
}

bool Navigator::contains(XY<int> point) const {
  PixelBox box, window;
  return geometry(box, window) && point.x >= box.x0 && point.x <= box.x1 && point.y >= box.y0 && point.y <= box.y1;
}

void Navigator::navigateTo(XY<int> pixel) {
  Map m;
  if (!map(m)) return;
  const double x = m.graph.x0 + (pixel.x - m.box.x0 - inset) / m.scale;
  const double y = m.graph.y0 + (pixel.y - m.box.y0 - inset) / m.scale;
  const FXGraphView::GraphBox g = view_.getGraphExtents();
  view_.setViewCentre(std::clamp(x, g.x0, g.x1), std::clamp(y, g.y0, g.y1));
  view_.updateScrollbars(true);
  view_.redraw();
}

void Navigator::draw() {
  Map m;
  PixelBox box, window;
  if (!map(m) || !geometry(box, window) || !view_.drawArea(box)) return;
  drawnBoxes_ = 0;
  CanvasRenderer r = view_.canvas().renderer();
  r.renderPrimitive(Glib::RectDescription{box, fromColour(Colour(0.12, 0.13, 0.15, 0.85))});
  // Each node a small block in its colour, whether or not the view has
  // drawn it; every one at least a pixel.
  for (const auto& n : view_.nodes()) {
    const int x0 = box.x0 + inset + static_cast<int>((n->getL() - m.graph.x0) * m.scale);
    const int y0 = box.y0 + inset + static_cast<int>((n->getB() - m.graph.y0) * m.scale);
    const int x1 = std::max(x0 + 1, box.x0 + inset + static_cast<int>((n->getR() - m.graph.x0) * m.scale));
    const int y1 = std::max(y0 + 1, box.y0 + inset + static_cast<int>((n->getT() - m.graph.y0) * m.scale));
    r.renderPrimitive(Glib::RectDescription{PixelBox{x0, y0, x1, y1}, fromColour(n->getMainCol())});
    ++drawnBoxes_;
  }
  r.renderPrimitive(Glib::FrameDescription{window, fromColour(Colour(1.0, 0.85, 0.3)), 1});
  r.renderPrimitive(Glib::FrameDescription{box, fromColour(view_.getPalette().window(5)), 1});
  r.addModifiedArea(box);
}
