// The examiner finds from the graph's structure what the path walk finds by
// meeting every path. Side by side on thousands of generated graphs (shared
// inputs, repeated and free slots, wide and deep, some with cycles), every
// record must agree and every tidied coordinate must be the same double.
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "tests/layout/LayoutTestGraph.h"
#include "tests/support/FakePosSource.h"
#include "tests/support/LayoutOracle.h"

using layouttest::node;
using layouttest::TestGraph;
using testsupport::FakePosSource;

namespace {

struct Shape {
  int nodes;
  int maxInputs;
  int reach; // how far down an input may point (small: deep, large: wide)
  double shareChance;
  bool cycles;
};

// A graph over nodes 1..n: node 1 the root, each input pointing further
// down (or, with cycles, now and then back up), materials at the bottom.
// Graphs whose paths would run past a bound are made again with fewer
// shared inputs, so that the path walk stays quick.
void build(TestGraph& g, const Shape& s, std::mt19937& random) {
  std::uniform_real_distribution<double> chance(0, 1);
  const int n = s.nodes;
  std::vector<std::vector<uint32_t>> inputs(static_cast<std::size_t>(n) + 1);
  for (int i = 1; i <= n; ++i) {
    if (i > n - 2 || chance(random) < 0.15) continue; // a material
    const int count = 1 + static_cast<int>(random() % static_cast<unsigned>(s.maxInputs));
    for (int k = 0; k < count; ++k) {
      const double c = chance(random);
      if (c < 0.08) {
        inputs[static_cast<std::size_t>(i)].push_back(0); // a free slot
      } else if (s.cycles && c < 0.12 && i > 1) {
        inputs[static_cast<std::size_t>(i)].push_back(static_cast<uint32_t>(1 + random() % static_cast<unsigned>(i)));
      } else {
        const bool shared = chance(random) < s.shareChance;
        const int span = shared ? s.reach * 2 : s.reach;
        const int to = std::min(n, i + 1 + static_cast<int>(random() % static_cast<unsigned>(span)));
        inputs[static_cast<std::size_t>(i)].push_back(static_cast<uint32_t>(to));
        if (chance(random) < 0.1) inputs[static_cast<std::size_t>(i)].push_back(static_cast<uint32_t>(to)); // twice
      }
    }
  }
  // Paths from the root, counted bottom up; far too many makes the walk slow.
  std::vector<double> paths(static_cast<std::size_t>(n) + 1, 1);
  for (int i = n; i >= 1; --i) {
    double sum = 0;
    for (uint32_t to : inputs[static_cast<std::size_t>(i)])
      if (to > static_cast<uint32_t>(i)) sum += paths[to];
    paths[static_cast<std::size_t>(i)] = std::max(1.0, sum);
  }
  if (paths[1] > 20000 && !s.cycles) {
    Shape fewer = s;
    fewer.shareChance /= 2;
    fewer.reach += 1;
    build(g, fewer, random);
    return;
  }
  for (int i = 1; i <= n; ++i) {
    if (inputs[static_cast<std::size_t>(i)].empty()) {
      g.material(static_cast<uint32_t>(i));
      continue;
    }
    std::vector<IdStamp> slots;
    for (uint32_t to : inputs[static_cast<std::size_t>(i)]) slots.push_back(to ? node(to) : IdStamp());
    g.effectWithSlots(static_cast<uint32_t>(i), slots);
  }
}

TEST(PathWalkComparison, TheStructureGivesWhatEveryPathGivesOnThousandsOfGraphs) {
  const Shape shapes[] = {
      {12, 2, 2, 0.3, false}, {30, 3, 3, 0.3, false}, {60, 2, 2, 0.2, false},  {40, 4, 8, 0.4, false},
      {25, 3, 2, 0.5, true},  {80, 1, 1, 0.1, false}, {50, 4, 20, 0.3, false},
  };
  std::mt19937 random(20261124);
  int compared = 0;
  for (const Shape& shape : shapes)
    for (int round = 0; round < 400; ++round) {
      TestGraph g;
      build(g, shape, random);
      SCOPED_TRACE("shape of " + std::to_string(shape.nodes) + " nodes, round " + std::to_string(round));
      FakePosSource source;
      GraphExaminer structure(source), everyPath(source);
      EditGraphIterator a = g.at(1), b = g.at(1);
      structure.examine(a);
      testsupport::examineEveryPath(everyPath, b);
      EXPECT_EQ(testsupport::examinationDifferences(structure, everyPath), "");
      std::vector<IdStamp> ids;
      for (int i = 1; i <= shape.nodes; ++i) ids.push_back(node(static_cast<uint32_t>(i)));
      for (auto o : {VidRouting::Orientations::LeftToRight, VidRouting::Orientations::BottomToTop})
        EXPECT_EQ(testsupport::tidiedBits(g.at(1), ids, o, GraphExaminer::Walk::byStructure),
                  testsupport::tidiedBits(g.at(1), ids, o, GraphExaminer::Walk::everyPath));
      if (HasFailure()) return;
      ++compared;
    }
  EXPECT_EQ(compared, 2800);
}

// Examined from a node below the root, the nodes above it on the way down
// count as on the path: an input that leads back up to one of them closes a
// cycle, and the node is not taken into the start's tree. 1 -> 2 -> 3, and 3
// takes 4 and 1; examined from 3, reached through 1 and 2.
TEST(PathWalkComparison, FromBelowTheRootTheWayDownCountsAsThePath) {
  TestGraph g;
  g.effect(1, {2});
  g.effect(2, {3});
  g.effect(3, {4, 1});
  g.material(4);
  EditGraphIterator a = g.at(1), b = g.at(1);
  for (EditGraphIterator* it : {&a, &b}) ASSERT_TRUE(it->moveToInput(0) && it->moveToInput(0));
  FakePosSource source;
  GraphExaminer structure(source), everyPath(source);
  structure.examine(a);
  testsupport::examineEveryPath(everyPath, b);
  EXPECT_EQ(testsupport::examinationDifferences(structure, everyPath), "");
  EXPECT_EQ(structure.firstMet(), (std::vector<IdStamp>{node(3), node(4)}));
}

// A chain of effects each taking the same input twice has two to the power
// of its length paths; the structure finds their result at once.
TEST(PathWalkComparison, ADiamondChainOfSixtyLevels) {
  TestGraph g;
  const uint32_t levels = 60;
  for (uint32_t i = 1; i <= levels; ++i) g.effect(i, {i + 1, i + 1});
  g.material(levels + 1);
  FakePosSource source;
  GraphExaminer examiner(source);
  EditGraphIterator it = g.at(1);
  examiner.examine(it);
  ASSERT_EQ(examiner.levels().size(), levels + 1);
  const GraphExaminer::NodeInfo* last = examiner.find(node(levels + 1));
  ASSERT_TRUE(last);
  // Met at its level first through slot 0, then again through slot 1 of the
  // same parent: marked, and left at the first slot.
  EXPECT_EQ(std::tuple(last->depth, last->parentDepth, last->inputIndex), std::tuple(60, 59, 0));
}

} // namespace
