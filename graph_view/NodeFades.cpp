#include "graph_view/NodeFades.h"

#include <algorithm>

#include "graph_view/FXGraphView.h"

void NodeFades::start(std::vector<IdStamp> ids) {
  fading_ = std::move(ids);
  progress_ = 0;
  if (!hold_) hold_ = TimerHold(view_);
}

bool NodeFades::advance(double by) {
  if (fading_.empty() || progress_ >= 1) return false;
  progress_ = std::min(1.0, progress_ + by / seconds);
  if (progress_ >= 1) {
    fading_.clear();
    hold_.release();
  }
  view_.redraw();
  return true;
}

void NodeFades::draw() {
  if (fading_.empty() || progress_ >= 1) return;
  // A ring round each new node, strongest when it appears; cool blue, apart
  // from the primary node's warm highlight.
  const Colour glow(0.45, 0.8, 1.0, 1 - progress_);
  for (const IdStamp& id : fading_) {
    Ux::Ptr<FXGraphViewNode> n = view_.findViewRecForNode(id);
    if (!n || !n->drawnLast()) continue;
    view_.drawRing(n->pixelBox(), 1, std::max(2, static_cast<int>(view_.getScale() * 0.008)), glow);
  }
}
