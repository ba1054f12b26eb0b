// The view's node list: what a rebuild shows and in which order, which
// positions survive it, when the graph is tidied again and where the tidy
// puts successive trees.
#include <cmath>

#include <gtest/gtest.h>

#include "tests/graph_view/ViewInput.h"
#include "tests/support/NotifyRecorder.h"
#include "tests/support/ViewFixture.h"

namespace {

using testsupport::EditBuilder;
using testsupport::ViewFixture;

using namespace viewtest;

void changed(const EditPtr& edit) { edit->addModification({EditModification(EditModification::structure)}, true); }

std::vector<XY<double>> positions(const FXGraphView& view) {
  std::vector<XY<double>> out;
  for (const auto& n : view.nodes()) out.push_back(n->getPosition());
  return out;
}

TEST(NodeList, AnEmptyEditStillSendsTheGroupUpdate) {
  ViewFixture fx(EditBuilder().edit());
  FXGraphView& view = fx.view();
  testsupport::NotifyRecorder heard(NodeUIPosManager::getManagerFor(view.getEdit())->getNotify());
  view.manualPositioningValue() = false; // every rebuild tidies, here nothing
  changed(view.getEdit());
  EXPECT_TRUE(view.nodes().empty());
  ASSERT_EQ(heard.count("NodeManagerGeneral"), 1u);
  EXPECT_EQ(heard.heard.back().text, "GroupUpdateMsg");
}

TEST(NodeList, SharedNodesCyclesAndOrphans) {
  const IdStamp a(2, 0, 1), b(2, 0, 2), shared(3, 0, 1), x(2, 0, 3), y(2, 0, 4), orphan(2, 0, 5), below(3, 0, 2);
  EditBuilder e;
  for (const IdStamp& m : {shared, below}) e.material(m);
  e.effect(a, "colourcorrect", {shared});
  e.effect(b, "colourcorrect", {shared});
  e.effect(x, "mix", {y});
  e.effect(y, "mix", {x});
  e.effect(orphan, "", {below}); // reached from no channel
  e.channel(IdStamp(1, 0, 1), L"V1", a);
  e.channel(IdStamp(1, 0, 2), L"V2", b);
  e.channel(IdStamp(1, 0, 3), L"V3", x);
  ViewFixture fx(e.edit());

  // The shared node once, under the later root; the cycle cut where it closes;
  // the orphaned piece after the roots.
  const std::vector<std::pair<IdStamp, int>> expected{{a, 0}, {shared, 1}, {b, 1},    {x, 2},
                                                      {y, 2}, {orphan, 3}, {below, 3}};
  const auto& nodes = fx.view().nodes();
  ASSERT_EQ(nodes.size(), expected.size());
  for (std::size_t i = 0; i < nodes.size(); ++i)
    EXPECT_EQ(std::pair(nodes[i]->getNodeID(), nodes[i]->rootIndex()), expected[i]) << i;
  EXPECT_EQ(fx.node(shared)->outputTable().size(), 2u);
  EXPECT_EQ(fx.node(x)->getInputConnect(0), fx.node(y).get());
  EXPECT_EQ(fx.node(y)->getInputConnect(0), fx.node(x).get());
}

TEST(NodeList, ManualPositionsSurviveRebuildsOfTheSameCount) {
  EditBuilder b;
  ViewFixture fx(twoTrees(b));
  FXGraphView& view = fx.view();
  ASSERT_TRUE(view.manualPositioning());
  const std::vector<XY<double>> tidied = positions(view);

  // Placed anywhere, apart: a rebuild of the same nodes keeps every place,
  // whether a frame was drawn since or not.
  auto placeAll = [&](double k) {
    for (const auto& n : view.nodes()) {
      n->setPosition(k, -k, true);
      k += 0.25;
    }
    return positions(view);
  };
  const unsigned tidies = view.stats().tidies;
  std::vector<XY<double>> placed = placeAll(0.5);
  view.redraw();
  changed(view.getEdit());
  EXPECT_EQ(positions(view), placed) << "drawn since";
  placed = placeAll(1.5);
  changed(view.getEdit());
  EXPECT_EQ(positions(view), placed) << "not drawn since";
  EXPECT_EQ(view.stats().tidies, tidies);

  // One node more: the whole graph is tidied again.
  const IdStamp extra(3, 0, 9);
  b.material(extra);
  view.getEdit()->openNode(other)->setInputTrackId(1, extra, false);
  changed(view.getEdit());
  EXPECT_GT(view.stats().tidies, tidies);
  for (std::size_t i = 0; i < 4; ++i)
    EXPECT_EQ(view.nodes()[i]->getPosition(), tidied[i]) << i; // all but other's inputs

  // With automatic positioning every rebuild tidies.
  view.manualPositioningValue() = false;
  fx.node(head)->setPosition(3, 3, true);
  changed(view.getEdit());
  EXPECT_EQ(fx.node(head)->getPosition(), tidied[0]);
}

TEST(NodeList, OnlyExactlyCoincidentNodesAreTidiedApart) {
  ViewFixture fx(twoTrees());
  FXGraphView& view = fx.view();
  const XY<double> p(0.3, 0.4);
  fx.node(left)->setPosition(p.x, p.y, true);
  fx.node(otherSource)->setPosition(std::nextafter(p.x, 1.0), p.y, true);
  view.redraw();
  const unsigned tidies = view.stats().tidies;
  changed(view.getEdit());
  EXPECT_EQ(view.stats().tidies, tidies) << "one bit apart is apart";

  fx.node(otherSource)->setPosition(p.x, p.y, true);
  view.redraw();
  changed(view.getEdit());
  EXPECT_GT(view.stats().tidies, tidies);
  EXPECT_NE(fx.node(left)->getPosition(), fx.node(otherSource)->getPosition());
}

TEST(NodeList, TreesStackDownwardsOrSideBySide) {
  ViewFixture fx(twoTrees());
  FXGraphView& view = fx.view();
  auto firstTree = [&] {
    const XY<double> h = fx.node(head)->getPosition(), l = fx.node(left)->getPosition(),
                     r = fx.node(right)->getPosition();
    return FXGraphView::GraphBox(std::min({h.x, l.x, r.x}), std::min({h.y, l.y, r.y}), std::max({h.x, l.x, r.x}),
                                 std::max({h.y, l.y, r.y}));
  };
  FXGraphView::GraphBox e = firstTree();
  EXPECT_EQ(fx.node(head)->getPosition(), XY<double>(0, 0));
  EXPECT_EQ(fx.node(other)->getPosition(), XY<double>(e.x0, e.y0 - 0.125));
  view.setOrientation(VidRouting::Orientations::BottomToTop, false);
  view.tidy();
  e = firstTree();
  EXPECT_EQ(fx.node(head)->getPosition(), XY<double>(0, 0));
  EXPECT_EQ(fx.node(other)->getPosition(), XY<double>(e.x1 + 0.1875, e.y0));
}

// A rebuild asked for under a held wire is dropped; a change of the edit
// (an undo, a change from elsewhere) lets the wire go first, so that the
// view shows the edit as it now is.
TEST(NodeList, NoRebuildWhileAWireIsDraggedUnlessTheEditChanges) {
  ViewFixture fx(twoTrees(), {640, 480});
  FXGraphView& view = fx.view();
  viewtest::showWholeGraph(view, 50);
  testsupport::click(viewtest::Pads(view).in(other, 1));
  ASSERT_TRUE(view.dragAnchor());
  const std::vector<Ux::Ptr<FXGraphViewNode>> before = view.nodes();
  const unsigned rebuilds = view.stats().rebuilds;
  view.recalcNodeList(false);
  EXPECT_EQ(view.stats().rebuilds, rebuilds);
  EXPECT_EQ(view.nodes(), before);
  changed(view.getEdit());
  EXPECT_FALSE(view.dragAnchor());
  EXPECT_EQ(view.stats().rebuilds, rebuilds + 1);
}

} // namespace
