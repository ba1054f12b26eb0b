// Keyboard focus on a node, walking the graph from it, and the keys that
// act on it.
#include "graph_view/KeyboardFocus.h"

#include <algorithm>
#include <cmath>

#include "graph_view/FXGraphView.h"
#include "graph_view/HoverHints.h"
#include "graph_view/ViewHost.h"
#include "graph_view/ViewNotice.h"
#include "host/edit/EffectInstance.h"
#include "host/edit/GraphNodeKinds.h"
#include "host/ui/EffectMenuItems.h"

namespace {

XY<double> centreOf(const FXGraphViewNode& n) { return {(n.getL() + n.getR()) / 2, (n.getB() + n.getT()) / 2}; }
} // namespace

void KeyboardFocus::set(const IdStamp& id) {
  if (id == focus_) return;
  focus_ = id;
  path_.clear();
  view_.redraw();
}

bool KeyboardFocus::key(const Event& e) {
  Ux::Ptr<FXGraphViewNode> focus = focus_.valid() ? view_.findViewRecForNode(focus_) : Ux::Ptr<FXGraphViewNode>();
  if (!focus) focus_ = IdStamp();
  // Without a node in focus, up or down takes the keyboard into the graph at
  // the primary node; the other keys are not the view's (left and right step
  // the editor's time).
  if (!focus && (e.key == Event::arrowUp || e.key == Event::arrowDown)) {
    for (const auto& n : view_.nodes())
      if (n->isPrimary()) {
        set(n->getNodeID());
        Vector<IdStamp> ids;
        ids.push_back(focus_);
        view_.ensureNodeListVisible(ids, 1);
        view_.updateScrollbars(true);
        view_.redraw();
        return true;
      }
  }
  if (!focus) return false;
  switch (e.key) {
  case Event::arrowLeft:
  case Event::arrowRight:
  case Event::arrowUp:
  case Event::arrowDown:
    walk(e.key);
    return true;
  case Event::keyReturn: {
    auto* effect = dynamic_cast<EffectInstance*>(focus->graphNode().get());
    if (!effect || dynamic_cast<AliasedInputEffect*>(effect))
      view_.notice().say(L"Only an effect has parameters to open");
    else if (view_.host_)
      view_.host_->runItemCommand(
          EffectMenuItems::commandFor("fxutr", "params", view_.getIteratorFor(focus_, EditGraphIterator::atNode)));
    return true;
  }
  case Event::keySpace:
    if (!(view_.getVob() && view_.getVob()->isReadOnly())) view_.handleNodeClicked(focus);
    return true;
  case Event::keyDelete: {
    if (!dynamic_cast<EffectInstance*>(focus->graphNode().get())) return true;
    // Focus passes to what the effect fed, if anything did.
    IdStamp next;
    for (const auto& [output, entry] : focus->outputTable())
      if (entry.node) {
        next = entry.node->getNodeID();
        break;
      }
    const IdStamp gone = focus_;
    if (view_.host_)
      view_.host_->runItemCommand(
          EffectMenuItems::commandFor("fxutr", "remove_utr", view_.getIteratorFor(gone, EditGraphIterator::atNode)));
    if (!view_.findViewRecForNode(gone)) set(next);
    return true;
  }
  case 'p':
    if (!(view_.getVob() && view_.getVob()->isReadOnly())) pickOrDrop();
    return true;
  case Event::keyEscape:
    set({});
    return true;
  default:
    return false;
  }
}

void KeyboardFocus::walk(int key) {
  Ux::Ptr<FXGraphViewNode> node = view_.findViewRecForNode(focus_);
  if (!node) return;
  const bool leftToRight = view_.getOrientation() == VidRouting::Orientations::LeftToRight;
  const int toInputs = leftToRight ? Event::arrowLeft : Event::arrowDown;
  const int toOutput = leftToRight ? Event::arrowRight : Event::arrowUp;
  // The consumer the walk came from, while it still takes this node.
  auto consumer = [&]() -> FXGraphViewNode* {
    FXGraphViewNode* first = nullptr;
    for (const auto& [output, entry] : node->outputTable()) {
      if (!entry.node) continue;
      if (!path_.empty() && entry.node->getNodeID() == path_.back()) return entry.node;
      if (!first) first = entry.node;
    }
    return first;
  };
  IdStamp next;
  if (key == toInputs) {
    const unsigned n = node->graphNode() ? node->graphNode()->getNumInputs() : 0;
    for (unsigned i = 0; i < n && !next.valid(); ++i)
      if (FXGraphViewNode* up = node->getInputConnect(static_cast<int>(i))) next = up->getNodeID();
    if (next.valid()) path_.push_back(focus_);
  } else if (key == toOutput) {
    if (FXGraphViewNode* down = consumer()) {
      next = down->getNodeID();
      if (!path_.empty() && path_.back() == next)
        path_.pop_back();
      else
        path_.clear();
    }
  } else {
    // Siblings: the consumer's other inputs, or the other roots, ordered
    // across the flow as they stand on the screen.
    std::vector<FXGraphViewNode*> siblings;
    if (FXGraphViewNode* down = consumer()) {
      const unsigned n = down->graphNode() ? down->graphNode()->getNumInputs() : 0;
      for (unsigned i = 0; i < n; ++i)
        if (FXGraphViewNode* up = down->getInputConnect(static_cast<int>(i));
            up && std::find(siblings.begin(), siblings.end(), up) == siblings.end())
          siblings.push_back(up);
    } else {
      for (const auto& n : view_.nodes())
        if (n->isVisibleFlag() && std::none_of(n->outputTable().begin(), n->outputTable().end(),
                                               [](const auto& o) { return o.second.node != nullptr; }))
          siblings.push_back(n.get());
    }
    auto across = [&](const FXGraphViewNode* n) { return leftToRight ? centreOf(*n).y : centreOf(*n).x; };
    const double here = across(node.get());
    const bool higher = leftToRight ? key == Event::arrowUp : key == Event::arrowRight;
    const FXGraphViewNode* best = nullptr;
    for (const FXGraphViewNode* s : siblings) {
      if (s == node.get()) continue;
      const double d = across(s) - here;
      if ((higher ? d <= 0 : d >= 0) || (best && std::abs(d) >= std::abs(across(best) - here))) continue;
      best = s;
    }
    if (best) next = best->getNodeID();
  }
  if (!next.valid() || next == focus_) return;
  focus_ = next;
  Vector<IdStamp> ids;
  ids.push_back(next);
  view_.ensureNodeListVisible(ids, 1);
  view_.updateScrollbars(true);
  view_.redraw();
}

bool KeyboardFocus::pickOrDrop() {
  Ux::Ptr<FXGraphViewNode> node = view_.findViewRecForNode(focus_);
  if (!node || !node->graphNode()) return false;
  const int spare = static_cast<int>(node->outputTable().size());
  if (!view_.dragAnchor()) return view_.handleOutputClicked(node, spare);
  if (view_.dragAnchoredAtInput()) return view_.handleOutputClicked(node, spare);
  // A wire from an output lands on the first free input that takes it.
  for (const FXGraphView::PadRef& pad : view_.hints().acceptingPads(HoverHints::Among::all))
    if (pad.node == focus_ && pad.atInput) return view_.handleInputClicked(node, pad.index);
  return false;
}

void KeyboardFocus::draw() {
  // A ring round the node.
  if (Ux::Ptr<FXGraphViewNode> n = focus_.valid() ? view_.findViewRecForNode(focus_) : Ux::Ptr<FXGraphViewNode>();
      n && n->isVisibleFlag()) {
    view_.drawRing(n->calcPixelExtents(), 3, std::max(2, static_cast<int>(view_.getScale() * 0.006)),
                   Colour(1.0, 1.0, 1.0));
  }
}
