#pragma once
#include <map>
#include <unordered_map>
#include <vector>

#include "GrphToolApi.h"
#include "host/core/IdStamp.h"
#include "host/core/Ptr.h"
#include "host/edit/EditGraphIterator.h"
#include "host/edit/EditGraphWalk.h"
#include "host/edit/FXGraphNodeBase.h"
#include "node_ui/NodeUIPosRec.h"
#include "node_ui/NodeUIPosSource.h"

// Depth-first walk of the effect graph under the iterator's node. The visitor
// is called once per path that reaches a node (a node shared by two branches
// is visited from each); returning false stops the walk below that node. A
// node that repeats one above it on the path closes a cycle and is neither
// visited nor descended into. The iterator is back where it started when the
// walk returns.
template <class Visitor>
void applyToTree(EditGraphIterator& iterator, Visitor& visitor) {
  if (!iterator.isValid()) return;
  walkInputsDepthFirst(iterator, [&](EditGraphIterator& at) {
    const Ux::Ptr<FXGraphNodeBase> node = at.getNode();
    if (!node || !node->getId().valid()) return WalkStep::skip;
    const IdStamp id = node->getId();
    for (int depth = at.getDepth() - 1; depth >= 0; --depth) {
      const Ux::Ptr<FXGraphNodeBase> above = at.getNode(depth);
      if (above && above->getId() == id) return WalkStep::skip;
    }
    return visitor(at) ? WalkStep::descend : WalkStep::skip;
  });
}

// Finds where each node under a start node belongs in a tree: its level (the
// deepest at which any path meets it), the parent through which it was met
// there and the parent's input it feeds. A node shared by several branches is
// so laid out once, below the deepest of them. The tidier turns the result
// into positions.
class GRPHTOOL_API GraphExaminer {
public:
  struct NodeInfo {
    int depth = 0;        // level: 0 is the start node
    int parentDepth = -1; // level of the recorded parent; -1 for none
    Ux::Ptr<FXGraphNodeBase> node;
    NodeUIPosRec* record = nullptr;  // owned by the position source; may be null
    Ux::Ptr<FXGraphNodeBase> parent; // empty for the start node
    int inputIndex = -1;             // the parent's input that this node feeds
    int slot = -1;                   // its place in its level, once filed
  };

  // A node's place relative to its parent's record, in graph units along the
  // layout's axes; the tidier fills these. The root has no parent record and
  // holds its absolute position.
  struct RelPos {
    NodeUIPosRec* parentRecord = nullptr;
    double depthOffset = 0;
    double breadthOffset = 0;
  };

  // How examine() finds the records. byStructure: from the nodes and wires,
  // in time that grows with them; a graph that closes a cycle is walked
  // path by path instead, since there the records depend on the paths.
  // everyPath: by meeting every path (applyToTree with this examiner), in
  // time that grows with the paths. On a graph without cycles both give the
  // same records.
  enum class Walk { byStructure, everyPath };

  explicit GraphExaminer(NodeUIPosSource& source);

  // Walks the tree under the iterator's node and files the nodes by level.
  // Forgets any earlier examination first.
  void examine(EditGraphIterator& iterator, Walk walk = Walk::byStructure);

  // For a walk driven by hand: sets the level 0 depth from the iterator at
  // the start node and forgets earlier records. Call buildLevels() after.
  void startAt(const EditGraphIterator& start);
  // Records the iterator's node; always true, so the walk goes on below it.
  bool operator()(const EditGraphIterator& iterator);
  // Files the finished records by level, each level in order of first meeting.
  void buildLevels();

  // By node id, in no order (firstMet() and levels() give the order).
  const std::unordered_map<IdStamp, NodeInfo>& records() const noexcept { return records_; }
  // The record of a node, or null.
  const NodeInfo* find(const IdStamp& id) const;
  const std::vector<std::vector<NodeInfo>>& levels() const noexcept { return levels_; }
  // Node ids in the order the walk first met them.
  const std::vector<IdStamp>& firstMet() const noexcept { return firstMet_; }

private:
  // examine() for a graph without cycles; false, having found one.
  bool examineStructure(EditGraphIterator& iterator);

  std::unordered_map<IdStamp, NodeInfo> records_;
  // Path length (host depth + 1) at the start node, so that it gets level 0.
  int baseDepth_ = 1;
  NodeUIPosSource& source_;
  std::vector<std::vector<NodeInfo>> levels_;
  std::vector<IdStamp> firstMet_;
};
