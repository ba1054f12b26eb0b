#include <gtest/gtest.h>

#include "host/config/Resources.h"
#include "host/ui/DropDownMenuButton.h"
#include "host/ui/MenuGlob.h"
#include "host/ui/PushButton.h"
#include "tests/support/UiScreen.h"

using namespace testsupport;

namespace {

using Menus = UiTest;

// The middle of a menu item, on the screen.
XY<int> itemOnScreen(const MenuGlob& menu, int index) {
  const Glob::PixelBox b = menu.itemBox(index);
  return onScreen(menu, {(b.x0 + b.x1) / 2, (b.y0 + b.y1) / 2});
}

} // namespace

TEST_F(Menus, DropDownSelectsTheChosenEntryAndTellsItsParentAndAClickOutsideOnlyCloses) {
  auto* orientation = new DropDownMenuButton({resourceStrW(11779), resourceStrW(11780)}, 0);
  root->addChild(orientation, Glob::TopLeft(10, 10));
  auto* tidy = root->addChild(new PushButton(L"Tidy", "TidyNodes"), Glob::BottomRight(10, 10));
  EXPECT_EQ(orientation->getSelectedText(), resourceStrW(11779));

  click(centreOf(*orientation));
  MenuGlob* menu = MenuGlob::current();
  ASSERT_NE(menu, nullptr);
  ASSERT_EQ(menu->items().size(), 2u);
  EXPECT_TRUE(menu->items()[0].checked);
  EXPECT_EQ(menu->getY() + menu->height(), orientation->screenPos().y) << "hangs from the button";

  click(itemOnScreen(*menu, 1));
  EXPECT_EQ(orientation->getSelectedText(), resourceStrW(11780));
  ASSERT_EQ(root->messages.size(), 1u);
  EXPECT_EQ(root->messages[0].message, DropDownMenuButton::dropDownMenuButtonMsg);
  EXPECT_EQ(root->messages[0].sender, orientation);
  EXPECT_EQ(MenuGlob::current(), nullptr);
  EXPECT_EQ(GlobManager::roots().size(), 1u) << "the menu is gone from the screen";

  // A click outside an open menu only closes it; so does escape.
  click(centreOf(*orientation));
  ASSERT_NE(MenuGlob::current(), nullptr);
  EXPECT_TRUE(click(centreOf(*tidy)));
  EXPECT_EQ(MenuGlob::current(), nullptr);
  EXPECT_EQ(root->messages.size(), 1u) << "the click that closed the menu reached no button";
  click(centreOf(*tidy));
  ASSERT_EQ(root->messages.size(), 2u);
  EXPECT_EQ(root->messages[1].message, "TidyNodes");
  click(centreOf(*orientation));
  ASSERT_NE(MenuGlob::current(), nullptr);
  key(27);
  EXPECT_EQ(MenuGlob::current(), nullptr);
  EXPECT_EQ(orientation->getSelectedIndex(), 1);
}

TEST_F(Menus, ContextMenuDeliversTextOrDataToTheGlobThatOfferedIt) {
  auto* view = new RecordingGlob({120, 80});
  root->addChild(view, Glob::BottomLeft(20, 20));
  MenuItem greyed(L"Render");
  greyed.active = false;
  view->menu = {MenuItem(L"Tidy", "TidyNodes"), MenuItem(L"Left to right", {}, "orientation"), greyed};

  const XY<int> at = centreOf(*view);
  click(at, Event::right);
  MenuGlob* menu = MenuGlob::current();
  ASSERT_NE(menu, nullptr);
  EXPECT_EQ(menu->owner(), view);
  EXPECT_EQ(menu->getX(), at.x);
  EXPECT_EQ(menu->getY() + menu->height(), at.y) << "its top-left corner at the mouse";

  click(itemOnScreen(*menu, 0));
  ASSERT_EQ(view->messages.size(), 1u);
  EXPECT_EQ(view->messages[0].message, "TidyNodes");
  EXPECT_TRUE(root->messages.empty()) << "handled by the owner, not passed up";

  click(at, Event::right);
  click(itemOnScreen(*MenuGlob::current(), 1));
  ASSERT_EQ(view->dataMessages.size(), 1u);
  EXPECT_EQ(view->dataMessages[0].message, MenuData::changeMsg);
  EXPECT_EQ(view->menuChange.label, L"Left to right");
  EXPECT_EQ(view->menuChange.index, 1);
  EXPECT_EQ(view->menuChange.tag, "orientation");

  // An inactive item cannot be chosen; the menu stays up.
  click(at, Event::right);
  menu = MenuGlob::current();
  click(itemOnScreen(*menu, 2));
  EXPECT_EQ(MenuGlob::current(), menu);
  EXPECT_EQ(view->messages.size() + view->dataMessages.size(), 2u);

  // A glob that offers nothing opens no menu.
  key(27);
  root->menu.clear();
  EXPECT_FALSE(click(root->screenPos() + XY<int>{250, 150}, Event::right));
  EXPECT_EQ(MenuGlob::current(), nullptr);
}
