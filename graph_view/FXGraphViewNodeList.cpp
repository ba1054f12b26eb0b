// The view's node list: one on-screen node per graph node of the focused
// edit at the current time, rebuilt wholesale; where each node is placed
// (the channel cache, the old node with the same id, the tidy, the
// connections, the manual column); whole trees moved; queries.
#include <algorithm>
#include <cmath>
#include <unordered_set>

#include "graph_nodes/FXGraphViewNodeKinds.h"
#include "graph_view/FXGraphView.h"
#include "graph_view/Framing.h"
#include "graph_view/HoverHints.h"
#include "graph_view/NodeFades.h"
#include "host/edit/EditGraphWalk.h"
#include "host/edit/FXEditor.h"
#include "host/edit/FirstPathIndex.h"
#include "host/edit/GraphNodeKinds.h"
#include "host/notify/Log.h"
#include "layout/FXGraphTidier.h"

namespace {
// Iterator options the node list uses: positioned at a node, found from the roots.
// The focus iterator of a rebuild: whole edit, and one node's tree.
constexpr int wholeEditFocus = 10;
constexpr int singleFocusOption = 2;
} // namespace

Ux::Ptr<NodeUIPosManager> FXGraphView::positionManager() const {
  // Fetching prunes and re-registers every record: done once per edit
  // focused, not at every lookup.
  if (!edit_)
    manager_.reset();
  else if (!manager_ || manager_->getEdit() != edit_) {
    manager_ = NodeUIPosManager::getManagerFor(edit_);
    if (manager_) placeUnusableRecordsAfresh(*manager_);
  }
  return manager_;
}

void FXGraphView::placeUnusableRecordsAfresh(NodeUIPosManager& manager) {
  // A stored place that is no number, or lies further out than any graph
  // reaches, would stretch the view to nothing: such a node is placed as if
  // it had never been stored, and the user is told.
  constexpr double farthest = 1e6;
  auto usable = [](XY<double> p) {
    return std::isfinite(p.x) && std::isfinite(p.y) && std::abs(p.x) <= farthest && std::abs(p.y) <= farthest;
  };
  for (NodeUIRecBase* rec : manager.records().as<NodeUIRecBase>()) {
    auto* pos = dynamic_cast<NodeUIPosRec*>(rec);
    if (!pos) continue;
    const XY<double> draw = pos->getDrawPosition(), manual = pos->getManualPos();
    if (usable(draw) && (!pos->isManualPosSet() || usable(manual))) continue;
    Log::printf("Position records: node %s was stored at (%g, %g), which is no usable place; it is placed afresh.",
                pos->getNodeId().asString().c_str(), usable(draw) ? manual.x : draw.x,
                usable(draw) ? manual.y : draw.y);
    pos->drawX().setValueQuietly(0);
    pos->drawY().setValueQuietly(0);
    pos->restoreManualState(0, 0, false);
  }
}

void FXGraphView::appendNode(const Ux::Ptr<FXGraphViewNode>& node) {
  nodeIndex_.try_emplace(node->getNodeID(), nodes_.size());
  nodes_.push_back(node);
}

void FXGraphView::recalcNodeList(bool sendGroupUpdate) {
  // 1. Never under a connection drag: the request is dropped.
  if (interaction_.kind == Interaction::holdingWire) return;
  ++stats_.rebuilds;
  // Roots and nodes are placed in the graph one by one: one walk serves
  // them all (the rebuild changes the view, not the graph).
  FirstPathIndex paths;
  // 2. A node being moved by hand is let go; whatever else held the view
  // ends with it.
  endInteraction();
  canvas().resetClipRect();
  hints_->rebuilt();
  // The heads of the channels at the time, found once: every root's iterator
  // is asked for during the rebuild, and the edit does not change meanwhile.
  std::unordered_map<IdStamp, IdStamp> heads;
  if (edit_)
    for (int c = 0; c < edit_->getNumChans(); ++c) {
      const EditChannel& channel = edit_->getChan(c);
      if (const Cel* cel = channel.celAt(currentTime()); cel && cel->kind == Cel::Kind::graph)
        heads.try_emplace(cel->ref, channel.id);
    }
  headsDuringRebuild_ = &heads;
  std::optional<std::vector<IdStamp>> roots;
  rootsDuringRebuild_ = &roots;
  struct Forget {
    const std::unordered_map<IdStamp, IdStamp>*& heads;
    std::optional<std::vector<IdStamp>>*& roots;
    ~Forget() { heads = nullptr, roots = nullptr; }
  } forget{headsDuringRebuild_, rootsDuringRebuild_};
  Ux::Ptr<NodeUIPosManager> manager = positionManager();
  std::vector<Ux::Ptr<FXGraphViewNode>> old;
  std::unordered_map<IdStamp, const FXGraphViewNode*> oldById;
  {
    // 3. The manager's records changed by the rebuild must not re-enter the
    // view (10: until the new list stands).
    NotificationsSuspended quiet(manager.get());
    // 4, 5.
    old.swap(nodes_);
    nodeIndex_.clear();
    // The old nodes keep the positions they have now: the new nodes take over
    // the stored records, and what places them must not move the old ones too.
    for (const auto& o : old) o->followStoredRecord(nullptr);
    createViewNodeRecs();
    // 6. The node standing for the focus.
    if (edit_) {
      EditGraphIterator focus = scope_ == wholeEdit
                                    ? EditGraphIterator(edit_, currentTime(), wholeEditFocus)
                                    : EditGraphIterator(edit_, currentTime(), focusNode_, singleFocusOption);
      if (focus.isValid())
        for (const auto& n : nodes_) n->setPrimary(n->isEquivalentTo(focus));
    }
    // 7. Positions carried over from the first old node with the same id.
    for (const auto& o : old) oldById.try_emplace(o->getNodeID(), o.get());
    for (const auto& n : nodes_) {
      auto it = oldById.find(n->getNodeID());
      if (it == oldById.end()) continue;
      const XY<double> p = it->second->getPosition();
      NotificationsSuspended still(n.get());
      n->setPosition(p.x, p.y, true);
      n->takeOverPicture(*it->second);
    }
    // 8. In manual positioning a rebuild of the same count keeps positions.
    if (!(manualPositioning() && nodes_.size() == old.size())) autoTidy();
    keepCanvasAroundGraph();
    // 9.
    setViewZoom(getZoom());
  }
  // 11.
  if (sendGroupUpdate && manager) manager->sendGeneralUpdateNotification("GroupUpdateMsg");
  // Nodes new to a list that had nodes before are marked as they appear.
  if (!old.empty()) {
    std::vector<IdStamp> fresh;
    for (const auto& n : nodes_)
      if (!oldById.count(n->getNodeID())) fresh.push_back(n->getNodeID());
    if (!fresh.empty()) fades_->start(std::move(fresh));
  }
  // 12. The old nodes go as their last references do.
  old.clear();
  updateScrollbars(false);
}

int FXGraphView::createViewNodeRecs() {
  Ux::Ptr<NodeUIPosManager> manager = positionManager();
  NotificationsSuspended quiet(manager.get());
  int created = 0;
  const std::vector<IdStamp> roots = getRoots();
  // Nodes made here settle their editability once the walk knows their paths.
  FXGraphViewNode::EditabilityLater later;
  for (std::size_t i = 0; i < roots.size(); ++i) created += createViewNodeRecs(roots[i], static_cast<int>(i));
  return created;
}

int FXGraphView::createViewNodeRecs(const IdStamp& root, int rootIndex) {
  EditGraphIterator at = getIteratorFor(root, EditGraphIterator::atNode);
  if (!at.isValid()) return 0;
  return createViewNodeRecsInternal(at, nullptr, rootIndex);
}

// The graph under a root is met once per node, not once per path: a walk
// that met every path would repeat the subtree of a shared input for each
// path that reaches it, which grows with two to the power of the depth on a
// chain of nodes that each take one input twice. What a path walk leaves
// behind is kept exactly:
// - nodes are made in the order paths first reach them (depth first, inputs
//   in order), which is the order in which a walk that visits each node once
//   reaches them, and output tables fill in the order wires are first crossed;
// - a node's editability is that of the last path to reach it, the greatest
//   in input order, which a second walk trying inputs from the last finds first;
// - a cycle is connected where it closes and not descended into.
int FXGraphView::createViewNodeRecsInternal(EditGraphIterator& at, FXGraphViewNode* parent, int rootIndex) {
  std::unordered_set<const FXGraphNodeBase*> met;
  const int created = makeViewNodesOnce(at, parent, rootIndex, met);
  met.clear();
  settleEditability(at, false, met);
  return created;
}

int FXGraphView::makeViewNodesOnce(EditGraphIterator& at, FXGraphViewNode* parent, int rootIndex,
                                   std::unordered_set<const FXGraphNodeBase*>& met) {
  int created = 0;
  // The on-screen nodes of the path walked, each the parent of the next.
  std::vector<FXGraphViewNode*> above{parent};
  walkInputsDepthFirst(
      at,
      [&](EditGraphIterator& here) {
        Ux::Ptr<FXGraphNodeBase> graphNode = here.getNode();
        if (!graphNode) return WalkStep::skip;
        Ux::Ptr<FXGraphViewNode> node = findViewRecForNode(graphNode->getId());
        if (node) {
          node->ensureNodeHValid();
        } else {
          node = createViewNode(here);
          // Every shown node has its record in the edit's position manager:
          // the layout writes there and the node follows it.
          Ux::Ptr<NodeUIPosManager> manager = positionManager();
          node->followStoredRecord(manager ? manager->createPosRec(graphNode->getId(), edit_->getCookie()) : nullptr);
          assignPositionFromChannel(node.get());
          appendNode(node);
          ++created;
        }
        // The last root that reaches a shared node wins.
        node->setRootIndex(rootIndex);
        if (above.back()) above.back()->connectInput(here.getParentInputNum(), node.get());
        if (!met.insert(graphNode.get()).second) return WalkStep::skip;
        above.push_back(node.get());
        return WalkStep::descend;
      },
      [&](EditGraphIterator&) { above.pop_back(); });
  return created;
}

void FXGraphView::settleEditability(EditGraphIterator& at, bool lockedAbove,
                                    std::unordered_set<const FXGraphNodeBase*>& met) {
  // Whether the path down to each node passes a locked effect.
  std::vector<bool> locked{lockedAbove};
  walkInputsDepthFirst(
      at,
      [&](EditGraphIterator& here) {
        Ux::Ptr<FXGraphNodeBase> graphNode = here.getNode();
        if (!graphNode || !met.insert(graphNode.get()).second) return WalkStep::skip;
        if (Ux::Ptr<FXGraphViewNode> node = findViewRecForNode(graphNode->getId()))
          node->determineConnectionEditability(locked.back());
        const auto* effect = dynamic_cast<const EffectInstance*>(graphNode.get());
        locked.push_back(locked.back() || (effect && !effect->isConnectionEditable()));
        return WalkStep::descend;
      },
      [&](EditGraphIterator&) { locked.pop_back(); }, true);
}

Ux::Ptr<FXGraphViewNode> FXGraphView::createViewNode(EditGraphIterator& at) {
  Ux::Ptr<FXGraphNodeBase> n = at.getNode();
  const GraphNodeKind kind = nodeKindOf(n.get());
  if (kind == GraphNodeKind::material) return Ux::Ptr<FXGraphViewNode>(new FXGraphViewMatNode(this, at));
  if (kind == GraphNodeKind::image) return Ux::Ptr<FXGraphViewNode>(new FXGraphViewImageNode(this, at));
  if (kind == GraphNodeKind::alias) return Ux::Ptr<FXGraphViewNode>(new FXGraphViewAliasNode(this, at));
  if (kind == GraphNodeKind::background || kind == GraphNodeKind::effect) {
    const LightweightString<char> tag = static_cast<const EffectInstance*>(n.get())->tagTypeId();
    // A null tag counts as not equal to anything.
    if (!tag.isNull() && tag == "PixShader:Mattes:flatcol.fx")
      return Ux::Ptr<FXGraphViewNode>(new FXGraphViewColourMatteNode(this, at));
    if (tag.empty()) return Ux::Ptr<FXGraphViewNode>(new FXGraphViewNode(this, at));
    if (tag.startsWith("PixShader:Mattes:")) return Ux::Ptr<FXGraphViewNode>(new FXGraphViewThumbNode(this, at));
    // Covered by the test above; kept as the kinds have always been chosen.
    if (tag.startsWith("PixShader:Mattes:gradients"))
      return Ux::Ptr<FXGraphViewNode>(new FXGraphViewThumbNode(this, at));
  }
  return Ux::Ptr<FXGraphViewNode>(new FXGraphViewNode(this, at));
}

std::vector<IdStamp> FXGraphView::getRoots() {
  if (rootsDuringRebuild_ && *rootsDuringRebuild_) return **rootsDuringRebuild_;
  std::vector<IdStamp> roots;
  roots.reserve(50);
  if (!edit_) return roots;
  if (scope_ == wholeEdit)
    findAllRootNodeChans(edit_, roots, currentTime(), true);
  else
    roots.push_back(focusNode_);
  // Pieces no root reaches are shown after the roots.
  FXEditor::findOrphanedComponents(edit_, roots, currentTime());
  if (rootsDuringRebuild_) *rootsDuringRebuild_ = roots;
  return roots;
}

void FXGraphView::getAllNodes(Vector<IdStamp>& out) const {
  for (const auto& n : nodes_) out.push_back(n->getNodeID());
}

void FXGraphView::calcVisibleNodeList(Vector<IdStamp>& out) const {
  for (const auto& n : nodes_)
    if (n->isVisibleFlag() && n->graphNode()) out.push_back(n->getNodeID());
}

Ux::Ptr<FXGraphViewNode> FXGraphView::findViewRecForNode(const IdStamp& id) const {
  auto it = nodeIndex_.find(id);
  return it == nodeIndex_.end() ? nullptr : nodes_[it->second];
}

NodeUIPosRec* FXGraphView::getPosRecForNode(const IdStamp& id) {
  Ux::Ptr<NodeUIPosManager> manager = positionManager();
  return manager ? manager->openPosRec(id) : nullptr;
}

NodeUIPosRec* FXGraphView::getPosRecForUtr(CelEventPair& event) {
  if (!event.valid() || !event.stripCookie().isEffectGraph()) return nullptr;
  return getPosRecForNode(event.getEffectHandle().id());
}

bool FXGraphView::assignPositionFromChannel(FXGraphViewNode* node) {
  NotificationsSuspended quiet(node);
  auto it = channelCache_.find({node->getNodeID(), node->channelIndex()});
  const bool hit = it != channelCache_.end();
  if (hit) node->setPosition(it->second.x, it->second.y, true);
  return hit;
}

bool FXGraphView::assignPositionFromConnections(FXGraphViewNode* node) {
  if (node->isFixed()) return false;
  EditGraphIterator at = getIteratorFor(node->getNodeID(), EditGraphIterator::atNode);
  if (!at.isValid()) return false;
  // Output side: beside a sibling placed by hand, or one gap left of the parent.
  EditGraphIterator up = at;
  if (up.moveBack()) {
    NodeUIPosRec* parentRec = getPosRecForNode(up.getNode()->getId());
    if (parentRec && parentRec->isManualPosSet()) {
      NotificationsSuspended quiet(node);
      const unsigned n = static_cast<uint16_t>(up.getNode()->getNumInputs());
      bool thisFirst = false;
      bool placed = false;
      if (n >= 2) {
        for (unsigned i = 0; i < n && !placed; ++i) {
          if (!up.moveToInput(static_cast<int>(i))) continue;
          const IdStamp id = up.getNode()->getId();
          up.moveBack();
          if (id == node->getNodeID()) {
            thisFirst = true;
            continue;
          }
          NodeUIPosRec* sibling = getPosRecForNode(id);
          if (!sibling || !sibling->isManualPosSet()) continue;
          const XY<double> s = sibling->getManualPos();
          if (s.x == -1 && s.y == -1) break;
          node->setPosition(s.x, thisFirst ? s.y + layoutGap : s.y - layoutGap, true);
          placed = true;
        }
      }
      if (!placed) {
        const XY<double> p = parentRec->getManualPos();
        node->setPosition(p.x - layoutGap, p.y, true);
      }
      return false;
    }
  }
  // Input side: one gap right of the rightmost hand-placed input, centred on their span.
  bool any = false;
  double minX = 0, maxX = 0, minY = 0, maxY = 0;
  const unsigned inputs = at.getNode()->getNumInputs();
  for (unsigned i = 0; i < inputs; ++i) {
    if (!at.moveToInput(static_cast<int>(i))) continue;
    NodeUIPosRec* rec = getPosRecForNode(at.getNode()->getId());
    at.moveBack();
    if (!rec || !rec->isManualPosSet()) continue;
    const XY<double> p = rec->getManualPos();
    if (!any) {
      minX = maxX = p.x;
      minY = maxY = p.y;
      any = true;
    } else {
      minX = std::min(minX, p.x);
      maxX = std::max(maxX, p.x);
      minY = std::min(minY, p.y);
      maxY = std::max(maxY, p.y);
    }
  }
  if (any) {
    NotificationsSuspended quiet(node);
    node->setPosition(maxX + layoutGap, minY + (maxY - minY) / 2, true);
  }
  return false;
}

int FXGraphView::assignPositionsManual(Vector<FXGraphViewNode*>& group, double x, double y, double span, int count) {
  // The argument use is as it has always been: one value serves both as the
  // x start and the vertical spacing.
  const double step = count ? span / count : 0;
  double runningX = x - layoutGap;
  for (auto it = group.rbegin(); it != group.rend(); ++it) {
    FXGraphViewNode* n = *it;
    if (n->isFixed()) continue;
    NotificationsSuspended quiet(n);
    if (n->isPrimary()) {
      n->setPosition(y + layoutGap, step, true);
    } else {
      auto* material = dynamic_cast<MaterialUsageNode*>(n->graphNode().get());
      if (!(material && material->isPlainMaterial())) {
        n->setPosition(runningX, step, true);
        runningX -= layoutGap;
      }
    }
  }
  XY<double> materialAt = findMaterialNodePosition();
  double runningY = materialAt.y;
  int placed = 0;
  for (auto it = group.rbegin(); it != group.rend(); ++it) {
    FXGraphViewNode* n = *it;
    if (n->isFixed()) continue;
    NotificationsSuspended quiet(n);
    if (materialAt.x != -1) {
      runningY -= layoutGap;
      n->setPosition(materialAt.x, runningY, true);
    } else {
      n->setPosition(runningX, step, true);
      materialAt = n->getPosition();
      runningY = materialAt.y;
    }
    ++placed;
  }
  return placed;
}

XY<double> FXGraphView::findMaterialNodePosition() {
  for (const auto& n : nodes_) {
    if (!dynamic_cast<MaterialUsageNode*>(n->graphNode().get())) continue;
    NodeUIPosRec* rec = getPosRecForNode(n->getNodeID());
    if (rec && rec->isManualPosSet()) return n->getPosition();
  }
  return {-1, -1};
}

void FXGraphView::autoTidy() { autoTidyNodeRecs(getRoots(), {0, 0}); }

void FXGraphView::autoTidyNodeRecs(const std::vector<IdStamp>& roots, XY<double> origin) {
  ++stats_.tidies;
  // About 60 KB of local tree: kept off the stack, and made once for all
  // the roots (an edit can have hundreds of thousands of pieces).
  auto tidier = std::make_unique<FXGraphTidier>(*this, layoutGap, layoutGap);
  for (const IdStamp& root : roots) {
    EditGraphIterator at = getIteratorFor(root, EditGraphIterator::atNode);
    tidier->tidyTreeStruct(at, origin.x, origin.y);
    const Ux::Box<double> e = tidier->getTreeExtents();
    origin = orientation_ != 0 ? XY<double>(e.x1 + layoutGap, e.y0) : XY<double>(e.x0, e.y0 - treeStackingGap);
  }
}

void FXGraphView::tidy() {
  // Tidy asked for is one undo step: the hand placings it replaces come back.
  if (edit_ && !nodes_.empty()) edit_->makeBackup();
  // The node the person looks at stays where it is on the screen.
  const Framing::Anchor anchor = Framing::hold(*this);
  autoTidy();
  keepCanvasAroundGraph();
  Framing::restore(*this, anchor);
  updateScrollbars(true);
  redraw();
}

void FXGraphView::tidy(const NotifyMsg&) { tidy(); }

// Two nodes on one spot ask for a tidy. Tidying an unchanged graph again
// puts every node where the first tidy put it, so after one tidy the pairs
// found later would only tidy to the same places: one is enough. Shared spots
// are found by counting positions, not by comparing every pair.
void FXGraphView::checkForCoincidentNodes() {
  struct Spot {
    std::size_t operator()(const XY<double>& p) const noexcept {
      // +0 and -0 are one spot, as == has them.
      const double x = p.x == 0 ? 0.0 : p.x, y = p.y == 0 ? 0.0 : p.y;
      return std::hash<double>()(x) * 31 + std::hash<double>()(y);
    }
  };
  std::unordered_map<XY<double>, int, Spot> taken;
  for (const auto& n : nodes_) ++taken[n->getPosition()];
  for (const auto& n : nodes_) {
    const XY<double> p = n->getPosition();
    if (p.x != p.x || p.y != p.y) continue; // not a number is on no spot
    if (taken[p] > 1) {
      autoTidy();
      return;
    }
  }
}

void FXGraphView::updateMinAndMaxPositions() {
  for (auto& e : extremes_) e.reset();
  for (const auto& n : nodes_) {
    const XY<double> p = n->getPosition();
    if (!extremes_[0] || extremes_[0]->getPosition().x > p.x) extremes_[0] = n;
    if (!extremes_[1] || p.x > extremes_[1]->getPosition().x) extremes_[1] = n;
    if (!extremes_[2] || extremes_[2]->getPosition().y > p.y) extremes_[2] = n;
    if (!extremes_[3] || p.y > extremes_[3]->getPosition().y) extremes_[3] = n;
  }
}

void FXGraphView::translateManuallyPositionedNodes(EditGraphIterator& at, double dx, double dy) {
  // Every path below, as the path walk meets them: a shared input moves once
  // per path that reaches it.
  walkInputsDepthFirst(at, [&](EditGraphIterator& here) {
    if (NodeUIPosRec* rec = getPosRecForNode(here.getNode()->getId())) {
      const XY<double> p = rec->getDrawPosition();
      rec->setDrawPosition(XY<double>(p.x + dx, p.y + dy), false);
    }
    return WalkStep::descend;
  });
}

void FXGraphView::translateManuallyPositionedNodes(Ux::Ptr<FXGraphNodeBase> node, double dx, double dy, bool) {
  EditGraphIterator at = getIteratorFor(node, EditGraphIterator::atNode);
  Vector<IdStamp> components;
  at.findAllComponents(components);
  for (const IdStamp& id : components) {
    NodeUIPosRec* rec = getPosRecForNode(id);
    if (!rec) continue;
    const XY<double> p = rec->getDrawPosition();
    rec->setDrawPosition(XY<double>(p.x + dx, p.y + dy), false);
  }
  keepCanvasAroundGraph(true);
  redraw();
}

void FXGraphView::relativeMoveTree(EditGraphIterator& at, double dx, double dy, int rootIndex, NodeUIPosRec** moved,
                                   int& count) {
  walkInputsDepthFirst(at, [&](EditGraphIterator& here) {
    Ux::Ptr<FXGraphViewNode> node = findViewRecForNode(here.getNode()->getId());
    if (!node || node->rootIndex() != rootIndex) return WalkStep::skip;
    NodeUIPosRec* rec = &node->positionRecord();
    for (int i = count - 1; i >= 0; --i)
      if (moved[i] == rec) return WalkStep::skip;
    moved[count++] = rec;
    const XY<double> p = node->getPosition();
    rec->setDrawPosition(XY<double>(p.x + dx, p.y + dy), false);
    return WalkStep::descend;
  });
}

void FXGraphView::flushNodeList() {
  nodes_.clear();
  nodeIndex_.clear();
}

EditGraphIterator FXGraphView::getIteratorFor(const IdStamp& id, int flags) const {
  if (!edit_) return {};
  // A channel's id gives its graph at the time.
  if (edit_->findChan(id) >= 0) return EditGraphIterator::atChannel(edit_, currentTime(), id);
  // A node that heads a channel starts there, as the iterator's own search
  // would find it; during a rebuild the heads are known already.
  constexpr int headFirst = EditGraphIterator::atNode;
  if (headsDuringRebuild_ && (flags & headFirst) == headFirst)
    if (const auto head = headsDuringRebuild_->find(id); head != headsDuringRebuild_->end() && edit_->openNode(id))
      return EditGraphIterator::atChannel(edit_, currentTime(), head->second);
  if (flags != headFirst) return EditGraphIterator(edit_, currentTime(), id, flags);
  // Finding a node means searching the graph from the roots; what a search
  // found stands until the edit changes (every change is told, and counted
  // in its revision) or the time moves. Thumbnails ask for it every frame.
  if (foundFor_.edit != edit_.get() || foundFor_.revision != edit_->revision() || foundFor_.time != currentTime()) {
    found_.clear();
    foundFor_ = {edit_.get(), edit_->revision(), currentTime()};
  }
  const auto known = found_.find(id);
  if (known != found_.end()) return known->second;
  EditGraphIterator at(edit_, currentTime(), id, flags);
  found_.emplace(id, at);
  return at;
}

EditGraphIterator FXGraphView::getIteratorFor(const Ux::Ptr<FXGraphNodeBase>& node, int flags) const {
  return node ? getIteratorFor(node->getId(), flags) : EditGraphIterator();
}
