// Tidied layouts of large generated edits (one tree each), checked for the
// properties that hold whatever the tree's shape. Not checked: that no two
// nodes share a spot. Each family is centred on its parent without room for
// the families beside it, and per level only the first pair too close is
// resolved, so cousins often share a spot; siblings never do (they differ in
// slot index), nor nodes of different levels. Generated parents are all
// effects, so the extents stay within a spacing per node of the root.
#include <cmath>
#include <map>
#include <set>
#include <utility>

#include <gtest/gtest.h>

#include "app/EditGenerator.h"
#include "graph_view/FXGraphView.h"
#include "layout/FXGraphTidier.h"
#include "tests/support/FakePosSource.h"

using testsupport::FakePosSource;
using Orientations = VidRouting::Orientations;

namespace {

constexpr double tidyGap = FXGraphView::layoutGap; // the spacing the view tidies with

struct GeneratedTree {
  EditPtr edit;
  IdStamp root;

  GeneratedTree(unsigned nodes, uint64_t seed) : edit(fxgraph::generateEdit(nodes, seed, nodes)) {
    std::vector<IdStamp> roots;
    findAllRootNodeChans(edit, roots, 0, true);
    root = roots.at(0);
  }
  ~GeneratedTree() { edit->close(); }
  EditGraphIterator at() const { return EditGraphIterator(edit, 0, root, 0); }
};

} // namespace

class GeneratedTrees : public ::testing::TestWithParam<std::pair<unsigned, uint64_t>> {};

TEST_P(GeneratedTrees, LevelsSiblingsAndExtentsHold) {
  const auto [nodes, seed] = GetParam();
  GeneratedTree tree(nodes, seed);
  FakePosSource source;
  FXGraphTidier tidier(source, tidyGap, tidyGap);
  EditGraphIterator it = tree.at();
  const double rootX = 3, rootY = -2;
  ASSERT_TRUE(tidier.tidyTreeStruct(it, rootX, rootY));

  GraphExaminer examiner(source);
  examiner.examine(it);
  ASSERT_EQ(examiner.records().size(), nodes);
  ASSERT_EQ(source.size(), nodes);

  double minX = rootX, minY = rootY, maxX = rootX, maxY = rootY;
  std::map<std::pair<double, double>, std::set<IdStamp>> parentsAt; // spot -> parents of the nodes there
  for (const auto& [id, info] : examiner.records()) {
    const XY<double> p = info.record->getDrawPosition();
    EXPECT_NEAR(p.x, rootX - info.depth * tidyGap, 1e-9) << id.asString().str();
    minX = std::min(minX, p.x);
    maxX = std::max(maxX, p.x);
    minY = std::min(minY, p.y);
    maxY = std::max(maxY, p.y);
    if (!info.parent) continue;
    const bool firstOfItsFamilyHere = parentsAt[{p.x, p.y}].insert(info.parent->getId()).second;
    EXPECT_TRUE(firstOfItsFamilyHere) << "siblings share a spot at " << p.x << ", " << p.y;
  }
  EXPECT_EQ(tidier.getTreeExtents(), (Ux::Box<double>(minX, minY, maxX, maxY)));
  EXPECT_LT(maxY - minY, nodes * tidyGap);

  // The layout does not depend on where the nodes were before.
  std::map<IdStamp, XY<double>> first;
  for (const auto& [id, rec] : source.records()) {
    first[id] = rec->getDrawPosition();
    rec->setDrawPosition(first[id].y, -first[id].x, false);
  }
  ASSERT_TRUE(tidier.tidyTreeStruct(it, rootX, rootY));
  for (const auto& [id, rec] : source.records()) EXPECT_EQ(rec->getDrawPosition(), first[id]);
}

// With equal spacings, bottom-to-top is left-to-right turned a quarter turn
// about the root: breadth y up becomes x leftwards, depth x leftwards becomes
// y downwards, and every overlap decision comes out the same.
TEST_P(GeneratedTrees, OrientationsMirrorEachOther) {
  const auto [nodes, seed] = GetParam();
  GeneratedTree tree(nodes, seed);
  FakePosSource across(Orientations::LeftToRight);
  FakePosSource upright(Orientations::BottomToTop);
  FXGraphTidier acrossTidier(across, tidyGap, tidyGap);
  FXGraphTidier uprightTidier(upright, tidyGap, tidyGap);
  EditGraphIterator it = tree.at();
  const double rootX = 1, rootY = 2;
  ASSERT_TRUE(acrossTidier.tidyTreeStruct(it, rootX, rootY));
  ASSERT_TRUE(uprightTidier.tidyTreeStruct(it, rootX, rootY));

  ASSERT_EQ(across.size(), upright.size());
  for (const auto& [id, rec] : across.records()) {
    const XY<double> a = rec->getDrawPosition();
    const XY<double> u = upright.pos(id);
    EXPECT_DOUBLE_EQ(u.x, rootX - (a.y - rootY)) << id.asString().str();
    EXPECT_DOUBLE_EQ(u.y, rootY - (rootX - a.x)) << id.asString().str();
  }
}

namespace {

// Rounds every value it is given to a sixteenth.
class Sixteenths : public ValManagerBase<double> {
public:
  bool requestValChange(ValServer<double>*, double& value) override {
    value = std::round(value * 16) / 16;
    return true;
  }
};

} // namespace

// Tidy works its places out in a table and writes each record once; a draw
// value with a manager may change what it is given, and then every place
// follows from what the records hold, as when the levels are placed again
// through the records after every spread (the every-path walk).
TEST_P(GeneratedTrees, ManagedDrawValuesPlaceAsThroughTheRecords) {
  const auto [nodes, seed] = GetParam();
  GeneratedTree tree(nodes, seed);
  Sixteenths rounding;
  FakePosSource table, records;
  EditGraphIterator it = tree.at();
  for (FakePosSource* source : {&table, &records}) {
    GraphExaminer examiner(*source);
    examiner.examine(it); // makes every record
    for (const auto& [id, rec] : source->records()) rec->drawY().setManager(&rounding);
  }
  FXGraphTidier byTable(table, tidyGap, tidyGap), byRecords(records, tidyGap, tidyGap);
  ASSERT_TRUE(byTable.tidyTreeStruct(it, 0.01, 0.02));
  ASSERT_TRUE(byRecords.tidyTreeStruct(it, 0.01, 0.02, GraphExaminer::Walk::everyPath));
  bool rounded = true;
  for (const auto& [id, rec] : table.records()) {
    EXPECT_EQ(rec->getDrawPosition(), records.pos(id)) << id.asString().str();
    rounded = rounded && rec->getDrawPosition().y * 16 == std::round(rec->getDrawPosition().y * 16);
  }
  EXPECT_TRUE(rounded) << "the manager had its say";
  for (FakePosSource* source : {&table, &records})
    for (const auto& [id, rec] : source->records()) rec->drawY().setManager(nullptr);
}

INSTANTIATE_TEST_SUITE_P(Sizes, GeneratedTrees,
                         ::testing::Values(std::make_pair(50u, uint64_t{1}), std::make_pair(500u, uint64_t{2}),
                                           std::make_pair(5000u, uint64_t{3})),
                         [](const auto& test) {
                           return std::to_string(test.param.first) + "nodes_seed" + std::to_string(test.param.second);
                         });
