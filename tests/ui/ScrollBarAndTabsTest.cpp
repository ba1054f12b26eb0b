#include <gtest/gtest.h>

#include "host/ui/ScrollBar.h"
#include "host/ui/TabbedDialogue.h"
#include "tests/support/UiScreen.h"

using namespace testsupport;

namespace {

struct ScrollBarsAndTabs : ::testing::Test {
  ScopedScreen screen{400, 300};
  RecordingGlob* root = new RecordingGlob({360, 260});

  void SetUp() override {
    root->setPos(20, 20);
    GlobManager::realize(root);
  }
  double positionIn(std::size_t message) const {
    double p = -1;
    EXPECT_TRUE(ScrollBar::parsePosition(root->messages.at(message).message, p));
    return p;
  }
};

} // namespace

TEST_F(ScrollBarsAndTabs, DraggingTheThumbReportsEachPositionUntilTheRelease) {
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

TEST_F(ScrollBarsAndTabs, VerticalPositionsCountFromTheTop) {
  auto* bar = new ScrollBar(ScrollBar::vertical, 100);
  root->addChild(bar, Glob::BottomLeft(10, 10));
  bar->setThumbSize(0.5, false);
  EXPECT_EQ(bar->thumbBox(), (Glob::PixelBox{0, 50, 12, 100})) << "position 0: at the top";

  // Dragging down (towards smaller y) moves the thumb on.
  press(onScreen(*bar, {6, 75}));
  moveTo(onScreen(*bar, {6, 50}));
  release(onScreen(*bar, {6, 50}));
  EXPECT_DOUBLE_EQ(bar->getThumbPosition(), 0.25);
  EXPECT_EQ(bar->thumbBox(), (Glob::PixelBox{0, 25, 12, 75}));
}

TEST_F(ScrollBarsAndTabs, ClickingAnotherTabSelectsItAndSendsItsDetails) {
  TabbedDialogue::InitArgs args;
  args.creationInfo.size = {root->width(), TabbedDialogue::minHeight()};
  auto* tabs = new TabbedDialogue(args);
  root->addChild(tabs, Glob::TopLeft(0, 0));
  tabs->setPages({L"Video", L"A1", L"A2"}, 0, false);
  for (int i = 0; i < 3; ++i) tabs->setPageID(i, toWide(formatText("1.0.%d", i + 1)));
  EXPECT_EQ(tabs->findPageIdx(L"1.0.3"), 2);
  EXPECT_EQ(tabs->findPageIdx(L"9.9.9"), -1);

  const Glob::PixelBox third = tabs->tabBox(2);
  click(onScreen(*tabs, {(third.x0 + third.x1) / 2, (third.y0 + third.y1) / 2}));
  EXPECT_EQ(tabs->getCurrentTabIndex(), 2);
  ASSERT_EQ(root->dataMessages.size(), 1u);
  EXPECT_EQ(root->dataMessages[0].message, TabbedDialogue::changePageMsg);
  EXPECT_EQ(root->dataMessages[0].sender, tabs);
  EXPECT_EQ(root->tab.title, L"A2");
  EXPECT_EQ(root->tab.index, 2);

  // The selected tab again is no change; selecting from code tells the
  // parent only when asked to.
  click(onScreen(*tabs, {(third.x0 + third.x1) / 2, (third.y0 + third.y1) / 2}));
  tabs->selectPage(0, false, false);
  EXPECT_EQ(tabs->getCurrentTabIndex(), 0);
  EXPECT_EQ(root->dataMessages.size(), 1u);
  tabs->selectPage(1, true, true);
  ASSERT_EQ(root->dataMessages.size(), 2u);
  EXPECT_EQ(root->tab.index, 1);

  // New pages come without identifiers.
  tabs->setPages({L"A1", L"A2"}, 1, true);
  EXPECT_EQ(tabs->getCurrentTabIndex(), 1);
  EXPECT_EQ(tabs->findPageIdx(L"1.0.2"), -1);
  EXPECT_TRUE(tabs->getPageID(0).empty());
}
