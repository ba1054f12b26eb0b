// Where the graph sits when the view is asked to show it: "f" frames the
// whole graph both ways, clear of the preview, in both orientations; Tidy
// and Arrange leave the focused node where it was on the screen; "v" shows
// and hides the preview, which never hides a node.
#include "graph_view/Framing.h"

#include <gtest/gtest.h>

#include "graph_view/KeyboardFocus.h"
#include "graph_view/ViewStills.h"
#include "host/config/EditorPreferences.h"
#include "host/edit/EditFile.h"
#include "tests/graph_view/ViewInput.h"
#include "tests/support/Program.h"
#include "tests/support/ViewFixture.h"

namespace framingtest {

using Orientation = VidRouting::Orientations::Orientation;

// Two nodes: a matte into a blur.
EditPtr twoNodes() {
  testsupport::EditBuilder e;
  const IdStamp matte(3, 0, 1), blur(2, 0, 1);
  e.material(matte);
  e.effect(blur, "blur", {matte});
  e.channel(IdStamp(1, 0, 1), L"V1", blur);
  return e.edit();
}

FXGraphView::PixelBox screenBoxOf(const FXGraphViewNode& n) { return n.calcPixelExtents(); }

bool overlaps(const FXGraphView::PixelBox& a, const FXGraphView::PixelBox& b) {
  return std::max(a.x0, b.x0) < std::min(a.x1, b.x1) && std::max(a.y0, b.y0) < std::min(a.y1, b.y1);
}

// Every node inside the view and clear of the preview.
void expectFramed(FXGraphView& view) {
  const auto w = view.getWindowPos();
  FXGraphView::PixelBox preview;
  const bool previewShown = view.stills().previewPlace(preview);
  for (const auto& n : view.nodes()) {
    const auto b = screenBoxOf(*n);
    EXPECT_TRUE(b.x0 >= w.x0 && b.x1 <= w.x1 && b.y0 >= w.y0 && b.y1 <= w.y1) << n->getNodeID().asString().str();
    if (previewShown) {
      EXPECT_FALSE(overlaps(b, preview)) << n->getNodeID().asString().str() << " under the preview";
    }
  }
}

class Framed : public ::testing::TestWithParam<Orientation> {};

TEST_P(Framed, FZoomsInOnASmallGraphAndOutOnALargeOneClearOfThePreview) {
  {
    testsupport::ViewFixture fx{twoNodes(), {640, 480}};
    FXGraphView& view = fx.view();
    view.setOrientation(GetParam(), false);
    view.setViewZoom(0);
    view.redraw();
    const double before = view.getScale();
    EXPECT_TRUE(testsupport::key('f'));
    EXPECT_GT(view.getScale(), before * 1.5) << "a two-node graph is brought up close";
    EXPECT_LE(view.getZoom(), 1.0);
    expectFramed(view);
  }
  {
    testsupport::ViewFixture fx{EditFile::load(testsupport::sourcePath("examples/promo.json")).edit, {640, 480}};
    FXGraphView& view = fx.view();
    view.setOrientation(GetParam(), false);
    view.setViewZoom(1);
    view.redraw();
    EXPECT_TRUE(testsupport::key('f'));
    expectFramed(view);
  }
}

TEST_P(Framed, TidyAndArrangeKeepTheFocusedNodeWhereItWas) {
  testsupport::ViewFixture fx{EditFile::load(testsupport::sourcePath("examples/promo.json")).edit, {640, 480}};
  FXGraphView& view = fx.view();
  view.setOrientation(GetParam(), false);
  view.setViewZoom(0.6);
  view.redraw();
  // A hand placing far from where Tidy puts it, and the focus on it.
  const IdStamp pip(2, 0, 2);
  Ux::Ptr<FXGraphViewNode> node = view.findViewRecForNode(pip);
  const XY<double> p = node->getPosition();
  node->setPosition(p.x + 0.3, p.y - 0.2, true);
  view.setViewCentre(p.x + 0.3, p.y - 0.2);
  view.redraw();
  view.keyboard().set(pip);
  const Framing::Anchor held = Framing::hold(view);
  ASSERT_EQ(held.node, pip);
  auto pixelOf = [&](const IdStamp& id) {
    const auto n = view.findViewRecForNode(id);
    return view.graphToViewSpace(XY<double>((n->getL() + n->getR()) / 2, (n->getB() + n->getT()) / 2));
  };
  const XY<double> before = pixelOf(held.node);
  view.tidy();
  EXPECT_NEAR(pixelOf(held.node).x, before.x, 1.0);
  EXPECT_NEAR(pixelOf(held.node).y, before.y, 1.0);
  // Moved by hand again, then arranged.
  node = view.findViewRecForNode(pip);
  node->setPosition(node->getPosition().x - 0.25, node->getPosition().y + 0.15, true);
  const XY<double> again = pixelOf(held.node);
  view.arrange();
  EXPECT_NEAR(pixelOf(held.node).x, again.x, 1.0);
  EXPECT_NEAR(pixelOf(held.node).y, again.y, 1.0);
}

TEST_P(Framed, VShowsAndHidesThePreviewAndItIsKept) {
  testsupport::ViewFixture fx{EditFile::load(testsupport::sourcePath("examples/promo.json")).edit, {640, 480}};
  FXGraphView& view = fx.view();
  view.setOrientation(GetParam(), false);
  FXGraphView::PixelBox box;
  ASSERT_TRUE(view.stills().previewPlace(box));
  const auto withPreview = view.stills().freeArea();
  EXPECT_TRUE(testsupport::key('v'));
  EXPECT_FALSE(view.stills().previewPlace(box));
  EXPECT_FALSE(prefs().getPreference(ViewStills::preference, true));
  EXPECT_GT(view.stills().freeArea().y1, withPreview.y1) << "the whole view is free";
  // Framed without it, the graph may use the top band.
  testsupport::key('f');
  expectFramed(view);
  testsupport::key('v');
  EXPECT_TRUE(view.stills().previewPlace(box));
  EXPECT_TRUE(prefs().getPreference(ViewStills::preference, false));
}

INSTANTIATE_TEST_SUITE_P(BothWays, Framed, viewtest::bothOrientations(), viewtest::orientationName);

} // namespace framingtest
