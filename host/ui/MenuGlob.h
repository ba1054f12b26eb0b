#pragma once
#include "host/FxHostApi.h"
#include "host/ui/Glob.h"

// A menu on the screen: a root glob listing items one a row, top first, put
// up as the screen's pop-up. A click on an active item delivers it to the
// glob that the menu belongs to (see MenuItem) and closes the menu; a click
// elsewhere or Escape closes it without a choice. The screen owns the menu
// and deletes it when it closes.
class FXHOST_API MenuGlob : public Glob {
public:
  // Puts up a menu with its top-left corner at a screen point, moved as
  // needed to lie on the screen. Null when there are no items.
  static MenuGlob* open(const MenuItems& items, Glob* owner, XY<int> topLeft);
  // Context menus: for a right-button press or release, shows the menu that
  // the glob offers (getMenuItems), or the nearest parent's when the glob
  // offers none, at the mouse. Returns whether a menu is up for the event.
  static bool processRightMouseClicks(Glob* glob, const Event& event);
  // The menu that is up, or null.
  static MenuGlob* current();

  const MenuItems& items() const noexcept { return items_; }
  Glob* owner() const noexcept { return owner_; }
  // The item under a point of the menu, or -1.
  int itemAt(XY<int> position) const;
  // An item's row, in the menu's pixels.
  PixelBox itemBox(int index) const;
  // Delivers an item (when it is active) and closes the menu.
  void choose(int index);
  void close();

  bool handleMouseEvent(const Event& e) override;
  bool handleKeyEvent(const Event& e) override;
  void draw() override;
  LightweightString<char> idstring() const override { return "MenuGlob"; }

private:
  MenuGlob(const MenuItems& items, Glob* owner, XY<int> size);

  MenuItems items_;
  Glob* owner_;
  int hot_ = -1; // the item under the mouse
};
