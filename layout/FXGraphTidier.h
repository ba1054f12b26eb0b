#pragma once
#include <array>
#include <map>

#include "GrphToolApi.h"
#include "host/core/Box.h"
#include "host/core/IdStamp.h"
#include "host/core/XY.h"
#include "host/edit/EditGraphIterator.h"
#include "layout/GraphExaminer.h"
#include "node_ui/NodeUIPosRec.h"
#include "node_ui/NodeUIPosSource.h"
#include "node_ui/VidRouting.h"

// Lays an effect graph out as a tree: the iterator's node is the root, the
// nodes feeding its inputs sit one depth spacing further along the depth
// axis, siblings are spread one breadth spacing apart along the breadth axis
// and centred on their parent. Depth runs towards smaller x in left-to-right
// orientation and towards smaller y in bottom-to-top. Results go into the
// nodes' position records as draw positions, in graph units.
//
// The tidier also carries a self-contained layout over a fixed-size local
// tree (the local-tree operations below), which places whole subtrees apart
// rather than nudging parents.
class GRPHTOOL_API FXGraphTidier {
public:
  static constexpr int maxLocalRecords = 500;
  static constexpr int maxLocalChildren = 20;

  // One node of the local tree; indices refer to other records of it.
  struct LocalTreeRec {
    NodeUIPosRec* record = nullptr; // owned by the position source
    double depthPos = 0;            // graph units
    double breadthPos = 0;          // graph units
    int children[maxLocalChildren] = {};
    int childCount = 0;
    int parent = -1;
    int depthLevel = 0; // iterator depth at which the node was taken in
  };

  // Spacings in graph units; the graph view passes 0.1875 for both.
  FXGraphTidier(NodeUIPosSource& source, double depthSpacing, double breadthSpacing);
  FXGraphTidier(const FXGraphTidier&) = delete;
  FXGraphTidier& operator=(const FXGraphTidier&) = delete;

  // Lays out the tree under the iterator's node with the root at (x, y).
  // False when the iterator has no node or the root has no position record.
  // With the every-path walk the levels are also placed again after every
  // spread, assuming nothing of the graph's shape (as for a cycle); the
  // positions are those of the default.
  bool tidyTreeStruct(EditGraphIterator& iterator, double x, double y,
                      GraphExaminer::Walk walk = GraphExaminer::Walk::byStructure);
  // The box (x0, y0, x1, y1) of the last layout's draw positions.
  Ux::Box<double> getTreeExtents() const { return {minX_, minY_, maxX_, maxY_}; }
  // Whether two records sit too close along the breadth axis of the current
  // orientation. False when either is missing.
  bool overlap(NodeUIPosRec* a, NodeUIPosRec* b) const;

  double getDepthSpacing() const noexcept { return depthSpacing_; }
  double getBreadthSpacing() const noexcept { return breadthSpacing_; }

  // Local tree. Records are indexed by int in the order they are taken in.

  // Takes in the iterator's node as a child of `parent` (-1 for the root) and,
  // recursively, its inputs whose records carry the same extra value. Returns
  // the node's index, or -1 when it is left out (skipped material, cycle,
  // already placed as deep or deeper, or the tree is full).
  int parseEditIntoLocalTree(EditGraphIterator& iterator, NodeUIPosRec* record, int parent);
  // Places the branch under a record, its root at `depth` along the depth axis.
  void tidyTreeRecursive(int index, double depth);
  // How far the branch of `b` must move along the breadth axis to clear `a`'s.
  double getShiftAmmount(int a, int b) const;
  void shiftBranch(int index, double amount);
  void offsetDepth(int index, int levels);
  // Sets the tree extents to the box of the local records' positions.
  void findLocalTreeExtents();
  // Writes (dx + depthPos, dy + breadthPos) into the branch's records, quietly.
  void updatePositionsInternal(int index, double dx, double dy);
  // Finds the extents and writes every local record's position from the root.
  void updatePositionRecsFromLocalTree();

  int getLocalTreeSize() const noexcept { return localCount_; }
  const LocalTreeRec& getLocalTreeRec(int index) const { return localTree_.at(static_cast<std::size_t>(index)); }
  // Empties the local tree for a new parse.
  void clearLocalTree() noexcept { localCount_ = 0; }

private:
  GraphExaminer::RelPos relativePosition(const GraphExaminer& examiner, const GraphExaminer::NodeInfo& info, double x,
                                         double y) const;
  static bool parentsOneLevelUp(const GraphExaminer& examiner);
  void placeLevelByLevel(const GraphExaminer& examiner, double x, double y);
  void placeLevelsAgainEachTime(const GraphExaminer& examiner, double x, double y);
  int findLocalRec(const NodeUIPosRec* record) const;
  void unlinkFromParent(int index);

  std::array<LocalTreeRec, maxLocalRecords> localTree_{};
  int localCount_ = 0;
  double depthSpacing_;
  double breadthSpacing_;
  double minX_ = 0;
  double minY_ = 0;
  double maxX_ = 0;
  double maxY_ = 0;
  NodeUIPosSource& source_;
};

// Turns relative positions into draw positions, level by level so that each
// parent is placed before its children. Records are written without
// notification.
// One node's place from its offsets and its parent's current place.
GRPHTOOL_API void storeAbsNodePosition(const GraphExaminer::NodeInfo& info, const GraphExaminer::RelPos& rel,
                                       VidRouting::Orientations::Orientation orientation);
GRPHTOOL_API void storeAbsNodePositions(const GraphExaminer& examiner,
                                        const std::map<IdStamp, GraphExaminer::RelPos>& relPos,
                                        VidRouting::Orientations::Orientation orientation);

// The point turned by `degrees` (anticlockwise, y up) about the origin.
GRPHTOOL_API XY<double> rotatePointAboutOrigin(const XY<double>& p, double degrees);
