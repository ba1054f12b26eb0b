#include <cmath>
#include <filesystem>

#include <gtest/gtest.h>

#include "host/config/Resources.h"
#include "host/draw/UxImage.h"
#include "host/notify/Log.h"
#include "host/ui/Checkbox.h"
#include "host/ui/ImageButton.h"
#include "host/ui/PushButton.h"
#include "tests/support/UiScreen.h"

using namespace testsupport;

namespace {

struct Buttons : ::testing::Test {
  ScopedScreen screen{320, 240};
  RecordingGlob* root = new RecordingGlob({200, 120});

  void SetUp() override {
    root->setPos(60, 40);
    GlobManager::realize(root);
  }
};

} // namespace

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

TEST_F(Buttons, CheckboxClickFlipsItsStateAndSaysSo) {
  const LightweightString<wchar_t> label = resourceStrW(10869);
  auto* autoPos = new Checkbox(label, false);
  root->addChild(autoPos, Glob::BottomLeft(4, 4));

  click(centreOf(*autoPos));
  EXPECT_TRUE(autoPos->getState());
  click(centreOf(*autoPos));
  EXPECT_FALSE(autoPos->getState());
  autoPos->setState(true); // set by its owner, it changes quietly
  ASSERT_EQ(root->messages.size(), 2u);
  EXPECT_EQ(root->messages[0].message, "Checkbox On");
  EXPECT_EQ(root->messages[1].message, "Checkbox Off");
}

TEST_F(Buttons, ImageButtonShowsItsIconBottomUpInTheWrittenPicture) {
  // Side 32 leaves a 4-pixel inset round the 24-pixel icon: drawn 1:1.
  auto* undo = new ImageButton(getIconPath("undo.png"), "undoBtn", 32);
  root->addChild(undo, Glob::BottomLeft(12, 8));
  root->redraw();
  ASSERT_EQ(undo->screenPos(), (XY<int>{72, 48}));
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
  ASSERT_EQ(shot->height(), 240);

  // Screen y grows upwards from the bottom; picture rows run down from the top.
  const int screenX = 72 + 4 + ix;
  const int screenY = 48 + 32 - 4 - 1 - iy;
  const Colour want = icon.pixel(ix, iy);
  const Colour got = shot->pixel(screenX, 240 - 1 - screenY);
  EXPECT_NEAR(got.r, want.r, 2 / 255.0);
  EXPECT_NEAR(got.g, want.g, 2 / 255.0);
  EXPECT_NEAR(got.b, want.b, 2 / 255.0);
  const Colour mirrored = shot->pixel(screenX, screenY);
  EXPECT_GT(std::abs(mirrored.b - want.b) + std::abs(mirrored.r - want.r), 0.1);

  click(centreOf(*undo));
  ASSERT_EQ(root->messages.size(), 1u);
  EXPECT_EQ(root->messages[0].message, "undoBtn");
}

TEST_F(Buttons, AnIconThatCannotBeReadIsReportedOnce) {
  LogChannel::Capture log(Log::channel());
  const LightweightString<char> path = getIconPath("no-such-icon.png");
  ImageButton first(path, "a", 20);
  ImageButton second(path, "b", 20);
  EXPECT_FALSE(first.getImage());
  EXPECT_FALSE(second.getImage());
  ASSERT_EQ(log.messages().size(), 1u);
  EXPECT_NE(log.messages()[0].find("no-such-icon.png"), std::string::npos);
}
