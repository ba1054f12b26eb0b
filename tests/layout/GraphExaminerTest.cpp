#include "layout/GraphExaminer.h"

#include <map>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "tests/layout/LayoutTestGraph.h"
#include "tests/support/FakePosSource.h"

using layouttest::node;
using layouttest::TestGraph;
using testsupport::FakePosSource;

namespace {

std::vector<std::vector<IdStamp>> levelIds(const GraphExaminer& examiner) {
  std::vector<std::vector<IdStamp>> out;
  for (const auto& level : examiner.levels()) {
    out.emplace_back();
    for (const auto& info : level) out.back().push_back(info.node->getId());
  }
  return out;
}

IdStamp parentOf(const GraphExaminer& examiner, uint32_t n) {
  const GraphExaminer::NodeInfo* info = examiner.find(node(n));
  return info && info->parent ? info->parent->getId() : IdStamp();
}

// Counts visits per node; refuses to go below `stopAt`.
struct CountingVisitor {
  std::map<IdStamp, int> visits;
  IdStamp stopAt;
  bool operator()(const EditGraphIterator& it) {
    ++visits[it.getNode()->getId()];
    return it.getNode()->getId() != stopAt;
  }
};

} // namespace

TEST(GraphExaminer, FilesATreeByLevelWithParentAndInput) {
  TestGraph g;
  g.materials({3, 4, 5});
  g.effect(2, {4, 0, 5});
  g.effect(1, {2, 3});
  FakePosSource source({node(1), node(5)}); // the others have no record
  GraphExaminer examiner(source);
  EditGraphIterator it = g.at(1);
  examiner.examine(it);

  EXPECT_EQ(levelIds(examiner), (std::vector<std::vector<IdStamp>>{{node(1)}, {node(2), node(3)}, {node(4), node(5)}}));
  EXPECT_EQ(examiner.firstMet(), (std::vector<IdStamp>{node(1), node(2), node(4), node(5), node(3)}));

  const GraphExaminer::NodeInfo *root = examiner.find(node(1)), *five = examiner.find(node(5));
  ASSERT_TRUE(root && five);
  EXPECT_EQ(std::pair(root->depth, root->parentDepth), std::pair(0, -1));
  EXPECT_FALSE(root->parent);
  EXPECT_EQ(root->record, source.find(node(1)));
  // Input 2 of node 2, past a free slot; met once, so no parent depth.
  EXPECT_EQ(std::tuple(five->depth, five->parentDepth, five->inputIndex), std::tuple(2, -1, 2));
  EXPECT_EQ(parentOf(examiner, 5), node(2));
  EXPECT_EQ(five->record, source.find(node(5)));
  EXPECT_EQ(examiner.find(node(4))->record, nullptr);

  // The walk leaves the iterator where it found it.
  EXPECT_EQ(it.getDepth(), 0);
  EXPECT_EQ(it.getNode()->getId(), node(1));
}

TEST(GraphExaminer, CycleEndsTheWalkAtTheRepeatedNode) {
  TestGraph g;
  g.material(4);
  g.effect(3, {2, 4}); // input 0 closes the loop 2 -> 3 -> 2
  g.effect(2, {3});
  g.effect(1, {2});
  FakePosSource source;
  GraphExaminer examiner(source);
  EditGraphIterator it = g.at(1);
  examiner.examine(it);

  EXPECT_EQ(levelIds(examiner), (std::vector<std::vector<IdStamp>>{{node(1)}, {node(2)}, {node(3)}, {node(4)}}));
  EXPECT_EQ(parentOf(examiner, 2), node(1));

  CountingVisitor visitor;
  applyToTree(it, visitor);
  EXPECT_EQ(visitor.visits, (std::map<IdStamp, int>{{node(1), 1}, {node(2), 1}, {node(3), 1}, {node(4), 1}}));
}

TEST(ApplyToTree, VisitsOncePerPathAndNotBelowARefusal) {
  TestGraph g; // a diamond: 4 (and 5 below it) reached through 2 and through 3
  g.material(5);
  g.effect(4, {5});
  g.effect(3, {4});
  g.effect(2, {4});
  g.effect(1, {2, 3});
  EditGraphIterator it = g.at(1);

  CountingVisitor all;
  applyToTree(it, all);
  EXPECT_EQ(all.visits, (std::map<IdStamp, int>{{node(1), 1}, {node(2), 1}, {node(3), 1}, {node(4), 2}, {node(5), 2}}));

  CountingVisitor refusing;
  refusing.stopAt = node(2);
  applyToTree(it, refusing);
  EXPECT_EQ(refusing.visits,
            (std::map<IdStamp, int>{{node(1), 1}, {node(2), 1}, {node(3), 1}, {node(4), 1}, {node(5), 1}}));
  EXPECT_EQ(it.getDepth(), 0);
}

// Started at node 2, reached from root 1: levels count from node 2, and node
// 1 above it still closes a cycle. An invalid start gives nothing at all.
TEST(GraphExaminer, LevelsCountFromTheStartAndAnInvalidStartGivesNothing) {
  TestGraph g;
  g.material(3);
  g.effect(2, {3, 1});
  g.effect(1, {2});
  EditGraphIterator it = g.at(1);
  ASSERT_TRUE(it.moveToInput(0));
  FakePosSource source;
  GraphExaminer examiner(source);
  examiner.examine(it);
  EXPECT_EQ(levelIds(examiner), (std::vector<std::vector<IdStamp>>{{node(2)}, {node(3)}}));
  EXPECT_FALSE(examiner.find(node(2))->parent);
  EXPECT_EQ(it.getDepth(), 1);

  for (EditGraphIterator invalid : {EditGraphIterator(), g.at(77)}) {
    examiner.examine(invalid);
    EXPECT_TRUE(examiner.records().empty());
    EXPECT_TRUE(examiner.levels().empty());
    EXPECT_TRUE(examiner.firstMet().empty());
  }
}
