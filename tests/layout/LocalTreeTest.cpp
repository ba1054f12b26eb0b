#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "layout/FXGraphTidier.h"
#include "tests/layout/LayoutTestGraph.h"
#include "tests/support/FakePosSource.h"

using layouttest::node;
using layouttest::TestGraph;
using testsupport::FakePosSource;

namespace {

// The local tree of a graph, parsed from the iterator given.
struct LocalTree {
  FakePosSource source;
  std::unique_ptr<FXGraphTidier> tidier;
  std::vector<IdStamp> ids; // node id per local index

  LocalTree(EditGraphIterator it, double depthSpacing = 1, double breadthSpacing = 1)
      : tidier(std::make_unique<FXGraphTidier>(source, depthSpacing, breadthSpacing)) {
    if (!it.isValid()) return;
    const int root = tidier->parseEditIntoLocalTree(it, source.getPosRecForNode(it.getNode()->getId()), -1);
    for (int i = 0; i < tidier->getLocalTreeSize(); ++i) ids.push_back(tidier->getLocalTreeRec(i).record->getNodeId());
    EXPECT_EQ(root, ids.empty() ? -1 : 0);
    EXPECT_EQ(it.getDepth(), 0) << "the walk leaves the iterator where it found it";
  }
  const FXGraphTidier::LocalTreeRec& rec(uint32_t n) const { return tidier->getLocalTreeRec(indexOf(n)); }
  int indexOf(uint32_t n) const {
    for (std::size_t i = 0; i < ids.size(); ++i)
      if (ids[i] == node(n)) return static_cast<int>(i);
    return -1;
  }
  std::vector<IdStamp> childrenOf(uint32_t n) const {
    std::vector<IdStamp> out;
    const auto& r = rec(n);
    for (int k = 0; k < r.childCount; ++k) out.push_back(ids[static_cast<std::size_t>(r.children[k])]);
    return out;
  }
};

} // namespace

// Inputs are taken in from the last to the first.
TEST(LocalTree, ParseTakesInputsLastFirstWithParentsAndLevels) {
  TestGraph g;
  g.materials({3, 4});
  g.effect(2, {4});
  g.effect(1, {2, 0, 3});
  LocalTree t(g.at(1));
  EXPECT_EQ(t.ids, (std::vector<IdStamp>{node(1), node(3), node(2), node(4)}));
  EXPECT_EQ(t.childrenOf(1), (std::vector<IdStamp>{node(3), node(2)}));
  EXPECT_EQ(t.rec(1).parent, -1);
  EXPECT_EQ(t.rec(4).parent, t.indexOf(2));
  EXPECT_EQ(t.rec(1).depthLevel, 0);
  EXPECT_EQ(t.rec(3).depthLevel, 1);
  EXPECT_EQ(t.rec(4).depthLevel, 2);
}

TEST(LocalTree, FullTreeRefusesFurtherNodes) {
  TestGraph g; // 25 inputs on the root; a chain of 600 effects
  std::vector<IdStamp> slots;
  for (uint32_t n = 2; n <= 26; ++n) slots.push_back(g.material(n));
  g.effectWithSlots(1, slots);
  g.material(1600);
  for (uint32_t n = 1001; n < 1600; ++n) g.effect(n, {n + 1});

  LocalTree wide(g.at(1));
  ASSERT_EQ(wide.tidier->getLocalTreeSize(), 1 + FXGraphTidier::maxLocalChildren);
  EXPECT_EQ(wide.ids[1], node(26));
  EXPECT_EQ(wide.ids.back(), node(7));
  EXPECT_EQ(wide.rec(1).childCount, FXGraphTidier::maxLocalChildren);

  LocalTree chain(g.at(1001));
  ASSERT_EQ(chain.tidier->getLocalTreeSize(), FXGraphTidier::maxLocalRecords);
  EXPECT_EQ(chain.ids.back(), node(1500));
  EXPECT_EQ(chain.rec(1500).childCount, 0);
  chain.tidier->tidyTreeRecursive(0, 0);
  chain.tidier->updatePositionRecsFromLocalTree();
  EXPECT_EQ(chain.source.pos(node(1500)).x, -499);
  EXPECT_EQ(chain.source.pos(node(1501)), (XY<double>(0, 0))); // never placed
}

// Spacings: depth 0.5, breadth 0.25.
TEST(LocalTree, LoneChildSitsHalfASpacingAwayFromItsSide) {
  TestGraph g;
  g.material(3);
  g.effect(2, {3});
  g.effect(1, {2});
  LocalTree t(g.at(1), 0.5, 0.25);
  t.tidier->tidyTreeRecursive(0, 2);
  // 3 is a leaf at 0; 2 goes below it (0 is not negative), 1 back above 2.
  EXPECT_DOUBLE_EQ(t.rec(3).breadthPos, 0);
  EXPECT_DOUBLE_EQ(t.rec(2).breadthPos, -0.125);
  EXPECT_DOUBLE_EQ(t.rec(1).breadthPos, 0);
  EXPECT_DOUBLE_EQ(t.rec(1).depthPos, 2);
  EXPECT_DOUBLE_EQ(t.rec(3).depthPos, 1);
}

// Root 1 over [4, 3, 2] (taken in as 2, 3, 4): 2 has leaves 5, 6, 7; 3 is a
// leaf; 4 has leaves 8, 9. Each branch clears every branch before it.
TEST(LocalTree, EachBranchClearsAllEarlierOnes) {
  TestGraph g;
  for (uint32_t n = 5; n <= 9; ++n) g.material(n);
  g.material(3);
  g.effect(2, {7, 6, 5});
  g.effect(4, {9, 8});
  g.effect(1, {4, 3, 2});
  LocalTree t(g.at(1), 0.5, 0.25);
  ASSERT_EQ(t.childrenOf(1), (std::vector<IdStamp>{node(2), node(3), node(4)}));
  t.tidier->tidyTreeRecursive(0, 1);

  const auto breadth = [&](uint32_t n) { return t.rec(n).breadthPos; };
  EXPECT_DOUBLE_EQ(breadth(5), 0);
  EXPECT_DOUBLE_EQ(breadth(6), 0.25);
  EXPECT_DOUBLE_EQ(breadth(7), 0.5);
  EXPECT_DOUBLE_EQ(breadth(2), 0.25);
  EXPECT_DOUBLE_EQ(breadth(3), 0.5);  // clear of 2 by a spacing
  EXPECT_DOUBLE_EQ(breadth(8), 0.75); // clear of 7, the last leaf of 2
  EXPECT_DOUBLE_EQ(breadth(9), 1.0);
  EXPECT_DOUBLE_EQ(breadth(4), 0.875);
  EXPECT_DOUBLE_EQ(breadth(1), 0.5625);
  EXPECT_DOUBLE_EQ(t.tidier->getShiftAmmount(t.indexOf(2), t.indexOf(4)), -0.25);
  EXPECT_DOUBLE_EQ(t.tidier->getShiftAmmount(t.indexOf(3), t.indexOf(4)), -0.375);

  t.tidier->updatePositionRecsFromLocalTree();
  EXPECT_EQ(t.source.pos(node(9)), (XY<double>(0, 1.0)));
  EXPECT_EQ(t.tidier->getTreeExtents(), (Ux::Box<double>(0, 0, 1, 1.0)));
}
