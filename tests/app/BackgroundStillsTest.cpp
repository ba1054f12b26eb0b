// A large graph's thumbnails are made on the workers while the user goes on
// working: a node drag neither waits for them nor makes any on the window's
// thread, and once they are made every thumbnail shows its own.
#include <gtest/gtest.h>

#include "app/EditGenerator.h"
#include "graph_view/ViewStills.h"
#include "host/render/RenderCounters.h"
#include "host/render/StillsQueue.h"
#include "host/render/VidRenderUtils.h"
#include "host/ui/GlobManager.h"
#include "tests/support/ViewFixture.h"

namespace {

// Holds the workers for the length of a scope.
struct HeldWorkers {
  HeldWorkers() { Render::StillsQueue::instance().hold(true); }
  ~HeldWorkers() { Render::StillsQueue::instance().hold(false); }
};

std::vector<Ux::Ptr<FXGraphViewNode>> shownThumbnails(const FXGraphView& view) {
  std::vector<Ux::Ptr<FXGraphViewNode>> shown;
  for (const auto& n : view.nodes())
    if (n->drawnLast() && n->hasThumbnail() && n->roomForThumbnail()) shown.push_back(n);
  return shown;
}

TEST(BackgroundStills, ADragGoesOnWhileALargeGraphsStillsAreMade) {
  testsupport::ViewFixture fx(fxgraph::generateEdit(2000, 5), {1200, 900}, true);
  FXGraphView& view = fx.view();
  std::optional<HeldWorkers> held(std::in_place);
  const Ux::Ptr<FXGraphViewNode> node = view.nodes().front();
  fx.frame(*node, 90);
  const std::vector<Ux::Ptr<FXGraphViewNode>> thumbs = shownThumbnails(view);
  ASSERT_GE(thumbs.size(), 6u);
  EXPECT_GE(view.stills().pending(), thumbs.size());
  Colour c;
  for (const auto& t : thumbs) EXPECT_FALSE(t->thumbnailColour(c)) << "a placeholder until its still is made";

  // The drag, through the mouse.
  const unsigned rendered = Render::counters().stillsRendered.load();
  const std::size_t pending = view.stills().pending();
  const XY<double> before = node->getPosition();
  const auto box = node->calcPixelExtents();
  const XY<int> grab = view.screenPos() + XY<int>{(box.x0 + box.x1) / 2, (box.y0 + box.y1) / 2};
  Event e;
  e.button = Event::left;
  e.type = Event::mouseDown;
  e.screen = grab;
  GlobManager::dispatch(e);
  e.type = Event::mouseMove;
  for (int step = 1; step <= 20; ++step) {
    e.screen = grab + XY<int>{step * 3, step};
    GlobManager::dispatch(e);
    GlobManager::update();
  }
  e.type = Event::mouseUp;
  GlobManager::dispatch(e);
  EXPECT_NE(node->getPosition(), before) << "the node followed the mouse";
  EXPECT_EQ(Render::counters().stillsRendered.load(), rendered) << "no still was made on the window's thread";
  EXPECT_GE(view.stills().pending(), pending) << "nothing waited for the stills";

  held.reset();
  view.stills().finish();
  EXPECT_EQ(view.stills().pending(), 0u);
  view.redraw();
  for (const auto& t : shownThumbnails(view)) EXPECT_TRUE(t->thumbnailColour(c)) << t->getNodeID().asString().str();
}

} // namespace
