#include "graph_view/Framing.h"

#include <algorithm>
#include <cmath>

#include "graph_view/FXGraphView.h"
#include "graph_view/ViewStills.h"

namespace {
// Pixels left round a framed graph.
constexpr int margin = 20;

XY<double> centreOf(const FXGraphViewNode& n) { return {(n.getL() + n.getR()) / 2, (n.getB() + n.getT()) / 2}; }
} // namespace

void Framing::frame(FXGraphView& view, Zoom zoom) {
  if (view.nodes().empty()) return;
  // The graph's middle at the view's middle, clear of the preview's band
  // at the top by as much again at the bottom.
  const auto w = view.getWindowPos();
  const auto free = view.stills().freeArea();
  const int band = w.y1 - free.y1;
  const FXGraphView::GraphBox g = view.getGraphExtents();
  const double gw = std::max(g.x1 - g.x0, 1e-6), gh = std::max(g.y1 - g.y0, 1e-6);
  const double fw = std::max(1, w.x1 - w.x0 - 2 * margin), fh = std::max(1, w.y1 - w.y0 - 2 * (band + margin));
  view.keepCanvasAroundGraph();
  const double s0 = view.calcPhysicalScale(0), s1 = view.calcPhysicalScale(1);
  const double want = std::min(fw / gw, fh / gh);
  if (zoom == Zoom::fit && s1 > s0) view.setViewZoom(std::clamp((want - s0) / (s1 - s0), 0.0, 1.0));
  view.setViewCentre((g.x0 + g.x1) / 2, (g.y0 + g.y1) / 2);
  view.updateScrollbars(true);
  view.redraw();
}

Framing::Anchor Framing::hold(const FXGraphView& view) {
  Anchor a;
  Ux::Ptr<FXGraphViewNode> n = view.keyboardFocus().valid() ? view.findViewRecForNode(view.keyboardFocus()) : nullptr;
  if (!n)
    for (const auto& m : view.nodes())
      if (m->isPrimary()) {
        n = m;
        break;
      }
  if (!n) return a;
  a.node = n->getNodeID();
  a.pixel = view.graphToViewSpace(centreOf(*n));
  return a;
}

void Framing::restore(FXGraphView& view, const Anchor& anchor) {
  const Ux::Ptr<FXGraphViewNode> n = anchor.node.valid() ? view.findViewRecForNode(anchor.node) : nullptr;
  if (!n) return;
  const XY<double> now = view.graphToViewSpace(centreOf(*n));
  const double s = view.getScale();
  const XY<double> c = view.getViewCentre();
  view.setViewCentre(c.x + (now.x - anchor.pixel.x) / s, c.y + (now.y - anchor.pixel.y) / s);
  view.updateScrollbars(true);
}
