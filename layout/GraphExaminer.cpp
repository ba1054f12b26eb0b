#include "layout/GraphExaminer.h"

GraphExaminer::GraphExaminer(NodeUIPosSource& source) : source_(source) {}

void GraphExaminer::examine(EditGraphIterator& iterator) {
  startAt(iterator);
  applyToTree(iterator, *this);
  buildLevels();
}

void GraphExaminer::startAt(const EditGraphIterator& start) {
  records_.clear();
  levels_.clear();
  firstMet_.clear();
  baseDepth_ = start.getDepth() + 1;
}

bool GraphExaminer::operator()(const EditGraphIterator& iterator) {
  const Ux::Ptr<FXGraphNodeBase> node = iterator.getNode();
  if (!node) return true;
  const int level = iterator.getDepth() + 1 - baseDepth_;
  if (level < 0) return true; // above the start node: not part of this tree
  const Ux::Ptr<FXGraphNodeBase> parent = level > 0 ? iterator.getNode(iterator.getDepth() - 1) : nullptr;

  const auto known = records_.find(node->getId());
  if (known != records_.end()) {
    NodeInfo& info = known->second;
    if (level > info.depth) info.depth = level;
    // Met again at its deepest level through a parent it has not recorded
    // there: this meeting's parent and input now describe it. A meeting
    // shallower than the deepest never moves it up, so that the node stays
    // under a parent on the level just above it.
    if (level == info.depth && info.parentDepth < level - 1) {
      info.parentDepth = level - 1;
      // A node that fills two slots of one parent stays at the first slot.
      if (!parent || !info.parent || parent->getId() != info.parent->getId()) {
        info.parent = parent;
        info.inputIndex = iterator.getParentInputNum();
      }
    }
    return true;
  }

  NodeInfo info;
  info.depth = level;
  // No parent depth yet: a second meeting at this level takes the node over
  // (a third leaves it), as does the first meeting further down.
  info.parentDepth = -1;
  info.node = node;
  info.record = source_.getPosRecForNode(node->getId());
  info.parent = parent;
  info.inputIndex = parent ? iterator.getParentInputNum() : -1;
  records_.emplace(node->getId(), std::move(info));
  firstMet_.push_back(node->getId());
  return true;
}

void GraphExaminer::buildLevels() {
  levels_.clear();
  for (const IdStamp& id : firstMet_) {
    const NodeInfo& info = records_.at(id);
    const auto level = static_cast<std::size_t>(info.depth);
    if (levels_.size() <= level) levels_.resize(level + 1);
    levels_[level].push_back(info);
  }
}

const GraphExaminer::NodeInfo* GraphExaminer::find(const IdStamp& id) const {
  const auto it = records_.find(id);
  return it == records_.end() ? nullptr : &it->second;
}
