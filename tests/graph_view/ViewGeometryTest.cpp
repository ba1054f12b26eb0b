// The view's geometry: graph units <-> view pixels, zoom and scale, fitting,
// the scroll bars, auto-scroll on the timer and the two orientations.
//
// The view is 400 x 300 pixels: its area is (8, 16, 384, 292), middle
// (196, 154); the largest scale is 8 x 160 = 1280 pixels a graph unit.
#include <cmath>
#include <tuple>

#include <gtest/gtest.h>

#include "host/config/EditorPreferences.h"
#include "host/config/Resources.h"
#include "host/ui/HostClock.h"
#include "host/ui/ScrollBar.h"
#include "tests/graph_view/ViewInput.h"
#include "tests/support/ViewFixture.h"

namespace {

using testsupport::moveTo;
using testsupport::ViewFixture;

using namespace viewtest;

class ViewGeometry : public ::testing::Test {
protected:
  ViewFixture fx{twoTrees()};
  FXGraphView& view = fx.view();
  const FXGraphView::GraphBox canvas = view.canvasRect();
  const double most = 1280;
  // Zoom 0 shows the whole canvas, unless that is above the largest scale.
  const double low = std::min(most, std::min(400 / (canvas.x1 - canvas.x0), 300 / (canvas.y1 - canvas.y0)));
};

TEST_F(ViewGeometry, GraphUnitsAndViewPixels) {
  view.setViewZoom(1);
  view.setViewCentre(0.25, -0.5);
  EXPECT_EQ(view.graphToViewSpace(XY<double>(1, 0.5)), XY<double>(196 + 0.75 * most, 154 + most));
  const XY<double> back = view.viewToGraphSpace(view.graphToViewSpace(XY<double>(-0.3, 0.7)));
  EXPECT_NEAR(back.x, -0.3, 1e-12);
  EXPECT_NEAR(back.y, 0.7, 1e-12);
  // The graph values themselves are rounded, after adding a half.
  EXPECT_EQ(view.graphToPixels(1.2, -1.2), XY<int>(2, -1));
  EXPECT_EQ(view.graphToPixels(-2.2, 0), XY<int>(-2, 1));

  auto clip = [&](int l, int b, int r, int t) {
    const bool overlaps = view.clipRectToView(l, b, r, t);
    return std::tuple(overlaps, l, b, r, t);
  };
  EXPECT_EQ(clip(-20, 100, 50, 400), std::tuple(true, 8, 100, 50, 292));
  EXPECT_EQ(clip(0, 20, 8, 30), std::tuple(true, 8, 20, 8, 30)) << "touching the left edge";
  EXPECT_EQ(clip(-50, 20, 7, 200), std::tuple(false, 0, 0, 0, 0)) << "wholly left";

  view.setViewCentre(canvas.x1 + 3, canvas.y0 - 3);
  EXPECT_EQ(view.getViewCentre(), XY<double>(canvas.x1, canvas.y0));
}

TEST_F(ViewGeometry, ZoomScaleFittingAndEdges) {
  ASSERT_LT(low, most);
  EXPECT_DOUBLE_EQ(view.calcPhysicalScale(0.25), low + (most - low) * 0.25);
  view.setViewZoom(1.5);
  EXPECT_EQ(std::pair(view.getZoom(), view.getScale()), std::pair(1.0, most));
  view.setViewZoom(-2);
  EXPECT_EQ(std::pair(view.getZoom(), view.getScale()), std::pair(0.0, low));
  view.setMaxNodeSize(0);
  view.setViewZoom(0.7);
  EXPECT_EQ(view.getScale(), 0);
  view.setMaxNodeSize(160);

  // A 30-pixel margin on each axis: 1 x 0.5 units fit at 370 pixels a unit.
  EXPECT_DOUBLE_EQ(view.fitViewToCanvRect({-0.5, -0.25, 0.5, 0.25}), (370 - low) / (most - low));
  EXPECT_EQ(view.fitViewToCanvRect({-100, -100, 100, 100}), 0);
  EXPECT_EQ(view.fitViewToCanvRect({0, 0, 0.01, 0.01}), 1);

  // Edges: row height 22 / 7 x zoom rounded in single precision, at least 1;
  // outlines a pixel more. Just below 21/44 the double product stays under
  // 1.5 but the single one reaches it.
  view.setViewZoom(0);
  EXPECT_EQ(view.getEdgeThickness(FXGraphView::eNormalEdge), 1);
  EXPECT_EQ(view.getEdgeThickness(FXGraphView::eHighlightEdge), 2);
  view.setViewZoom(0.4772727042733505);
  EXPECT_EQ(view.getEdgeThickness(FXGraphView::eNormalEdge), 2);
  EXPECT_EQ(view.getEdgeThickness(FXGraphView::eHighlightEdge), 3);
}

TEST_F(ViewGeometry, BringingNodesIntoViewZoomsOutButNeverIn) {
  Vector<IdStamp> all, one{IdStamp(7, 7, 7), left};
  view.getAllNodes(all);
  Ux::Ptr<FXGraphViewNode> n = fx.node(left);
  const XY<double> leftMiddle((n->getL() + n->getR()) / 2, (n->getB() + n->getT()) / 2);

  // One node fits at the largest scale: flag 1 leaves the view alone, flag 2
  // centres it; the starting centre does not count once a node is met.
  view.setViewZoom(1);
  view.setViewCentre(canvas.x0, canvas.y0);
  EXPECT_FALSE(view.ensureNodeListVisible(one, 1));
  EXPECT_EQ(view.getViewCentre(), XY<double>(canvas.x0, canvas.y0));
  EXPECT_TRUE(view.ensureNodeListVisible(one, 2));
  EXPECT_EQ(view.getViewCentre(), leftMiddle);
  // Flag 0 fits, but never zooms in.
  view.setViewZoom(0.5);
  view.setViewCentre(canvas.x0, canvas.y0);
  EXPECT_TRUE(view.ensureNodeListVisible(one, 0));
  EXPECT_EQ(view.getZoom(), 0.5);
  EXPECT_EQ(view.getViewCentre(), leftMiddle);
  // The whole graph is wider than the view at the largest scale: even flag 1 zooms out.
  view.setViewZoom(1);
  const FXGraphView::GraphBox e = view.getGraphExtents();
  EXPECT_TRUE(view.ensureNodeListVisible(all, 1));
  EXPECT_DOUBLE_EQ(view.getZoom(), view.fitViewToCanvRect(e));
  EXPECT_LT(view.getZoom(), 1);
  EXPECT_EQ(view.getViewCentre(), XY<double>((e.x0 + e.x1) / 2, (e.y0 + e.y1) / 2));
}

TEST_F(ViewGeometry, ScrollBarThumbsFollowTheCentreAndMoveIt) {
  ScrollBar &h = *view.horizontalScrollBar(), &v = *view.verticalScrollBar();
  view.setViewZoom(1);
  view.setViewCentre(-0.1, -0.05);
  view.updateScrollbars(false);
  const double totalX = (canvas.x1 - canvas.x0) + 400 / most, totalY = (canvas.y1 - canvas.y0) + 300 / most;
  const double sizeY = 300 / most / totalY;
  EXPECT_DOUBLE_EQ(h.getThumbSize(), 400 / most / totalX);
  EXPECT_DOUBLE_EQ(h.getThumbPosition(), (-0.1 - canvas.x0) / totalX);
  EXPECT_DOUBLE_EQ(v.getThumbSize(), sizeY);
  EXPECT_DOUBLE_EQ(v.getThumbPosition(), 1 - ((-0.05 - canvas.y0) / totalY + sizeY)) << "from the top";

  // A dragged thumb moves the centre to where it says, and is not set back while held.
  auto drag = [](ScrollBar& bar, XY<int> by) {
    const Glib::PixelBox t = bar.thumbBox();
    const XY<int> at = bar.screenPos() + XY<int>{(t.x0 + t.x1) / 2, (t.y0 + t.y1) / 2};
    testsupport::press(at);
    moveTo(at + by);
    return at + by;
  };
  const XY<int> end = drag(h, {30, 0});
  const double p = h.getThumbPosition();
  EXPECT_DOUBLE_EQ(view.getViewCentre().x, canvas.x0 + p * totalX);
  EXPECT_EQ(view.getViewCentre().y, -0.05);
  view.updateScrollbars(true);
  EXPECT_EQ(h.getThumbPosition(), p);
  testsupport::release(end);
  view.updateScrollbars(false);
  EXPECT_DOUBLE_EQ(h.getThumbPosition(), p);

  testsupport::release(drag(v, {0, -25})); // down the screen, down the graph
  EXPECT_DOUBLE_EQ(view.getViewCentre().y, canvas.y0 + (1 - v.getThumbPosition() - sizeY) * totalY);
}

TEST_F(ViewGeometry, AutoScrollAtTheBorderOnTimerTicks) {
  const XY<int> o = view.screenPos();
  // 20 pixels inside each edge of the area, and beyond it.
  for (const auto& [x, y, border] :
       {std::tuple(27, 150, true), std::tuple(28, 150, false), std::tuple(365, 150, true), std::tuple(200, 35, true),
        std::tuple(200, 272, false), std::tuple(-40, 150, true)}) {
    moveTo(o + XY<int>{x, y});
    EXPECT_EQ(view.mouseInAutoScrollArea(), border) << x << ", " << y;
  }

  // A node dragged into the border switches auto-scroll on; each tick then
  // scrolls left and down at half the view's width a second, right and up at
  // half its height.
  HostClock::driveByHand(10'000);
  fx.frame(*fx.node(head), 160);
  testsupport::press(viewtest::Pads(view).body(head));
  moveTo(o + XY<int>{10, 150});
  ASSERT_TRUE(view.autoScrolling());
  auto tick = [&] {
    const XY<double> before = view.getViewCentre();
    HostClock::advance(200);
    GlobManager::tick();
    return (view.getViewCentre() - before) * most;
  };
  for (const auto& [x, y, dx, dy] : {std::tuple(10, 285, -40, 30), std::tuple(375, 20, 30, -40)}) {
    moveTo(o + XY<int>{x, y});
    const XY<double> moved = tick();
    EXPECT_NEAR(moved.x, dx, 1e-9) << x << ", " << y;
    EXPECT_NEAR(moved.y, dy, 1e-9) << x << ", " << y;
  }

  // Let go in the border, auto-scroll stays on until a tick finds the
  // pointer gone (over another window, so the view hears nothing of the move).
  testsupport::release(o + XY<int>{10, 20});
  ASSERT_TRUE(view.autoScrolling());
  auto* cover = new testsupport::RecordingGlob({60, 60});
  cover->setPos(o.x + 170, o.y + 120);
  GlobManager::realize(cover);
  moveTo(o + XY<int>{200, 150});
  EXPECT_EQ(tick(), XY<double>(0, 0));
  EXPECT_FALSE(view.autoScrolling());
  EXPECT_EQ(view.timerHolds(), 0);
}

TEST_F(ViewGeometry, OrientationTurnsEveryNodeOnceAndIsRemembered) {
  std::vector<XY<double>> was;
  for (const auto& n : view.nodes()) was.push_back(n->getPosition());
  auto expectTurned = [&](bool turned) {
    for (std::size_t i = 0; i < was.size(); ++i) {
      const XY<double> want = turned ? XY<double>(-was[i].y, was[i].x) : was[i], got = view.nodes()[i]->getPosition();
      EXPECT_NEAR(got.x, want.x, 1e-12) << i;
      EXPECT_NEAR(got.y, want.y, 1e-12) << i;
    }
  };
  auto stored = [&] {
    return std::pair(NodeUIPosManager::getManagerFor(view.getEdit())->getOrientation(),
                     prefs().getPreference("Video Routing : Orientation", LightweightString<char>()).str());
  };
  view.setOrientation(VidRouting::Orientations::BottomToTop, false);
  view.setOrientation(VidRouting::Orientations::BottomToTop, false);
  EXPECT_EQ(stored(), std::pair(VidRouting::Orientations::BottomToTop, std::string("BottomToTop")));
  expectTurned(true);

  // The context menu's entries, by label: 11779 is left to right, any other bottom to top.
  auto choose = [&](int resource) {
    NotifyMsg m;
    m.object = Ux::Ptr<iObject>(new MenuData::Change(resourceStrW(resource), 0, "orientation"));
    view.changeOrientation(m);
  };
  choose(11779);
  EXPECT_EQ(stored(), std::pair(VidRouting::Orientations::LeftToRight, std::string("LeftToRight")));
  expectTurned(false);
  choose(11780);
  EXPECT_EQ(view.getOrientation(), VidRouting::Orientations::BottomToTop);
}

} // namespace
