#include "layout/FXGraphTidier.h"

#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

#include "graph_view/FXGraphView.h"
#include "tests/layout/LayoutTestGraph.h"
#include "tests/support/FakePosSource.h"
#include "tests/support/NotifyRecorder.h"

using layouttest::node;
using layouttest::TestGraph;
using testsupport::FakePosSource;
using Orientations = VidRouting::Orientations;

namespace {

constexpr double gap = FXGraphView::layoutGap; // the spacing the view tidies with

// Node 1's tree of a graph, tidied with its root at (x, y).
struct Tidied {
  FakePosSource source;
  FXGraphTidier tidier;
  Tidied(const TestGraph& g, double x = 0, double y = 0, Orientations::Orientation o = Orientations::LeftToRight,
         double depthSpacing = gap)
      : source(o), tidier(source, depthSpacing, gap) {
    EditGraphIterator it = g.at(1);
    EXPECT_TRUE(tidier.tidyTreeStruct(it, x, y));
  }
  void expectAt(uint32_t n, double x, double y) const {
    SCOPED_TRACE("node " + std::to_string(n));
    const XY<double> p = source.pos(node(n));
    EXPECT_DOUBLE_EQ(p.x, x);
    EXPECT_DOUBLE_EQ(p.y, y);
  }
};

} // namespace

TEST(FXGraphTidier, RootSitsAtTheOriginGivenPositionsAreWrittenQuietlyAndRefusalsMoveNothing) {
  TestGraph g;
  g.material(2);
  g.effect(1, {2, 2});
  FakePosSource source;
  testsupport::NotifyRecorder heard(source.getPosRecForNode(node(2))->getNotify());
  FXGraphTidier tidier(source, gap, gap);
  EditGraphIterator it = g.at(1), none;
  ASSERT_TRUE(tidier.tidyTreeStruct(it, 2.5, -1.25));
  EXPECT_EQ(source.pos(node(1)), XY<double>(2.5, -1.25));
  EXPECT_EQ(source.pos(node(2)), XY<double>(2.5 - gap, -1.25)) << "one distinct input: centred";
  EXPECT_EQ(tidier.getTreeExtents(), (Ux::Box<double>(2.5 - gap, -1.25, 2.5, -1.25)));
  EXPECT_TRUE(heard.heard.empty());

  FakePosSource partial({node(2)}); // no record for the root
  FXGraphTidier refusing(partial, gap, gap);
  EXPECT_FALSE(refusing.tidyTreeStruct(it, 1, 2));
  EXPECT_EQ(partial.pos(node(2)), (XY<double>(0, 0)));
  EXPECT_FALSE(refusing.tidyTreeStruct(none, 3, 4));
  EXPECT_EQ(refusing.getTreeExtents(), (Ux::Box<double>(3, 4, 3, 4)));
}

// 1 <- [2, 0, 3, 3, 4], 2 <- [5]: three distinct inputs, spaced by slot index
// from the positive end; a repeated input is laid out once, at its first slot.
TEST(FXGraphTidier, SiblingsSpreadByInputSlotInBothOrientations) {
  TestGraph g;
  g.materials({3, 4, 5});
  g.effect(2, {5});
  g.effect(1, {2, 0, 3, 3, 4});
  for (auto orientation : {Orientations::LeftToRight, Orientations::BottomToTop}) {
    SCOPED_TRACE(Orientations::asString(orientation).str());
    const Tidied t(g, 1, 2, orientation, 0.5);
    // Breadth offsets for n = 3: s - slot x s; depth 0.5 a level.
    const struct {
      uint32_t n;
      double depth, breadth;
    } expected[] = {{1, 0, 0}, {2, 0.5, gap}, {3, 0.5, -gap}, {4, 0.5, -3 * gap}, {5, 1.0, gap}};
    for (const auto& e : expected) {
      if (orientation == Orientations::LeftToRight)
        t.expectAt(e.n, 1 - e.depth, 2 + e.breadth);
      else
        t.expectAt(e.n, 1 - e.breadth, 2 - e.depth);
    }
    EXPECT_EQ(t.tidier.getTreeExtents(), orientation == Orientations::LeftToRight
                                             ? Ux::Box<double>(0, 2 - 3 * gap, 1, 2 + gap)
                                             : Ux::Box<double>(1 - gap, 1, 1 + 3 * gap, 2));
  }
}

// Node 9 feeds the root (level 1) and node 3 (level 2): laid out once, at
// level 3 under node 3, whichever of the root's inputs the walk takes first.
// Node 2 keeps the offset of its slot regardless.
TEST(FXGraphTidier, SharedNodeIsPlacedUnderItsDeepestParent) {
  for (bool shallowFirst : {true, false}) {
    SCOPED_TRACE(shallowFirst ? "shallow branch first" : "deep branch first");
    TestGraph g;
    g.material(9);
    g.effect(3, {9});
    g.effect(2, {3});
    if (shallowFirst)
      g.effect(1, {9, 2});
    else
      g.effect(1, {2, 9});
    const Tidied t(g);
    const double side = shallowFirst ? -gap / 2 : gap / 2;
    t.expectAt(2, -gap, side);
    t.expectAt(3, -2 * gap, side);
    t.expectAt(9, -3 * gap, side);
  }
}

// Node 4 is met at level 2 through each of 2, 3 and 5: the second meeting
// takes it over and the third leaves it there, so it lies under node 3.
TEST(FXGraphTidier, InputSharedOnOneLevelLiesUnderTheSecondBranch) {
  for (bool third : {false, true}) {
    SCOPED_TRACE(third ? "three branches" : "two branches");
    TestGraph g;
    g.material(4);
    g.effect(2, {4});
    g.effect(3, {4});
    g.effect(5, {4});
    if (third)
      g.effect(1, {2, 3, 5});
    else
      g.effect(1, {2, 3});
    const Tidied t(g);
    const double side = third ? 0 : -gap / 2; // node 3's slot
    t.expectAt(3, -gap, side);
    t.expectAt(4, -2 * gap, side);
  }
}

// 1 <- [2, 3, 4], 3 <- [5, 6], 4 <- [7, 8] first puts 6 and 7 on one spot.
// The level above opens by half a spacing each way about node 3; node 2 moves
// up with it although it is not a parent of the pair.
TEST(FXGraphTidier, SpreadMovesEverythingUpToTheFirstParentOneWay) {
  TestGraph g;
  g.materials({2, 5, 6, 7, 8});
  g.effect(3, {5, 6});
  g.effect(4, {7, 8});
  g.effect(1, {2, 3, 4});
  const Tidied t(g);
  t.expectAt(2, -gap, 1.5 * gap);
  t.expectAt(3, -gap, 0.5 * gap);
  t.expectAt(4, -gap, -1.5 * gap);
  t.expectAt(6, -2 * gap, 0);
  t.expectAt(7, -2 * gap, -gap);
}

// Cousins 6 and 7 end up one breadth spacing apart. Bottom-to-top measures
// them against the depth spacing: equal to it they are clear; 0.00011 closer
// than it they overlap, and the parents 2 and 3 move apart by a spacing.
TEST(FXGraphTidier, OverlapThresholdAndTheParentsSpread) {
  TestGraph g;
  g.materials({6, 7});
  g.effect(2, {6});
  g.effect(3, {7});
  g.effect(1, {2, 3});
  for (const auto& [depth, x] : {std::pair(gap, gap / 2), std::pair(gap + 0.00011, gap)}) {
    SCOPED_TRACE(depth);
    const Tidied t(g, 0, 0, Orientations::BottomToTop, depth);
    t.expectAt(2, -x, -depth);
    t.expectAt(3, x, -depth);
    t.expectAt(6, -x, -2 * depth);
    t.expectAt(7, x, -2 * depth);
  }

  // Left to right: y against the breadth spacing, with the same tolerance.
  FakePosSource source({node(1), node(2)});
  NodeUIPosRec *a = source.find(node(1)), *b = source.find(node(2));
  FXGraphTidier tidier(source, 0.5, gap);
  const auto overlapAt = [&](XY<double> pa, XY<double> pb) {
    a->setDrawPosition(pa, false);
    b->setDrawPosition(pb, false);
    return tidier.overlap(a, b);
  };
  EXPECT_FALSE(overlapAt({0, 0}, {0, gap}));
  EXPECT_TRUE(overlapAt({0, 0}, {0, gap - 0.00011}));
  EXPECT_FALSE(overlapAt({0, 0}, {0, gap - 0.00009}));
  EXPECT_TRUE(overlapAt({0, 1}, {5, 1})) << "the depth axis does not count";
  EXPECT_FALSE(tidier.overlap(a, nullptr));
}

// A parent that is no effect instance counts no input tracks: n - 1 wraps to
// 2^64 - 1, so its inputs are thrown about 1.7e18 graph units out, where the
// slot spacing is lost to rounding and the siblings share one spot. That pair
// of siblings, found first on level 2, leaves the level above as it was.
TEST(FXGraphTidier, NonEffectParentSendsItsInputsFarOut) {
  TestGraph g;
  g.materials({4, 5, 6});
  g.splitter(2, {4, 5});
  g.effect(3, {6});
  g.effect(1, {2, 3});
  const Tidied t(g);
  const double far = static_cast<double>(std::numeric_limits<uint64_t>::max()) * gap * 0.5;
  EXPECT_EQ(far, 0x1p64 * gap * 0.5);
  t.expectAt(2, -gap, gap / 2);
  t.expectAt(3, -gap, -gap / 2);
  t.expectAt(4, -2 * gap, gap / 2 + far);
  t.expectAt(5, -2 * gap, gap / 2 + far - gap);
  EXPECT_EQ(t.source.pos(node(4)), t.source.pos(node(5)));
  EXPECT_DOUBLE_EQ(t.tidier.getTreeExtents().y1, gap / 2 + far);
}
