// Every change a person makes in the view is one undo step that takes back
// that change and nothing else, in both orientations: pad clicks, node drags,
// a bypass switch, Tidy and Arrange; and Escape puts a held wire back.
#include <map>
#include <tuple>

#include <gtest/gtest.h>

#include "node_ui/NodeUIPosManager.h"
#include "tests/graph_view/ViewInput.h"
#include "tests/support/ViewFixture.h"

namespace undosteps {

using testsupport::click;
using testsupport::moveTo;
using testsupport::press;
using testsupport::release;

// V1: mix(s1, s2); V2: pip(s3, a free input).
const IdStamp &s1 = viewtest::left, &s2 = viewtest::right, &s3 = viewtest::otherSource;
const IdStamp &mix = viewtest::head, &pip = viewtest::other;

// What an undo step must bring back: every stored position (draw, by hand,
// and whether by hand), every effect's wires and switch.
using Positions = std::map<IdStamp, std::tuple<double, double, double, double, bool>>;
struct State {
  Positions positions;
  std::map<IdStamp, std::tuple<IdStamp, IdStamp, bool>> effects;
  friend bool operator==(const State&, const State&) = default;
};

class UndoSteps : public ::testing::TestWithParam<VidRouting::Orientations::Orientation> {
protected:
  testsupport::ViewFixture fx{viewtest::twoTrees(), {640, 480}};
  FXGraphView& view = fx.view();
  EditPtr edit = view.getEdit();
  viewtest::Pads pads{view};

  void SetUp() override {
    view.setOrientation(GetParam(), false);
    viewtest::showWholeGraph(view, 50);
    ASSERT_TRUE(view.manualPositioning());
  }
  State state() const {
    State s;
    for (const NodeUIRecBase* base : NodeUIPosManager::getManagerFor(edit)->records().as<NodeUIRecBase>()) {
      const auto* rec = dynamic_cast<const NodeUIPosRec*>(base);
      const XY<double> d = rec->getDrawPosition(), m = rec->getManualPos();
      s.positions[rec->getNodeId()] = {d.x, d.y, m.x, m.y, rec->isManualPosSet()};
    }
    for (const IdStamp& id : {mix, pip}) {
      const auto fx = edit->openObject<EffectInstance>(id);
      s.effects[id] = {fx->getInputTrackId(0), fx->getInputTrackId(1), fx->isActive()};
    }
    return s;
  }
  void drag(const IdStamp& id, XY<int> by) {
    const XY<int> grab = pads.body(id);
    press(grab);
    moveTo(grab + by);
    moveTo(grab + by + XY<int>{3, 3});
    release(grab + by + XY<int>{3, 3});
  }
};

TEST_P(UndoSteps, EachChangeIsOneStepAndUndoingItLeavesTheOthers) {
  std::vector<State> after{state()};
  auto step = [&](const char* what, auto&& change) {
    change();
    after.push_back(state());
    EXPECT_NE(after.back(), after[after.size() - 2]) << what << " changed nothing";
    EXPECT_EQ(edit->undoDepth(), after.size() - 1) << what;
  };
  step("wire taken off", [&] {
    click(pads.in(mix, 0));
    click(pads.nothing());
  });
  step("node drag", [&] { drag(pip, {30, 20}); });
  step("control-drag", [&] {
    GlobManager::setKeyboardModifiers(Event::controlHeld);
    drag(s1, {-25, 15});
    GlobManager::setKeyboardModifiers(0);
  });
  step("bypass switch", [&] { click(pads.body(mix)); });
  step("tidy", [&] { view.tidy(); });
  step("drag after tidy", [&] { drag(s3, {20, -30}); });
  step("arrange", [&] { EXPECT_TRUE(testsupport::key('l')); });

  // Back one step at a time: each undo gives exactly the state before its
  // step, whatever came later; then redo gives each again.
  for (std::size_t k = after.size() - 1; k > 0; --k) {
    ASSERT_TRUE(fx.vob().undo());
    EXPECT_EQ(state(), after[k - 1]) << "undo to step " << k - 1;
    // What the view shows follows the records.
    for (const auto& [id, p] : after[k - 1].positions)
      if (auto node = pads.node(id)) {
        EXPECT_EQ(node->getPosition(), XY<double>(std::get<0>(p), std::get<1>(p)));
      }
  }
  EXPECT_FALSE(edit->canUndo());
  for (std::size_t k = 1; k < after.size(); ++k) {
    ASSERT_TRUE(fx.vob().redo());
    EXPECT_EQ(state(), after[k]) << "redo to step " << k;
  }
}

TEST_P(UndoSteps, ClicksThatChangeNothingMakeNoStep) {
  // A click on a material, a press and release in place on an effect's
  // pad-free canvas, a new wire let go: no step.
  click(pads.body(s2));
  click(pads.nothing());
  click(pads.out(s3, 1));
  click(pads.nothing());
  EXPECT_EQ(edit->undoDepth(), 0u);
}

TEST_P(UndoSteps, EscapePutsAHeldWireBackAsIfItWereNeverTaken) {
  const State before = state();
  // Taken off a wired input: Escape puts it back, and leaves no undo or
  // redo behind.
  click(pads.in(mix, 1));
  ASSERT_TRUE(view.dragAnchor());
  EXPECT_NE(state(), before);
  EXPECT_TRUE(testsupport::key(Event::keyEscape));
  EXPECT_FALSE(view.dragAnchor());
  EXPECT_EQ(view.timerHolds(), 0);
  EXPECT_EQ(state(), before);
  EXPECT_FALSE(edit->canUndo());
  EXPECT_FALSE(edit->canRedo());
  EXPECT_EQ(pads.node(mix)->getInputConnect(1), pads.node(s2).get());
  // Taken off an output: the same.
  click(pads.out(s3, 0));
  ASSERT_TRUE(view.dragAnchor());
  testsupport::key(Event::keyEscape);
  EXPECT_EQ(state(), before);
  EXPECT_FALSE(edit->canUndo());
  // A new wire from a free pad is let go, the edit untouched.
  click(pads.in(pip, 1));
  ASSERT_TRUE(view.dragAnchor());
  testsupport::key(Event::keyEscape);
  EXPECT_FALSE(view.dragAnchor());
  EXPECT_EQ(state(), before);
  // An earlier step stays where it was.
  click(pads.body(pip));
  click(pads.in(mix, 0));
  testsupport::key(Event::keyEscape);
  EXPECT_EQ(edit->undoDepth(), 1u);
  EXPECT_FALSE(std::get<2>(state().effects[pip]));
  EXPECT_EQ(std::get<0>(state().effects[mix]), s1);
}

TEST_P(UndoSteps, TheViewStaysPutThroughWiresAndUndo) {
  // Zoomed in on one corner, so that the graph is larger than the view.
  view.setViewZoom(0.2);
  view.setViewCentre(pads.node(mix)->getPosition().x, pads.node(mix)->getPosition().y);
  view.redraw();
  const auto where = [&] { return std::pair(view.getScale(), view.getViewCentre()); };
  const auto before = where();
  click(pads.in(mix, 0));
  EXPECT_EQ(where(), before) << "picking a wire up";
  click(pads.in(mix, 0));
  EXPECT_EQ(where(), before) << "dropping it";
  ASSERT_TRUE(fx.vob().undo());
  ASSERT_TRUE(fx.vob().undo());
  EXPECT_EQ(where(), before) << "undo";
}

INSTANTIATE_TEST_SUITE_P(BothWays, UndoSteps, viewtest::bothOrientations(), viewtest::orientationName);

} // namespace undosteps

namespace undosteps {

// A template dropped makes the list longer, and the rebuild lays the graph
// out again; undoing the drop brings back the hand placings of before it.
TEST_P(UndoSteps, UndoingADropBringsBackHandPlacings) {
  drag(s3, {25, -20});
  const State placed = state();
  const EffectTemplateSummary blur = viewtest::blurTemplate();
  ASSERT_TRUE(view.insertTemplateAbove(blur, s1));
  ASSERT_EQ(edit->undoDepth(), 2u);
  ASSERT_TRUE(fx.vob().undo());
  const State back = state();
  EXPECT_EQ(back.effects, placed.effects);
  for (const auto& [id, p] : placed.positions) {
    ASSERT_TRUE(back.positions.count(id)) << id.asString().str();
    EXPECT_EQ(back.positions.at(id), p) << id.asString().str();
    EXPECT_EQ(pads.node(id)->getPosition(), XY<double>(std::get<0>(p), std::get<1>(p))) << id.asString().str();
  }
}

} // namespace undosteps

namespace undosteps {

// A press on a node while a wire is held lets the wire go, which makes the
// list again; the drag goes on with the node of the new list.
TEST_P(UndoSteps, ANodeTakenWhileAWireIsHeldIsTheOneOnScreen) {
  click(pads.in(mix, 0));
  ASSERT_TRUE(view.dragAnchor());
  const XY<double> before = pads.node(pip)->getPosition();
  const XY<int> grab = pads.body(pip);
  press(grab);
  EXPECT_FALSE(view.dragAnchor());
  ASSERT_TRUE(view.movedNode());
  EXPECT_EQ(view.movedNode(), pads.node(pip)) << "the node of the list as it now is";
  moveTo(grab + XY<int>{30, 20});
  release(grab + XY<int>{30, 20});
  EXPECT_NE(pads.node(pip)->getPosition(), before);
}

} // namespace undosteps
