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
    // Met deeper than before: this meeting's parent and input now describe it.
    if (info.parentDepth < level - 1) {
      info.parent = parent;
      info.parentDepth = level - 1;
      info.inputIndex = iterator.getParentInputNum();
    }
    return true;
  }

  NodeInfo info;
  info.depth = level;
  // The parent is one level up from the first meeting too, so that a later
  // meeting at the same or a shallower level leaves the node where it is.
  info.parentDepth = parent ? level - 1 : -1;
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
