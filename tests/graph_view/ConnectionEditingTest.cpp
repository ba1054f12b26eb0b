// Mouse handling through real events at the screen pixels of pads and
// boxes: the pad clicks row by row (the edit, the drag state, undo), clicks
// and drags on node bodies, zooming by dragging, and a read-only vob.
#include <map>
#include <tuple>

#include <gtest/gtest.h>

#include "host/draw/ScreenSurface.h"
#include "host/ui/EffectsBrowser.h"
#include "tests/graph_view/ViewInput.h"
#include "tests/support/ViewFixture.h"

namespace {

using testsupport::click;
using testsupport::moveTo;
using testsupport::press;
using testsupport::release;

const IdStamp m1(3, 0, 1), m2(3, 0, 2), m3(3, 0, 3), m4(3, 0, 4), aliasM4(3, 0, 5);
const IdStamp a(2, 0, 1), b(2, 0, 2), c(2, 0, 3);

// V1: a(m1, m2); V2: b(m3, a free input); V3: c(aliasM4(m4)).
EditPtr padsEdit() {
  testsupport::EditBuilder e;
  for (const IdStamp& m : {m1, m2, m3, m4}) e.material(m);
  e.alias(aliasM4, m4);
  e.effect(a, "mix", {m1, m2});
  e.effect(b, "pip", {m3, IdStamp()});
  e.effect(c, "colourcorrect", {aliasM4});
  e.channel(IdStamp(1, 0, 1), L"V1", a);
  e.channel(IdStamp(1, 0, 2), L"V2", b);
  e.channel(IdStamp(1, 0, 3), L"V3", c);
  return e.edit();
}

class ConnectionEditing : public ::testing::Test {
protected:
  // 400 pixels a graph unit: pads 8 pixels square.
  testsupport::ViewFixture fx{padsEdit(), {640, 480}};
  FXGraphView& view = fx.view();
  EditPtr edit = view.getEdit();
  viewtest::Pads pads{view};

  void SetUp() override { viewtest::showWholeGraph(view, 50); }
  IdStamp inputOf(const IdStamp& id, unsigned i) const { return edit->openNode(id)->getInputTrackId(i); }
  bool active(const IdStamp& id) const { return edit->openObject<EffectInstance>(id)->isActive(); }
  NodeUIPosRec* stored(const IdStamp& id) const { return NodeUIPosManager::getManagerFor(edit)->openPosRec(id); }
  // The drag state: anchor, pad, hanging from an input.
  std::tuple<IdStamp, int, bool> drag() const {
    return {view.dragAnchor() ? view.dragAnchor()->getNodeID() : IdStamp(), view.dragAnchorPad(),
            view.dragAnchoredAtInput()};
  }
};

TEST_F(ConnectionEditing, ConnectedPadsPickTheirWireUpInOneUndoStep) {
  // A connected input: the wire leaves the edit and hangs from m1's output.
  click(pads.in(a, 0));
  EXPECT_EQ(inputOf(a, 0), IdStamp());
  EXPECT_EQ(drag(), std::tuple(m1, 0, false));
  EXPECT_EQ(view.dragFixedEnd(), pads.node(m1)->getOutputPos(0));
  EXPECT_EQ(view.timerHolds(), 1);
  EXPECT_EQ(edit->undoDepth(), 1u);
  // A connected input does not take it.
  click(pads.in(a, 1));
  EXPECT_EQ(inputOf(a, 1), m2);
  EXPECT_EQ(drag(), std::tuple(m1, 0, false));
  // Dropped on nothing it is gone, in no step of its own; undo brings it back.
  click(pads.nothing());
  EXPECT_FALSE(view.dragAnchor());
  EXPECT_EQ(view.timerHolds(), 0);
  EXPECT_EQ(inputOf(a, 0), IdStamp());
  EXPECT_EQ(edit->undoDepth(), 1u);
  ASSERT_TRUE(fx.vob().undo());
  EXPECT_EQ(inputOf(a, 0), m1);
  EXPECT_EQ(pads.node(a)->getInputConnect(0), pads.node(m1).get());
  // Dropped on a free input it connects there in a second step: one undo
  // leaves it picked up, the next puts it back.
  click(pads.in(a, 0));
  click(pads.in(b, 1));
  EXPECT_EQ(std::pair(inputOf(a, 0), inputOf(b, 1)), std::pair(IdStamp(), m1));
  EXPECT_EQ(edit->undoDepth(), 2u);
  ASSERT_TRUE(fx.vob().undo());
  EXPECT_EQ(std::pair(inputOf(a, 0), inputOf(b, 1)), std::pair(IdStamp(), IdStamp()));
  ASSERT_TRUE(fx.vob().undo());
  EXPECT_EQ(inputOf(a, 0), m1);

  // A connected output: the wire hangs from the input it fed.
  click(pads.out(m2, 0));
  EXPECT_EQ(inputOf(a, 1), IdStamp());
  EXPECT_EQ(drag(), std::tuple(a, 1, true));
  EXPECT_EQ(view.dragFixedEnd(), pads.node(a)->getInputPos(1));
  EXPECT_EQ(edit->undoDepth(), 1u);
  // An output that is not a spare slot does not take it.
  click(pads.out(m1, 0));
  EXPECT_EQ(drag(), std::tuple(a, 1, true));
  EXPECT_EQ(inputOf(a, 0), m1);
  EXPECT_EQ(inputOf(a, 1), IdStamp());
}

TEST_F(ConnectionEditing, FreePadsStartWiresThatMatchingPadsConnect) {
  // A free input starts a wire hanging from it; the edit is not touched.
  click(pads.in(b, 1));
  EXPECT_EQ(drag(), std::tuple(b, 1, true));
  EXPECT_EQ(view.dragFixedEnd(), pads.node(b)->getInputPos(1));
  EXPECT_EQ(view.timerHolds(), 1);
  // b's own spare output: the editor will not let a node feed itself.
  click(pads.out(b, 0));
  EXPECT_EQ(drag(), std::tuple(b, 1, true));
  EXPECT_FALSE(fx.vob().canUndo());
  // m3's spare slot (output 0 already feeds b): connected, in one step.
  click(pads.out(m3, 1));
  EXPECT_FALSE(view.dragAnchor());
  EXPECT_EQ(view.timerHolds(), 0);
  EXPECT_EQ(std::pair(inputOf(b, 0), inputOf(b, 1)), std::pair(m3, m3));
  EXPECT_EQ(edit->undoDepth(), 1u);
  ASSERT_TRUE(fx.vob().undo());
  EXPECT_EQ(inputOf(b, 1), IdStamp());

  // A spare output starts a wire from the output, the edit untouched.
  click(pads.out(m1, 1));
  EXPECT_EQ(drag(), std::tuple(m1, 1, false));
  EXPECT_EQ(view.dragFixedEnd(), pads.node(m1)->getOutputPos(1));
  EXPECT_EQ(edit->undoDepth(), 0u);
  // Neither an output nor a connected input takes it; a free input does.
  click(pads.out(m2, 1));
  click(pads.in(a, 1));
  EXPECT_EQ(drag(), std::tuple(m1, 1, false));
  EXPECT_EQ(inputOf(a, 1), m2);
  click(pads.in(b, 1));
  EXPECT_FALSE(view.dragAnchor());
  EXPECT_EQ(std::pair(inputOf(a, 0), inputOf(b, 1)), std::pair(m1, m1)) << "a slot each";
  EXPECT_EQ(edit->undoDepth(), 1u);
  ASSERT_TRUE(fx.vob().undo());
  EXPECT_EQ(inputOf(b, 1), IdStamp());
}

TEST_F(ConnectionEditing, AWireWhoseSlotStillFeedsANodeMovesWhenDropped) {
  click(pads.out(m1, 1));
  ASSERT_EQ(drag(), std::tuple(m1, 1, false));
  // Meanwhile the dragged slot has come to feed a's second input, in the
  // edit and on the screen (the list is not rebuilt under a drag).
  edit->openNode(a)->setInputTrackId(1, m1, false);
  pads.node(a)->connectInput(1, pads.node(m1).get());
  ASSERT_EQ(pads.node(m1)->getOutputConnect(1), pads.node(a).get());

  click(pads.in(b, 1));
  EXPECT_FALSE(view.dragAnchor());
  EXPECT_EQ(inputOf(b, 1), m1);
  EXPECT_EQ(inputOf(a, 1), IdStamp()) << "the slot's old wire is taken out";
  EXPECT_EQ(inputOf(a, 0), m1);
  EXPECT_EQ(edit->undoDepth(), 1u);
  ASSERT_TRUE(fx.vob().undo());
  EXPECT_EQ(std::pair(inputOf(a, 1), inputOf(b, 1)), std::pair(m1, IdStamp()));
}

TEST_F(ConnectionEditing, APressOnNothingDiscardsAWireOrWithControlZooms) {
  const XY<int> empty = pads.nothing(), further = empty + XY<int>{20, 10};
  const XY<double> centre = view.getViewCentre();
  // A wire hanging from a free input goes, and the press does no more (with
  // nothing dragged it would pan).
  click(pads.in(b, 1));
  press(empty);
  EXPECT_FALSE(view.dragAnchor());
  EXPECT_EQ(view.timerHolds(), 0);
  moveTo(further);
  release(further);
  EXPECT_EQ(view.getViewCentre(), centre);
  EXPECT_FALSE(fx.vob().canUndo());
  // Control held, the vertical travel zooms: 170 pixels for the whole range.
  view.setViewZoom(0.5);
  GlobManager::setKeyboardModifiers(Event::controlHeld);
  press(empty);
  moveTo(empty + XY<int>{5, 17});
  release(empty + XY<int>{5, 17});
  GlobManager::setKeyboardModifiers(0);
  EXPECT_DOUBLE_EQ(view.getZoom(), 0.6);
}

TEST_F(ConnectionEditing, ClicksAndDragsOnNodeBodies) {
  // A small click switches an effect between active and bypassed (two pixels
  // of travel is still small); aliases and materials ignore it.
  click(pads.body(a));
  EXPECT_FALSE(active(a));
  press(pads.body(a));
  moveTo(pads.body(a) + XY<int>{2, 0});
  release(pads.body(a) + XY<int>{2, 0});
  EXPECT_TRUE(active(a));
  click(pads.body(aliasM4));
  EXPECT_TRUE(active(aliasM4));
  // A press on a body also drops a dragged wire.
  click(pads.in(b, 1));
  press(pads.body(m4));
  EXPECT_FALSE(view.dragAnchor());
  release(pads.body(m4));

  // Dragged with control held in manual positioning: the node follows the
  // mouse, and the stored places of its whole graph move with it (as set by
  // hand); other graphs stay.
  ASSERT_TRUE(view.manualPositioning());
  const double scale = view.getScale();
  std::map<IdStamp, XY<double>> before;
  for (const IdStamp& id : {m2, a, m1, b, m3}) before[id] = stored(id)->getDrawPosition();
  GlobManager::setKeyboardModifiers(Event::controlHeld);
  const XY<int> grab = pads.body(m2);
  press(grab);
  moveTo(grab + XY<int>{40, 12});
  release(grab + XY<int>{40, 12});
  GlobManager::setKeyboardModifiers(0);
  const XY<double> moved = stored(m2)->getDrawPosition() - before[m2];
  EXPECT_NEAR(moved.x, 40 / scale, 1 / scale);
  EXPECT_NEAR(moved.y, 12 / scale, 1 / scale);
  EXPECT_EQ(pads.node(m2)->getPosition(), stored(m2)->getDrawPosition());
  EXPECT_TRUE(stored(m2)->isManualPosSet());
  for (const IdStamp& id : {a, m1}) {
    EXPECT_NEAR(stored(id)->getDrawPosition().x, before[id].x + moved.x, 1e-12) << id.asString().str();
    EXPECT_NEAR(stored(id)->getDrawPosition().y, before[id].y + moved.y, 1e-12) << id.asString().str();
  }
  for (const IdStamp& id : {b, m3}) EXPECT_EQ(stored(id)->getDrawPosition(), before[id]) << id.asString().str();
}

// Zoomed out so that the whole canvas shows, a node dragged to the view's
// edge stops at the canvas's edge, half outside it; the canvas then grows to
// hold it, and the next drag can take it further. A control-drag carries the
// node's whole graph, which the canvas holds too.
TEST_F(ConnectionEditing, TheCanvasKeepsHoldingNodesMovedByHand) {
  auto holdsGraph = [&] {
    const FXGraphView::GraphBox c = view.canvasRect(), g = view.getGraphExtents();
    return c.x0 <= g.x0 && c.y0 <= g.y0 && g.x1 <= c.x1 && g.y1 <= c.y1;
  };
  view.setViewZoom(0);
  view.redraw();
  ASSERT_TRUE(holdsGraph());
  const FXGraphView::GraphBox before = view.canvasRect();
  const auto w = view.getWindowPos();
  const XY<int> rightEdge = view.screenPos() + XY<int>{w.x1 - 5, (w.y0 + w.y1) / 2};

  const XY<int> grab = pads.body(m3);
  press(grab);
  moveTo(rightEdge);
  EXPECT_TRUE(holdsGraph());
  EXPECT_GT(view.canvasRect().x1, before.x1);
  EXPECT_LE(view.canvasRect().x0, before.x0) << "never shrinks under the mouse";
  release(rightEdge);

  view.setViewZoom(0);
  view.redraw();
  GlobManager::setKeyboardModifiers(Event::controlHeld);
  const XY<int> leaf = pads.body(m1);
  press(leaf);
  moveTo(view.screenPos() + XY<int>{w.x0 + 5, w.y1 - 5});
  release(view.screenPos() + XY<int>{w.x0 + 5, w.y1 - 5});
  GlobManager::setKeyboardModifiers(0);
  EXPECT_TRUE(holdsGraph());
}

// A node dragged alone draws again only what it and its wires cover, and
// the screen is then what a whole new frame draws; nodes out of that part
// stay where the mouse finds them.
TEST_F(ConnectionEditing, ADragDrawsOnlyWhatItChangesAndTheScreenMatchesAWholeFrame) {
  ScreenSurface& surface = GlobManager::surface();
  const XY<int> grab = pads.body(m1);
  press(grab);
  std::vector<ScreenSurface::Recorded> step, whole;
  moveTo(grab + XY<int>{12, -9});
  surface.setRecorder(&step);
  moveTo(grab + XY<int>{30, -20});
  surface.setRecorder(nullptr);
  const auto pixels = [&] {
    const Ux::Ptr<UxImage> shot = surface.snapshot();
    return std::vector<uint32_t>(shot->data(), shot->data() + shot->width() * shot->height());
  };
  const std::vector<uint32_t> afterDrag = pixels();
  surface.setRecorder(&whole);
  view.redraw();
  surface.setRecorder(nullptr);
  EXPECT_TRUE(afterDrag == pixels()) << "the drag left the screen as a whole frame draws it";
  EXPECT_LT(step.size(), whole.size()) << "a step drew less than a whole frame";
  release(grab + XY<int>{30, -20});
  // A node far from the drag is still found by the mouse.
  click(pads.body(c));
  EXPECT_FALSE(active(c));
}

// Each thing that keeps the timer running holds it until it ends, however
// it ends; a view closed in the middle of a gesture lets go cleanly.
TEST_F(ConnectionEditing, TimerHoldsEndWithWhatTookThem) {
  click(pads.in(b, 1));
  ASSERT_TRUE(view.dragAnchor());
  EXPECT_EQ(view.timerHolds(), 1) << "the held wire";
  moveTo(pads.body(a));
  EXPECT_EQ(view.timerHolds(), 2) << "the wire, and the tooltip until it is due";
  // The edit changes under the wire: the wire is let go, the hover forgotten.
  edit->addModification({EditModification(EditModification::structure)}, true);
  EXPECT_FALSE(view.dragAnchor());
  EXPECT_EQ(view.timerHolds(), 0);

  testsupport::ViewFixture closing{padsEdit(), {640, 480}};
  viewtest::showWholeGraph(closing.view(), 50);
  viewtest::Pads closingPads{closing.view()};
  click(closingPads.out(m3, 1));
  moveTo(closingPads.body(c));
  EXPECT_EQ(closing.view().timerHolds(), 2);
}

TEST_F(ConnectionEditing, AReadOnlyVobIsNeverEdited) {
  fx.vob().setReadOnly(true);
  click(pads.in(a, 0));
  click(pads.out(m3, 1));
  click(pads.body(a));
  EXPECT_FALSE(view.dragAnchor());
  EXPECT_EQ(inputOf(a, 0), m1);
  EXPECT_TRUE(active(a));
  EXPECT_FALSE(fx.vob().canUndo());
  // Every press pans instead.
  const XY<double> centre = view.getViewCentre();
  const XY<int> at = pads.in(a, 0);
  press(at);
  moveTo(at + XY<int>{10, 0});
  release(at + XY<int>{10, 0});
  EXPECT_DOUBLE_EQ(view.getViewCentre().x, centre.x - 10 / view.getScale());
}

TEST_F(ConnectionEditing, ATemplateDroppedOnANodeIsLaidOverItInOneUndoStep) {
  const EffectTemplateSummary blur = viewtest::blurTemplate();
  const EffectTemplateDragItem item(blur);
  auto centreOf = [&](const IdStamp& id) {
    view.redraw();
    const FXGraphViewNode::PixelBox b = pads.node(id)->pixelBox();
    return XY<int>{(b.x0 + b.x1) / 2, (b.y0 + b.y1) / 2};
  };
  // On a node that feeds another: the new effect takes its place in the input.
  ASSERT_TRUE(view.canAcceptDrop(item, centreOf(m1)));
  ASSERT_TRUE(view.acceptDrop(item, centreOf(m1)));
  const IdStamp added = inputOf(a, 0);
  ASSERT_NE(added, m1);
  EXPECT_EQ(edit->openNode(added)->tagTypeId().str(), "PixShader:Blur:gaussian.fx");
  EXPECT_EQ(inputOf(added, 0), m1);
  EXPECT_TRUE(pads.node(added)) << "the view shows the new effect";
  EXPECT_EQ(edit->undoDepth(), 1u);
  ASSERT_TRUE(fx.vob().undo());
  EXPECT_EQ(inputOf(a, 0), m1);
  EXPECT_FALSE(edit->openNode(added));

  // On a channel's head: the channel's graph now starts at the new effect.
  ASSERT_TRUE(view.acceptDrop(item, centreOf(c)));
  const Cel& v3 = edit->getChan(edit->findChan(IdStamp(1, 0, 3))).cels.front();
  ASSERT_NE(v3.ref, c);
  EXPECT_EQ(inputOf(v3.ref, 0), c);

  // Nowhere near a node, or on a read-only vob, nothing is taken.
  EXPECT_FALSE(view.canAcceptDrop(item, {-1000, -1000}));
  fx.vob().setReadOnly(true);
  EXPECT_FALSE(view.canAcceptDrop(item, centreOf(a)));
}

} // namespace

namespace {

// One effect of two inputs in a 592 x 246 view zoomed right out: about 192
// pixels a graph unit, so pads are 3 pixels square and the input pads are cut
// flat against the node's edge. Grown by the widget gap they are still hit.
TEST(SmallPads, AnInputCutFlatAtTheNodesEdgeStillPicksItsWireUp) {
  const IdStamp m1(3, 0, 1), m2(3, 0, 2), a(2, 0, 1);
  testsupport::EditBuilder e;
  e.material(m1);
  e.material(m2);
  e.effect(a, "mix", {m1, m2});
  e.channel(IdStamp(1, 0, 1), L"V1", a);
  testsupport::ViewFixture fx{e.edit(), {592, 246}};
  FXGraphView& view = fx.view();
  view.setViewZoom(0);
  view.redraw();
  ASSERT_GE(view.getScale() * FXGraphViewNode::padSize_.y, 3.0);
  ASSERT_LT(view.getScale() * FXGraphViewNode::padSize_.y, 4.0);
  const Ux::Ptr<FXGraphViewNode> node = fx.node(a);
  const XY<int> pad = node->getInputPos(0);
  EXPECT_TRUE(node->getNodePadArea(pad, FXGraphViewNode::eInputPad).isEmpty()) << "cut to nothing";

  viewtest::Pads pads{view};
  click(pads.in(a, 0));
  ASSERT_TRUE(view.dragAnchor());
  EXPECT_EQ(view.dragAnchor()->getNodeID(), m1);
  EXPECT_EQ(view.getEdit()->openNode(a)->getInputTrackId(0), IdStamp());
}

} // namespace
