#include <cmath>
#include <filesystem>

#include <gtest/gtest.h>

#include "host/config/Resources.h"
#include "host/draw/UxImage.h"
#include "host/ui/ImageButton.h"
#include "host/ui/PushButton.h"
#include "tests/support/UiScreen.h"

using namespace testsupport;

using Buttons = UiTest;

TEST_F(Buttons, PushButtonSendsItsMessageOnlyForAPressAndReleaseOnIt) {
  auto* tidy = new PushButton(resourceStrW(11402), "TidyNodes");
  root->addChild(tidy, Glob::BottomLeft(10, 10));

  EXPECT_TRUE(click(centreOf(*tidy)));
  ASSERT_EQ(root->messages.size(), 1u);
  EXPECT_EQ(root->messages[0].message, "TidyNodes");
  EXPECT_EQ(root->messages[0].sender, tidy);

  // Pressed, then taken off the button before the release: no click.
  press(centreOf(*tidy));
  EXPECT_TRUE(tidy->isPressed());
  moveTo(tidy->screenPos() + XY<int>{-15, 5});
  EXPECT_FALSE(tidy->isPressed());
  release(tidy->screenPos() + XY<int>{-15, 5});
  EXPECT_EQ(root->messages.size(), 1u);

  // Greyed, it ignores the mouse: the press falls through to the root.
  tidy->setActive(false);
  EXPECT_FALSE(click(centreOf(*tidy)));
  EXPECT_EQ(root->messages.size(), 1u);
  tidy->setActive(true);
  click(centreOf(*tidy));
  EXPECT_EQ(root->messages.size(), 2u);
}

TEST_F(Buttons, ImageButtonShowsItsIconBottomUpInTheWrittenPicture) {
  // Side 32 leaves a 4-pixel inset round the 24-pixel icon: drawn 1:1.
  auto* undo = new ImageButton(getIconPath("undo.png"), "undoBtn", 32);
  root->addChild(undo, Glob::BottomLeft(12, 8));
  root->redraw();
  ASSERT_TRUE(undo->getImage());
  const UxImage& icon = *undo->getImage();

  // The lowest fully opaque pixel of the icon (rows top first), so that a
  // picture upside down would show something else there.
  int ix = -1, iy = -1;
  for (int y = icon.height() - 1; y >= 0 && ix < 0; --y)
    for (int x = 0; x < icon.width() && ix < 0; ++x)
      if (icon.pixel(x, y).a == 1.0) ix = x, iy = y;
  ASSERT_GE(ix, 0);

  const auto png = std::filesystem::temp_directory_path() / "fxgraph-ui-imagebutton.png";
  ASSERT_TRUE(GlobManager::writePNG(png.string()));
  const Ux::Ptr<UxImage> shot = UxImage::loadPNG(png.string());
  std::filesystem::remove(png);
  ASSERT_TRUE(shot);
  const int rows = shot->height();

  // Screen y grows upwards from the bottom; picture rows run down from the top.
  const XY<int> at = undo->screenPos() + XY<int>{4 + ix, 32 - 4 - 1 - iy};
  const Colour want = icon.pixel(ix, iy);
  const Colour got = shot->pixel(at.x, rows - 1 - at.y);
  EXPECT_NEAR(got.r, want.r, 2 / 255.0);
  EXPECT_NEAR(got.g, want.g, 2 / 255.0);
  EXPECT_NEAR(got.b, want.b, 2 / 255.0);
  const Colour mirrored = shot->pixel(at.x, at.y);
  EXPECT_GT(std::abs(mirrored.b - want.b) + std::abs(mirrored.r - want.r), 0.1);

  click(centreOf(*undo));
  ASSERT_EQ(root->messages.size(), 1u);
  EXPECT_EQ(root->messages[0].message, "undoBtn");
}
