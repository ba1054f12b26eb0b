// Effect templates laid into the graph: dropped on a node or a wire, or
// chosen in search to add.
#include "graph_view/TemplateDrops.h"

#include <algorithm>
#include <cmath>

#include "graph_view/ViewNotice.h"
#include "host/edit/EffectInstance.h"
#include "host/edit/FXEditor.h"
#include "host/edit/TransitStatus.h"
#include "host/ui/EffectsBrowser.h"

namespace {
// A new effect made from a template, for a graph of the given track type.
Ux::Ptr<EffectInstance> effectFromTemplate(const Edit& edit, const EffectTemplateSummary& t, TrackType type) {
  Ux::Ptr<EffectInstance> effect(new EffectInstance(FXEditor::newNodeId(edit), t.name, t.tagTypeId, type));
  effect->setNumInputs(static_cast<unsigned>(std::max(1, t.numInputs)));
  for (std::size_t i = 0; i < t.inputNames.size() && i < effect->getNumInputs(); ++i)
    effect->setInputName(static_cast<unsigned>(i), t.inputNames[i]);
  return effect;
}
} // namespace

bool TemplateDrops::canAccept(const DragDropItem& item, XY<int> position) const {
  const EditPtr& edit = view_.getEdit();
  if (!dynamic_cast<const EffectTemplateDragItem*>(&item) || !edit || (view_.getVob() && view_.getVob()->isReadOnly()))
    return false;
  for (const auto& n : view_.nodes()) {
    int index = 0;
    if (n->translateMouseEvent(position.x, position.y, index) != FXGraphViewNode::eNothing) return true;
  }
  FXGraphView::WireRef wire;
  return wireAt(position, wire);
}

void TemplateDrops::hover(const DragDropItem* item, XY<int> position) {
  Target now;
  if (item && canAccept(*item, position)) now = targetAt(position);
  if (now.node == hovered_.node && now.wire.to == hovered_.wire.to && now.wire.input == hovered_.wire.input) return;
  hovered_ = now;
  view_.redraw();
}

TemplateDrops::Target TemplateDrops::targetAt(XY<int> position) const {
  Target t;
  for (const auto& n : view_.nodes()) {
    int index = 0;
    if (n->isVisibleFlag() && n->translateMouseEvent(position.x, position.y, index) != FXGraphViewNode::eNothing) {
      t.node = n->getNodeID();
      return t;
    }
  }
  wireAt(position, t.wire);
  return t;
}

void TemplateDrops::light(const Target& target) {
  const Colour lit(0.3, 0.85, 1.0);
  if (target.wire.to) {
    const FXGraphViewNode* from = target.wire.to->getInputConnect(target.wire.input);
    const int output = from ? from->findOutputConnectFor(target.wire.to.get(), target.wire.input) : -1;
    if (output >= 0)
      view_.drawConnection(from->getOutputPos(static_cast<unsigned char>(output)),
                           target.wire.to->getInputPos(static_cast<unsigned long>(target.wire.input)), lit,
                           static_cast<unsigned short>(view_.getEdgeThickness(FXGraphView::eHighlightEdge) + 2));
  } else if (const auto n = target.node.valid() ? view_.findViewRecForNode(target.node) : nullptr) {
    view_.drawRing(n->pixelBox(), 2, 3, lit);
  }
}

void TemplateDrops::draw() { light(hovered_); }

bool TemplateDrops::accept(const DragDropItem& item, XY<int> position) {
  hovered_ = Target();
  const EditPtr& edit = view_.getEdit();
  const auto* dropped = dynamic_cast<const EffectTemplateDragItem*>(&item);
  if (!dropped || !edit) return false;
  for (const auto& n : view_.nodes()) {
    int index = 0;
    if (n->translateMouseEvent(position.x, position.y, index) == FXGraphViewNode::eNothing) continue;
    // A template dropped on a node is laid over it: a new effect of the
    // template takes the node's place downstream and the node feeds its first input.
    return insertAbove(dropped->summary(), n->getNodeID());
  }
  FXGraphView::WireRef wire;
  return wireAt(position, wire) && insertOnWire(dropped->summary(), wire);
}

bool TemplateDrops::insertAbove(const EffectTemplateSummary& t, const IdStamp& node) {
  const EditPtr& edit = view_.getEdit();
  if (!edit) return false;
  EditGraphIterator at = view_.getIteratorFor(node, EditGraphIterator::atNode);
  if (!at.isValid()) return false;
  EasyBackup step(edit);
  FXEditor(edit).insertAbove(at, effectFromTemplate(*edit, t, at.getNode()->getTrackType()));
  edit->addModification({EditModification(EditModification::structure)}, true);
  return true;
}

bool TemplateDrops::insertOnWire(const EffectTemplateSummary& t, const FXGraphView::WireRef& wire) {
  const EditPtr& edit = view_.getEdit();
  if (!edit || !wire.to || !wire.to->graphNode()) return false;
  FXGraphViewNode* from = wire.to->getInputConnect(wire.input);
  if (!from || !from->graphNode()) return false;
  // The editor must let the input be wired again: a locked effect's inputs stay.
  const EditGraphIterator destination = view_.getIteratorFor(wire.to->graphNode(), EditGraphIterator::atNode);
  FXEditor editor(edit, 0, view_.getPrimaryChanIx());
  if (!destination.isValid() ||
      !editor.canConnectNodes(destination, wire.input,
                              view_.getIteratorFor(from->graphNode(), EditGraphIterator::atNode))) {
    view_.notice().say(L"The effect cannot go into that wire: the input it feeds is locked");
    return false;
  }
  // The source as met through that input: the effect goes in between.
  EditGraphIterator at = destination;
  if (!at.moveToInput(wire.input) || at.getNode().get() != from->graphNode().get()) return false;
  EasyBackup step(edit);
  editor.insertAbove(at, effectFromTemplate(*edit, t, from->graphNode()->getTrackType()));
  if (view_.getVob() && view_.getVob()->getStateFlag()) TransitStatus::manager().notifyChange(view_.getVob());
  edit->addModification({EditModification(EditModification::structure)}, true);
  return true;
}

std::vector<XY<int>> TemplateDrops::wirePoints(const FXGraphViewNode& to, int input) const {
  std::vector<XY<int>> points;
  const FXGraphViewNode* from = to.getInputConnect(input);
  if (!from) return points;
  const int output = from->findOutputConnectFor(&to, input);
  if (output < 0) return points;
  for (const FXGraphView::Curve& c : view_.wireCurves(from->getOutputPos(static_cast<unsigned char>(output)),
                                                      to.getInputPos(static_cast<unsigned long>(input)))) {
    const double length = std::hypot(c[1].x - c[0].x, c[1].y - c[0].y) + std::hypot(c[2].x - c[0].x, c[2].y - c[0].y) +
                          std::hypot(c[3].x - c[1].x, c[3].y - c[1].y);
    const int steps = std::clamp(static_cast<int>(length / 3), 8, 2000);
    for (int k = 0; k <= steps; ++k) {
      const double t = static_cast<double>(k) / steps, u = 1 - t;
      // Start, end, then the control points: (start, c1, c2, end) in the usual order.
      const double x = u * u * u * c[0].x + 3 * u * u * t * c[2].x + 3 * u * t * t * c[3].x + t * t * t * c[1].x;
      const double y = u * u * u * c[0].y + 3 * u * u * t * c[2].y + 3 * u * t * t * c[3].y + t * t * t * c[1].y;
      points.push_back({static_cast<int>(std::lround(x)), static_cast<int>(std::lround(y))});
    }
  }
  return points;
}

bool TemplateDrops::wireAt(XY<int> p, FXGraphView::WireRef& out) const {
  const int reach = view_.getEdgeThickness(FXGraphView::eHighlightEdge) + 3;
  for (const auto& n : view_.nodes()) {
    if (!n->isVisibleFlag()) continue;
    for (const auto& [input, entry] : n->inputTable()) {
      if (!entry.node || !entry.node->isVisibleFlag()) continue;
      for (const XY<int>& q : wirePoints(*n, input))
        if (std::abs(q.x - p.x) <= reach && std::abs(q.y - p.y) <= reach) {
          out = {n, input};
          return true;
        }
    }
  }
  return false;
}

bool TemplateDrops::clearPointOnWire(const IdStamp& to, int input, XY<int>& out) const {
  const Ux::Ptr<FXGraphViewNode> node = view_.findViewRecForNode(to);
  if (!node) return false;
  const std::vector<XY<int>> points = wirePoints(*node, input);
  const auto w = view_.getWindowPos();
  // From the middle outwards: the first point clear of every box and inside the view.
  for (std::size_t k = 0; k < points.size(); ++k) {
    const std::size_t i = points.size() / 2 + (k % 2 ? (k + 1) / 2 : 0) - (k % 2 ? 0 : k / 2);
    if (i >= points.size()) continue;
    const XY<int> q = points[i];
    if (q.x < w.x0 + 4 || q.x > w.x1 - 4 || q.y < w.y0 + 4 || q.y > w.y1 - 4) continue;
    const bool covered = std::any_of(view_.nodes().begin(), view_.nodes().end(), [&](const auto& n) {
      const FXGraphView::PixelBox b = n->calcPixelExtents();
      return n->isVisibleFlag() && q.x >= b.x0 - 8 && q.x <= b.x1 + 8 && q.y >= b.y0 - 8 && q.y <= b.y1 + 8;
    });
    FXGraphView::WireRef hit;
    if (!covered && wireAt(q, hit) && hit.to->getNodeID() == to && hit.input == input) {
      out = q;
      return true;
    }
  }
  return false;
}
