#include "host/ui/ScrollBar.h"

#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

#include "host/draw/ScreenSurface.h"
#include "tests/support/UiScreen.h"

using namespace testsupport;

namespace {

struct ScrollBars : UiTest {
  double positionIn(std::size_t message) const {
    double p = -1;
    EXPECT_TRUE(ScrollBar::parsePosition(root->messages.at(message).message, p));
    return p;
  }
};

} // namespace

TEST_F(ScrollBars, DraggingTheThumbReportsEachPositionUntilTheRelease) {
  auto* bar = new ScrollBar(ScrollBar::horizontal, 200);
  root->addChild(bar, Glob::BottomLeft(10, 10));
  bar->setThumbSize(0.25, false);
  // A 50-pixel thumb with 150 pixels to travel over positions 0 to 0.75.
  ASSERT_EQ(bar->thumbBox(), (Glob::PixelBox{0, 0, 50, 12}));

  press(onScreen(*bar, {25, 6}));
  EXPECT_TRUE(bar->isThumbBeingDragged());
  moveTo(onScreen(*bar, {100, 6}));
  ASSERT_EQ(root->messages.size(), 1u);
  EXPECT_TRUE(root->messages[0].message.starts_with("ScrollBar drag "));
  EXPECT_DOUBLE_EQ(positionIn(0), 0.375);
  // Far past the end, the thumb stops there.
  moveTo(onScreen(*bar, {400, 30}));
  EXPECT_DOUBLE_EQ(bar->getThumbPosition(), 0.75);
  release(onScreen(*bar, {400, 30}));
  EXPECT_FALSE(bar->isThumbBeingDragged());
  ASSERT_EQ(root->messages.size(), 3u);
  EXPECT_TRUE(root->messages[2].message.starts_with("ScrollBar end "));
  EXPECT_DOUBLE_EQ(positionIn(2), 0.75);

  // A press on the trough left of the thumb moves it back by a page.
  click(onScreen(*bar, {10, 6}));
  EXPECT_DOUBLE_EQ(bar->getThumbPosition(), 0.5);
  EXPECT_TRUE(root->messages.back().message.starts_with("ScrollBar page "));
  EXPECT_FALSE(bar->isThumbBeingDragged());
}

// The areas a frame changed are kept to a few dozen however much is drawn
// between takes (a run without a window never takes them), and together
// they still cover everything drawn.
TEST(ScreenAreas, ManyAreasBetweenTakesAreKeptAsTheBoxRoundThem) {
  ScreenSurface surface(320, 200);
  EXPECT_EQ(surface.takeModifiedAreas(), (std::vector<Glib::PixelBox>{{0, 0, 320, 200}})) << "new: all of it";
  for (int k = 0; k < 100000; ++k) surface.addModifiedArea({k % 300, k % 190, k % 300 + 3, k % 190 + 2});
  surface.addModifiedArea({-5, 7, 1, 9});
  const std::vector<Glib::PixelBox> areas = surface.takeModifiedAreas();
  ASSERT_FALSE(areas.empty());
  EXPECT_LE(areas.size(), 64u);
  Glib::PixelBox all = areas.front();
  for (const Glib::PixelBox& a : areas)
    all = {std::min(all.x0, a.x0), std::min(all.y0, a.y0), std::max(all.x1, a.x1), std::max(all.y1, a.y1)};
  EXPECT_EQ(all, (Glib::PixelBox{-5, 0, 302, 191}));
  EXPECT_TRUE(surface.takeModifiedAreas().empty());
  surface.addModifiedArea({1, 2, 3, 4});
  EXPECT_EQ(surface.takeModifiedAreas(), (std::vector<Glib::PixelBox>{{1, 2, 3, 4}})) << "a few are kept as they are";
}

// A primitive is cut at its clip however near the edge its own points lie:
// a wide round-capped wire ending two pixels inside the clip, a wide line
// and a box across its edge leave the pixels outside untouched, and one
// wholly inside draws all of itself.
TEST(ScreenAreas, PrimitivesNearTheClipEdgeStayInsideIt) {
  ScreenSurface surface(100, 100);
  const Glib::PixelBox clip{20, 20, 60, 60};
  const NormalisedRGB ink{1, 1, 1, 1};
  surface.draw(Glib::BezierCurveDescription{ink, {22, 30}, {40, 30}, {30, 30}, {34, 30}, 9}, clip);
  surface.draw(Glib::LineDescription{{40, 10}, {40, 50}, ink, 7}, clip);
  surface.draw(Glib::RectDescription{{50, 50, 70, 55}, ink}, clip);
  surface.draw(Glib::DiscDescription{{40, 45}, 3, ink}, clip);
  const Ux::Ptr<UxImage> shot = surface.snapshot();
  // Bottom-up pixel (x, y) of the picture, whose rows run top first.
  const auto at = [&](int x, int y) { return shot->row(99 - y)[x]; };
  const uint32_t blank = at(5, 5);
  for (int y = 0; y < 100; ++y)
    for (int x = 0; x < 100; ++x) {
      if (x < 20 || x >= 60 || y < 20 || y >= 60) {
        ASSERT_EQ(at(x, y), blank) << x << "," << y;
      }
    }
  EXPECT_NE(at(20, 30), blank) << "the wire's cap inside the clip";
  EXPECT_NE(at(40, 21), blank) << "the line, cut at the clip";
  EXPECT_NE(at(59, 52), blank) << "the box, cut at the clip";
  EXPECT_NE(at(40, 45), blank) << "the disc, wholly inside";
}
