#include "layout/FXGraphTidier.h"

#include <cmath>
#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

#include "tests/layout/LayoutTestGraph.h"
#include "tests/support/FakePosSource.h"
#include "tests/support/NotifyRecorder.h"

using layouttest::node;
using layouttest::TestGraph;
using testsupport::FakePosSource;
using Orientations = VidRouting::Orientations;

namespace {

constexpr double gap = 0.1875; // the view's spacing, graph units

void expectAt(const FakePosSource& source, uint32_t n, double x, double y) {
  SCOPED_TRACE("node " + std::to_string(n));
  const XY<double> p = source.pos(node(n));
  EXPECT_DOUBLE_EQ(p.x, x);
  EXPECT_DOUBLE_EQ(p.y, y);
}

} // namespace

TEST(FXGraphTidier, RootAloneSitsAtTheOriginGiven) {
  TestGraph g;
  g.material(1);
  FakePosSource source;
  FXGraphTidier tidier(source, gap, gap);
  EditGraphIterator it = g.at(1);
  ASSERT_TRUE(tidier.tidyTreeStruct(it, 2.5, -1.25));
  expectAt(source, 1, 2.5, -1.25);
  EXPECT_EQ(tidier.getTreeExtents(), (Ux::Box<double>(2.5, -1.25, 2.5, -1.25)));
}

TEST(FXGraphTidier, RefusesWithoutRootNodeOrRecord) {
  TestGraph g;
  g.material(2);
  g.effect(1, {2});
  FakePosSource source({node(2)}); // no record for the root
  FXGraphTidier tidier(source, gap, gap);
  EditGraphIterator it = g.at(1);
  EXPECT_FALSE(tidier.tidyTreeStruct(it, 1, 2));
  EXPECT_EQ(source.pos(node(2)), (XY<double>(0, 0)));
  EditGraphIterator none;
  EXPECT_FALSE(tidier.tidyTreeStruct(none, 3, 4));
  EXPECT_EQ(tidier.getTreeExtents(), (Ux::Box<double>(3, 4, 3, 4)));
}

// 1 <- [2, 0, 3, 3, 4], 2 <- [5]: three distinct inputs, spaced by slot index
// from the positive end; a repeated input is laid out once, at its first slot.
TEST(FXGraphTidier, SiblingsSpreadByInputSlotInBothOrientations) {
  for (auto orientation : {Orientations::LeftToRight, Orientations::BottomToTop}) {
    SCOPED_TRACE(Orientations::asString(orientation).str());
    TestGraph g;
    g.material(3);
    g.material(4);
    g.material(5);
    g.effect(2, {5});
    g.effect(1, {2, 0, 3, 3, 4});
    FakePosSource source(orientation);
    FXGraphTidier tidier(source, 0.5, gap);
    EditGraphIterator it = g.at(1);
    ASSERT_TRUE(tidier.tidyTreeStruct(it, 1, 2));

    // Breadth offsets for n = 3: s - slot x s; depth 0.5 a level.
    const struct {
      uint32_t n;
      double depth, breadth;
    } expected[] = {{1, 0, 0}, {2, 0.5, gap}, {3, 0.5, -gap}, {4, 0.5, -3 * gap}, {5, 1.0, gap}};
    for (const auto& e : expected) {
      if (orientation == Orientations::LeftToRight)
        expectAt(source, e.n, 1 - e.depth, 2 + e.breadth);
      else
        expectAt(source, e.n, 1 - e.breadth, 2 - e.depth);
    }
    const Ux::Box<double> box = tidier.getTreeExtents();
    if (orientation == Orientations::LeftToRight)
      EXPECT_EQ(box, (Ux::Box<double>(0, 2 - 3 * gap, 1, 2 + gap)));
    else
      EXPECT_EQ(box, (Ux::Box<double>(1 - gap, 1, 1 + 3 * gap, 2)));
  }
}

// Node 9 feeds the root (level 1) and node 3 (level 2): laid out once, at
// level 3 under node 3. Node 2 keeps the offset of its slot regardless.
TEST(FXGraphTidier, SharedNodeIsPlacedUnderItsDeepestParent) {
  TestGraph g;
  g.material(9);
  g.effect(3, {9});
  g.effect(2, {3});
  g.effect(1, {9, 2});
  FakePosSource source;
  FXGraphTidier tidier(source, gap, gap);
  EditGraphIterator it = g.at(1);
  ASSERT_TRUE(tidier.tidyTreeStruct(it, 0, 0));
  expectAt(source, 2, -gap, -gap / 2);
  expectAt(source, 3, -2 * gap, -gap / 2);
  expectAt(source, 9, -3 * gap, -gap / 2);
}

// 1 <- [2, 3, 4], 3 <- [5, 6], 4 <- [7, 8] first puts 6 and 7 on one spot.
// The level above opens by half a spacing each way about node 3; node 2 moves
// up with it although it is not a parent of the pair.
TEST(FXGraphTidier, SpreadMovesEverythingUpToTheFirstParentOneWay) {
  TestGraph g;
  for (uint32_t n : {2, 5, 6, 7, 8}) g.material(n);
  g.effect(3, {5, 6});
  g.effect(4, {7, 8});
  g.effect(1, {2, 3, 4});
  FakePosSource source;
  FXGraphTidier tidier(source, gap, gap);
  EditGraphIterator it = g.at(1);
  ASSERT_TRUE(tidier.tidyTreeStruct(it, 0, 0));
  expectAt(source, 2, -gap, 1.5 * gap);
  expectAt(source, 3, -gap, 0.5 * gap);
  expectAt(source, 4, -gap, -1.5 * gap);
  expectAt(source, 6, -2 * gap, 0);
  expectAt(source, 7, -2 * gap, -gap);
}

// Cousins 6 and 7 end up one breadth spacing apart. Bottom-to-top measures
// them against the depth spacing: equal to it they are clear; 0.00011 closer
// than it they overlap, and the parents 2 and 3 move apart by a spacing.
TEST(FXGraphTidier, OverlapThresholdAndTheParentsSpread) {
  struct Case {
    double depthSpacing;
    double parentX; // |x| of nodes 2 and 3, and of 6 and 7
  };
  for (const Case& c : {Case{gap, gap / 2}, Case{gap + 0.00011, gap}}) {
    SCOPED_TRACE(c.depthSpacing);
    TestGraph g;
    g.material(6);
    g.material(7);
    g.effect(2, {6});
    g.effect(3, {7});
    g.effect(1, {2, 3});
    FakePosSource source(Orientations::BottomToTop);
    FXGraphTidier tidier(source, c.depthSpacing, gap);
    EditGraphIterator it = g.at(1);
    ASSERT_TRUE(tidier.tidyTreeStruct(it, 0, 0));
    expectAt(source, 2, -c.parentX, -c.depthSpacing);
    expectAt(source, 3, c.parentX, -c.depthSpacing);
    expectAt(source, 6, -c.parentX, -2 * c.depthSpacing);
    expectAt(source, 7, c.parentX, -2 * c.depthSpacing);
  }
}

TEST(FXGraphTidier, OverlapMeasuresTheBreadthAxisWithTolerance) {
  FakePosSource source({node(1), node(2)});
  NodeUIPosRec* a = source.find(node(1));
  NodeUIPosRec* b = source.find(node(2));
  FXGraphTidier tidier(source, 0.5, gap);
  const auto overlapAt = [&](XY<double> pa, XY<double> pb) {
    a->setDrawPosition(pa, false);
    b->setDrawPosition(pb, false);
    return tidier.overlap(a, b);
  };
  // Left to right: y against the breadth spacing.
  EXPECT_FALSE(overlapAt({0, 0}, {0, gap}));
  EXPECT_TRUE(overlapAt({0, 0}, {0, gap - 0.00011}));
  EXPECT_FALSE(overlapAt({0, 0}, {0, gap - 0.00009}));
  EXPECT_TRUE(overlapAt({0, 1}, {5, 1}));
  // Bottom to top: x against the depth spacing.
  source.setOrientation(Orientations::BottomToTop);
  EXPECT_FALSE(overlapAt({0, 0}, {-0.5, 0}));
  EXPECT_TRUE(overlapAt({0, 0}, {0.5 - 0.00011, 0}));
  EXPECT_TRUE(overlapAt({0, 0}, {0, 7}));
  EXPECT_FALSE(tidier.overlap(a, nullptr));
}

// A parent that is no effect instance counts no input tracks: n - 1 wraps to
// 2^64 - 1, so its inputs are thrown about 1.7e18 graph units out, where the
// slot spacing is lost to rounding and the siblings share one spot. That pair
// of siblings, found first on level 2, leaves the level above as it was.
TEST(FXGraphTidier, NonEffectParentSendsItsInputsFarOut) {
  TestGraph g;
  for (uint32_t n : {4, 5, 6}) g.material(n);
  g.splitter(2, {4, 5});
  g.effect(3, {6});
  g.effect(1, {2, 3});
  FakePosSource source;
  FXGraphTidier tidier(source, gap, gap);
  EditGraphIterator it = g.at(1);
  ASSERT_TRUE(tidier.tidyTreeStruct(it, 0, 0));

  const double far = static_cast<double>(std::numeric_limits<uint64_t>::max()) * gap * 0.5;
  EXPECT_EQ(far, 0x1p64 * gap * 0.5);
  expectAt(source, 2, -gap, gap / 2);
  expectAt(source, 3, -gap, -gap / 2);
  expectAt(source, 4, -2 * gap, gap / 2 + far);
  expectAt(source, 5, -2 * gap, gap / 2 + far - gap);
  EXPECT_EQ(source.pos(node(4)), source.pos(node(5)));
  EXPECT_DOUBLE_EQ(tidier.getTreeExtents().y1, gap / 2 + far);
}

TEST(FXGraphTidier, WritesPositionsQuietly) {
  TestGraph g;
  g.material(2);
  g.effect(1, {2, 2});
  FakePosSource source;
  NodeUIPosRec* leaf = source.getPosRecForNode(node(2));
  testsupport::NotifyRecorder heard(leaf->getNotify());
  FXGraphTidier tidier(source, gap, gap);
  EditGraphIterator it = g.at(1);
  ASSERT_TRUE(tidier.tidyTreeStruct(it, 1, 1));
  expectAt(source, 2, 1 - gap, 1); // one distinct input: centred
  EXPECT_TRUE(heard.heard.empty());
}

TEST(RotatePointAboutOrigin, TurnsAnticlockwiseByDegrees) {
  const auto expectNear = [](XY<double> got, XY<double> want) {
    EXPECT_NEAR(got.x, want.x, 1e-12);
    EXPECT_NEAR(got.y, want.y, 1e-12);
  };
  expectNear(rotatePointAboutOrigin({1, 0}, 90), {0, 1});
  expectNear(rotatePointAboutOrigin({0, 2}, 90), {-2, 0});
  expectNear(rotatePointAboutOrigin({-3, 0}, 90), {0, -3});
  expectNear(rotatePointAboutOrigin({0, -1}, -90), {-1, 0});
  // One point per quadrant, each turned by a half turn.
  expectNear(rotatePointAboutOrigin({3, 4}, 180), {-3, -4});
  expectNear(rotatePointAboutOrigin({-3, 4}, 180), {3, -4});
  expectNear(rotatePointAboutOrigin({-3, -4}, 180), {3, 4});
  expectNear(rotatePointAboutOrigin({3, -4}, 180), {-3, 4});
  expectNear(rotatePointAboutOrigin({1, 1}, 45), {0, std::sqrt(2.0)});
  expectNear(rotatePointAboutOrigin({2, -5}, 360), {2, -5});
  EXPECT_EQ(rotatePointAboutOrigin({0, 0}, 33), (XY<double>(0, 0)));
}
