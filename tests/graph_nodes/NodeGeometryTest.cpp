// Node geometry and hit testing against values worked out by hand.
//
// The view is 400 x 300 pixels: its area is (8, 16, 384, 292), middle (196, 154).
// A node framed there at 800 pixels per graph unit spans 100 x 76.25 pixels:
// left 146, right 246, bottom 115.875, top 192.125.
#include <gtest/gtest.h>

#include "tests/support/ViewFixture.h"

namespace {

using testsupport::EditBuilder;
using testsupport::ViewFixture;
using Box = FXGraphViewNode::PixelBox;

const IdStamp threeInputs(2, 0, 1), fiveInputs(2, 0, 2);

EditPtr geometryEdit() {
  EditBuilder b;
  for (unsigned i = 1; i <= 5; ++i) b.material(IdStamp(3, 0, i));
  b.effect(threeInputs, "mix", {IdStamp(3, 0, 1), IdStamp(3, 0, 2), IdStamp(3, 0, 3)});
  // Five inputs, two of them connected.
  b.effect(fiveInputs, "", {IdStamp(3, 0, 4), IdStamp(3, 0, 5), IdStamp(), IdStamp(), IdStamp()});
  b.channel(IdStamp(1, 0, 1), L"V1", threeInputs);
  b.channel(IdStamp(1, 0, 2), L"V2", fiveInputs);
  return b.edit();
}

class NodeGeometry : public ::testing::Test {
protected:
  ViewFixture fx{geometryEdit()};
  Ux::Ptr<FXGraphViewNode> node = fx.node(threeInputs);

  int hit(int x, int y, int& index) const { return node->translateMouseEvent(x, y, index); }
};

TEST_F(NodeGeometry, PixelBoxPadsAndBoxesLeftToRight) {
  ASSERT_TRUE(node);
  fx.frame(*node, 100);
  ASSERT_EQ(fx.view().getScale(), 800);
  // The top edge is not widened; the other three are.
  EXPECT_EQ(node->calcPixelExtents(), Box(145, 115, 247, 192));
  EXPECT_EQ(node->pixelBox(), Box(145, 115, 247, 192)) << "drawing caches the box";
  EXPECT_EQ(node->getTitleBarRect(), Box(146, 172, 246, 191));
  EXPECT_EQ(node->calcThumbArea(), Box(146, 116, 246, 172)) << "centred: as wide as the node allows";

  // Inputs down the left edge below the title bar; a root has only the spare output.
  EXPECT_EQ(node->getInputPos(0), XY<int>(145, 157));
  EXPECT_EQ(node->getInputPos(1), XY<int>(145, 143));
  EXPECT_EQ(node->getInputPos(2), XY<int>(145, 129));
  EXPECT_EQ(node->getOutputPos(0), XY<int>(247, 154));
  EXPECT_EQ(node->getOutputPos(1), XY<int>(-1, -1));
  // Pads 16 pixels square, cut at the node's edge.
  EXPECT_EQ(node->getNodePadArea({145, 157}, FXGraphViewNode::eInputPad), Box(137, 149, 144, 165));
  EXPECT_EQ(node->getNodePadArea({247, 154}, FXGraphViewNode::eOutputPad), Box(248, 146, 255, 162));
}

TEST_F(NodeGeometry, PadsAndBoxesBottomToTop) {
  fx.view().setOrientation(VidRouting::Orientations::BottomToTop, false);
  fx.frame(*node, 100);
  EXPECT_EQ(node->calcPixelExtents(), Box(145, 115, 247, 192));
  EXPECT_EQ(node->getInputPos(0), XY<int>(170, 115));
  EXPECT_EQ(node->getInputPos(1), XY<int>(196, 115));
  EXPECT_EQ(node->getInputPos(2), XY<int>(221, 115));
  EXPECT_EQ(node->getOutputPos(0), XY<int>(196, 192));
  EXPECT_EQ(node->getNodePadArea({170, 115}, FXGraphViewNode::eInputPad), Box(162, 107, 178, 114));
  EXPECT_EQ(node->getNodePadArea({196, 192}, FXGraphViewNode::eOutputPad), Box(188, 193, 204, 200));

  int index = -1;
  EXPECT_EQ(hit(170, 110, index), FXGraphViewNode::eInput);
  EXPECT_EQ(index, 0);
  EXPECT_EQ(hit(196, 197, index), FXGraphViewNode::eOutput);
  EXPECT_EQ(index, 0);
}

TEST_F(NodeGeometry, NarrowThumbnailFillsTheWidth) {
  // 200 pixels a unit: box (183, 143, 210, 164), title bar 5 high; a picture
  // 15 high would be 27 wide but only 25 fit.
  fx.frame(*node, 25);
  EXPECT_EQ(node->pixelBox(), Box(183, 143, 210, 164));
  EXPECT_EQ(node->calcThumbArea(), Box(184, 144, 209, 158));
  EXPECT_TRUE(node->roomForThumbnail());
  fx.frame(*node, 10);
  node->calcThumbArea();
  EXPECT_FALSE(node->roomForThumbnail()) << "under 11 pixels wide";
}

TEST_F(NodeGeometry, HitsGoToTheNearestPadUntilPadsVanish) {
  fx.frame(*node, 100);
  // Grown by the widget gap, input 0's pad spans y 145..169 (centre 157) and
  // input 1's 131..155 (centre 143); ties go to the lower index.
  int index = -1;
  EXPECT_EQ(hit(140, 150, index), FXGraphViewNode::eInput);
  EXPECT_EQ(index, 0) << "7 pixels from both";
  EXPECT_EQ(hit(140, 149, index), FXGraphViewNode::eInput);
  EXPECT_EQ(index, 1);
  EXPECT_EQ(hit(252, 154, index), FXGraphViewNode::eOutput);
  EXPECT_EQ(index, 0);
  EXPECT_EQ(hit(node->getInputPos(0).x + 2, node->getInputPos(0).y, index), FXGraphViewNode::eInput)
      << "inside the edge";
  index = -1;
  EXPECT_EQ(hit(196, 154, index), FXGraphViewNode::eBody);
  EXPECT_EQ(index, -1) << "a body hit leaves the index alone";
  EXPECT_EQ(hit(300, 154, index), FXGraphViewNode::eNothing);

  fx.frame(*node, 16); // 0.02 graph units are 2.56 pixels: the pads vanish
  EXPECT_EQ(node->getNodePadArea(node->getInputPos(0), FXGraphViewNode::eInputPad), Box(0, 0, 0, 0));
  EXPECT_EQ(hit(node->getInputPos(0).x + 2, node->getInputPos(0).y, index), FXGraphViewNode::eBody);
  EXPECT_EQ(hit(node->getOutputPos(0).x + 2, node->getOutputPos(0).y, index), FXGraphViewNode::eNothing);
  EXPECT_EQ(hit(0, 0, index), FXGraphViewNode::eNothing) << "a vanished pad is not a box round the origin";
}

TEST_F(NodeGeometry, ManyInputsOfferOnlyTheConnectedOnesAndOneMore) {
  Ux::Ptr<FXGraphViewNode> five = fx.node(fiveInputs);
  ASSERT_TRUE(five);
  fx.frame(*five, 100);
  EXPECT_EQ(five->hitTestInputCount(), 3u);
  // Positions still spread over all five inputs.
  EXPECT_EQ(five->getInputPos(2), XY<int>(145, 143));
  EXPECT_EQ(five->getInputPos(4), XY<int>(145, 124));
  int index = -1;
  EXPECT_EQ(five->translateMouseEvent(140, 143, index), FXGraphViewNode::eInput);
  EXPECT_EQ(index, 2);
  EXPECT_EQ(five->translateMouseEvent(140, 124, index), FXGraphViewNode::eNothing) << "input 4 is not offered";

  // A node without a graph node is never hit.
  Ux::Ptr<FXGraphViewNode> orphan(new FXGraphViewNode(&fx.view(), EditGraphIterator()));
  orphan->setPosition(five->getPosition().x, five->getPosition().y, false);
  EXPECT_EQ(orphan->translateMouseEvent(196, 154, index), FXGraphViewNode::eNothing);
  EXPECT_EQ(orphan->getTitleStr().str(), L"<missing>");
}

} // namespace
