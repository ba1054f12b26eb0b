// The navigator: the whole graph in miniature in a corner of the view, the
// visible window framed in it; a click or drag in it moves the view.
#include <algorithm>

#include "graph_view/FXGraphView.h"
#include "host/config/EditorPreferences.h"

namespace {
constexpr int maxWidth = 160, maxHeight = 110, margin = 8, inset = 4;
} // namespace

void FXGraphView::setNavigatorOn(bool on) {
  if (on == navigatorOn_) return;
  navigatorOn_ = on;
  navigating_ = false;
  prefs().setPreference(navigatorPreference, on);
  redraw();
}

bool FXGraphView::navigatorMap(NavigatorMap& map) const {
  if (!navigatorOn_ || nodes_.empty()) return false;
  // Hidden while everything fits the view.
  const auto w = getWindowPos();
  const XY<double> lo = viewToGraphSpace(XY<double>(w.x0, w.y0)), hi = viewToGraphSpace(XY<double>(w.x1, w.y1));
  const GraphBox visible{std::min(lo.x, hi.x), std::min(lo.y, hi.y), std::max(lo.x, hi.x), std::max(lo.y, hi.y)};
  const GraphBox g = getGraphExtents();
  if (g.x0 >= visible.x0 && g.x1 <= visible.x1 && g.y0 >= visible.y0 && g.y1 <= visible.y1) return false;
  // The graph with half a window round it: the frame shows whole wherever
  // the navigator puts the view, and the miniature keeps still while the
  // view moves.
  const double halfW = (visible.x1 - visible.x0) / 2, halfH = (visible.y1 - visible.y0) / 2;
  map.graph = {g.x0 - halfW, g.y0 - halfH, g.x1 + halfW, g.y1 + halfH};
  const double gw = std::max(map.graph.x1 - map.graph.x0, 1e-9), gh = std::max(map.graph.y1 - map.graph.y0, 1e-9);
  const int roomW = std::min(maxWidth, (w.x1 - w.x0) / 3), roomH = std::min(maxHeight, (w.y1 - w.y0) / 3);
  if (roomW < 24 || roomH < 24) return false; // no room for it
  map.scale = std::min((roomW - 2 * inset) / gw, (roomH - 2 * inset) / gh);
  const int bw = static_cast<int>(gw * map.scale) + 2 * inset, bh = static_cast<int>(gh * map.scale) + 2 * inset;
  // The bottom-right corner, clear of the scroll bars.
  map.box = {w.x1 - margin - bw, w.y0 + margin, w.x1 - margin, w.y0 + margin + bh};
  return true;
}

bool FXGraphView::navigatorGeometry(PixelBox& box, PixelBox& window) const {
  NavigatorMap map;
  if (!navigatorMap(map)) return false;
  const auto w = getWindowPos();
  auto toPixel = [&](XY<double> p) {
    return XY<int>(map.box.x0 + inset + static_cast<int>((p.x - map.graph.x0) * map.scale),
                   map.box.y0 + inset + static_cast<int>((p.y - map.graph.y0) * map.scale));
  };
  const XY<int> a = toPixel(viewToGraphSpace(XY<double>(w.x0, w.y0))),
                b = toPixel(viewToGraphSpace(XY<double>(w.x1, w.y1)));
  box = map.box;
  window = {std::min(a.x, b.x), std::min(a.y, b.y), std::max(a.x, b.x), std::max(a.y, b.y)};
  return true;
}

void FXGraphView::navigateTo(XY<int> pixel) {
  NavigatorMap map;
  if (!navigatorMap(map)) return;
  const double x = map.graph.x0 + (pixel.x - map.box.x0 - inset) / map.scale;
  const double y = map.graph.y0 + (pixel.y - map.box.y0 - inset) / map.scale;
  const GraphBox g = getGraphExtents();
  setViewCentre(std::clamp(x, g.x0, g.x1), std::clamp(y, g.y0, g.y1));
  updateScrollbars(true);
  redraw();
}

void FXGraphView::drawNavigator() {
  NavigatorMap map;
  PixelBox box, window;
  if (!navigatorMap(map) || !navigatorGeometry(box, window) || !drawArea(box)) return;
  CanvasRenderer r = canvas().renderer();
  r.renderPrimitive(Glib::RectDescription{box, fromColour(Colour(0.12, 0.13, 0.15, 0.85))});
  // Each node a small block in its colour; every one at least a pixel.
  for (const auto& n : nodes_) {
    if (!n->isVisibleFlag()) continue;
    const int x0 = box.x0 + inset + static_cast<int>((n->getL() - map.graph.x0) * map.scale);
    const int y0 = box.y0 + inset + static_cast<int>((n->getB() - map.graph.y0) * map.scale);
    const int x1 = std::max(x0 + 1, box.x0 + inset + static_cast<int>((n->getR() - map.graph.x0) * map.scale));
    const int y1 = std::max(y0 + 1, box.y0 + inset + static_cast<int>((n->getT() - map.graph.y0) * map.scale));
    r.renderPrimitive(Glib::RectDescription{PixelBox{x0, y0, x1, y1}, fromColour(n->getMainCol())});
  }
  r.renderPrimitive(Glib::FrameDescription{window, fromColour(Colour(1.0, 0.85, 0.3)), 1});
  r.renderPrimitive(Glib::FrameDescription{box, fromColour(getPalette().window(5)), 1});
  r.addModifiedArea(box);
}
