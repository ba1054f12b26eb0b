#include "host/edit/FXEditor.h"

#include <algorithm>
#include <set>
#include <unordered_set>

#include "host/edit/GraphNodeKinds.h"

FXEditor::FXEditor(const EditPtr& edit, int, int) : edit_(edit) {}

bool FXEditor::isUpstream(const Ux::Ptr<FXGraphNodeBase>& from, const IdStamp& target, double time) const {
  std::set<IdStamp> seen;
  std::vector<Ux::Ptr<FXGraphNodeBase>> todo{from};
  while (!todo.empty()) {
    Ux::Ptr<FXGraphNodeBase> node = todo.back();
    todo.pop_back();
    if (node->getId() == target) return true;
    if (!seen.insert(node->getId()).second) continue;
    for (unsigned i = 0; i < node->getNumInputs(); ++i) {
      IdStamp channel;
      if (auto next = EditGraphIterator::resolveInput(*edit_, node->getInputTrackId(i), time, channel))
        todo.push_back(next);
    }
  }
  return false;
}

bool FXEditor::canConnectNodes(const EditGraphIterator& destination, int input, const EditGraphIterator& source) const {
  if (!edit_ || !destination.isValid() || !source.isValid()) return false;
  auto dest = Ux::dynamicCast<EffectInstance>(destination.getNode());
  Ux::Ptr<FXGraphNodeBase> src = source.getNode();
  if (!dest || !src || dynamic_cast<AliasedInputEffect*>(dest.get())) return false;
  if (input < 0 || static_cast<unsigned>(input) >= dest->getNumInputs()) return false;
  if (!dest->isConnectionEditable()) return false;
  if (dest->getTrackType() != src->getTrackType()) return false;
  if (src->getId() == dest->getId()) return false;
  // The source must not already depend on the destination.
  return !isUpstream(src, dest->getId(), destination.getTime());
}

bool FXEditor::connectNodes(const EditGraphIterator& destination, int input, const EditGraphIterator& source,
                            bool notify) {
  if (!canConnectNodes(destination, input, source)) return false;
  destination.getNode()->setInputTrackId(static_cast<unsigned>(input), source.getNode()->getId(), notify);
  edit_->setDirty(true);
  return true;
}

bool FXEditor::disconnectNodes(const EditGraphIterator& destination, int input, bool notify) {
  if (!edit_ || !destination.isValid() || input < 0) return false;
  if (!destination.getNode()->setInputTrackId(static_cast<unsigned>(input), IdStamp(), notify)) return false;
  edit_->setDirty(true);
  return true;
}

bool FXEditor::destroyNode(const EditGraphIterator& at, bool notify) {
  if (!edit_ || !at.isValid()) return false;
  Ux::Ptr<FXGraphNodeBase> gone = at.getNode();
  const IdStamp id = gone->getId();
  const IdStamp replacement = gone->getNumInputs() > 0 ? gone->getInputTrackId(0) : IdStamp();
  for (const auto& node : edit_->allNodes()) {
    if (node == gone) continue;
    for (unsigned i = 0; i < node->getNumInputs(); ++i)
      if (node->getInputTrackId(i) == id) node->setInputTrackId(i, replacement, notify);
  }
  const bool replacementIsNode = static_cast<bool>(edit_->openNode(replacement));
  for (int c = 0; c < edit_->getNumChans(); ++c) {
    for (Cel& cel : edit_->getChan(c).cels) {
      if (cel.kind != Cel::Kind::graph || cel.ref != id) continue;
      if (replacementIsNode)
        cel.ref = replacement;
      else
        cel = Cel{cel.start, cel.end, Cel::Kind::black, IdStamp()};
    }
  }
  edit_->getTagBag().removeObject(id);
  edit_->setDirty(true);
  return true;
}

bool FXEditor::cycleInputs(EffectInstance& effect) {
  const unsigned n = effect.getNumInputs();
  if (n < 2) return false;
  const IdStamp first = effect.getInputTrackId(0);
  effect.startBatchChange(EffectModification(EffectModification::eConnections, effect.getId()));
  for (unsigned i = 0; i + 1 < n; ++i) effect.setInputTrackId(i, effect.getInputTrackId(i + 1), true);
  effect.setInputTrackId(n - 1, first, true);
  effect.endBatchChange();
  if (edit_) edit_->setDirty(true);
  return true;
}

bool FXEditor::insertAbove(const EditGraphIterator& at, const Ux::Ptr<EffectInstance>& effect) {
  if (!edit_ || !at.isValid() || !effect || effect->getNumInputs() == 0 || edit_->openNode(effect->getId()))
    return false;
  const IdStamp below = at.getNode()->getId();
  edit_->addNode(effect);
  effect->setInputTrackId(0, below, false);
  EditGraphIterator parent = at;
  if (parent.moveBack()) {
    parent.getNode()->setInputTrackId(static_cast<unsigned>(at.getParentInputNum()), effect->getId(), true);
  } else {
    // A root: the channel graphs it heads now start at the effect.
    for (int c = 0; c < edit_->getNumChans(); ++c)
      for (Cel& cel : edit_->getChan(c).cels)
        if (cel.kind == Cel::Kind::graph && cel.ref == below && cel.contains(at.getTime())) cel.ref = effect->getId();
  }
  edit_->setDirty(true);
  return true;
}

IdStamp FXEditor::newNodeId(const Edit& edit) {
  // Ids made here run in a range of their own, after the highest one used.
  uint32_t last = 0;
  for (const auto& node : edit.allNodes())
    if (node->getId().first() == 9) last = std::max(last, node->getId().third());
  IdStamp id(9, 0, last + 1);
  while (edit.openNode(id) || edit.findChan(id) >= 0) id = IdStamp(9, 0, id.third() + 1);
  return id;
}

void FXEditor::findOrphanedComponents(const EditPtr& edit, std::vector<IdStamp>& roots, double) {
  if (!edit) return;
  // Every node some cel uses, at the cel's own times; hashed, as the edit
  // may hold hundreds of thousands.
  std::unordered_set<IdStamp> used;
  for (int c = 0; c < edit->getNumChans(); ++c) {
    for (const Cel& cel : edit->getChan(c).cels) {
      if (cel.kind == Cel::Kind::black) continue;
      std::vector<std::pair<IdStamp, double>> todo{{cel.ref, cel.start}};
      while (!todo.empty()) {
        auto [id, t] = todo.back();
        todo.pop_back();
        Ux::Ptr<FXGraphNodeBase> node = edit->openNode(id);
        if (!node || !used.insert(id).second) continue;
        for (unsigned i = 0; i < node->getNumInputs(); ++i) {
          IdStamp channel;
          if (auto next = EditGraphIterator::resolveInput(*edit, node->getInputTrackId(i), t, channel))
            todo.push_back({next->getId(), t});
        }
      }
    }
  }
  // The orphans, sorted, with a flag or two each: an edit can hold hundreds
  // of thousands, and a tree node per orphan per set costs far more.
  std::vector<IdStamp> orphans;
  for (const auto& node : edit->allNodes())
    if (node->getTrackType() == TrackType::video && !used.count(node->getId())) orphans.push_back(node->getId());
  std::sort(orphans.begin(), orphans.end());
  auto indexOf = [&](const IdStamp& id) -> std::ptrdiff_t {
    auto it = std::lower_bound(orphans.begin(), orphans.end(), id);
    return it != orphans.end() && *it == id ? it - orphans.begin() : -1;
  };
  // A piece's head feeds no other orphan.
  std::vector<bool> fedByOrphan(orphans.size()), covered(orphans.size());
  for (const IdStamp& id : orphans) {
    Ux::Ptr<FXGraphNodeBase> node = edit->openNode(id);
    for (unsigned i = 0; i < node->getNumInputs(); ++i)
      if (const std::ptrdiff_t in = indexOf(node->getInputTrackId(i)); in >= 0 && orphans[in] != id)
        fedByOrphan[in] = true;
  }
  std::vector<IdStamp> todo;
  auto cover = [&](std::size_t head) {
    todo.assign(1, orphans[head]);
    while (!todo.empty()) {
      const std::ptrdiff_t at = indexOf(todo.back());
      todo.pop_back();
      if (at < 0 || covered[at]) continue;
      covered[at] = true;
      Ux::Ptr<FXGraphNodeBase> node = edit->openNode(orphans[at]);
      for (unsigned i = 0; i < node->getNumInputs(); ++i) todo.push_back(node->getInputTrackId(i));
    }
  };
  std::vector<IdStamp> heads;
  for (std::size_t i = 0; i < orphans.size(); ++i)
    if (!fedByOrphan[i]) {
      heads.push_back(orphans[i]);
      cover(i);
    }
  // A piece that is all cycle has no head: its lowest id stands for it.
  for (std::size_t i = 0; i < orphans.size(); ++i)
    if (!covered[i]) {
      heads.push_back(orphans[i]);
      cover(i);
    }
  // Looked up in a set: an edit can hold hundreds of thousands of pieces.
  std::set<IdStamp> known(roots.begin(), roots.end());
  for (const IdStamp& id : heads)
    if (known.insert(id).second) roots.push_back(id);
}
