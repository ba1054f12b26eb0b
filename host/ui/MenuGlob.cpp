#include "host/ui/MenuGlob.h"

#include <algorithm>

#include "host/ui/GlobManager.h"
#include "host/ui/TextMetrics.h"
#include "host/ui/UifStd.h"

namespace {

constexpr int frame = 1;       // pixels round the rows
constexpr int tickColumn = 18; // left of the labels, for ticks
constexpr int keysGap = 24;    // between a label and its keys
constexpr int rightMargin = 12;
constexpr int keyEscape = 27;
constexpr int keyReturn = 13;

const Colour highlight(0.24, 0.44, 0.74);

bool isInTree(const Glob* root, const Glob* g) {
  if (root == g) return true;
  for (const Glob* c : root->children())
    if (isInTree(c, g)) return true;
  return false;
}

// Whether a glob is still on the screen (an owner may go while its menu is up).
bool isAlive(const Glob* g) {
  for (const Glob* root : GlobManager::roots())
    if (isInTree(root, g)) return true;
  return false;
}

} // namespace

MenuData::Change::~Change() = default;

MenuGlob::MenuGlob(const MenuItems& items, Glob* owner, XY<int> size) : Glob(size), items_(items), owner_(owner) {
  if (owner) setPalette(owner->getPalette());
}

MenuGlob* MenuGlob::open(const MenuItems& items, Glob* owner, XY<int> topLeft) {
  if (items.empty() || !GlobManager::initialised()) return nullptr;
  int w = 80;
  for (const MenuItem& item : items)
    w = std::max(w, tickColumn + measureText(item.label).x + rightMargin +
                        (item.keys.empty() ? 0 : measureText(item.keys).x + keysGap));
  const int h = 2 * frame + static_cast<int>(items.size()) * UifStd::getRowHeight();
  auto* menu = new MenuGlob(items, owner, {w, h});
  const XY<int> pos = GlobManager::getSafePosForGlob(menu->canvas(), {topLeft.x, topLeft.y - h}, {w, h});
  menu->setPos(pos.x, pos.y);
  GlobManager::setPopup(menu);
  GlobManager::realize(menu);
  return menu;
}

MenuGlob* MenuGlob::current() { return dynamic_cast<MenuGlob*>(GlobManager::popup()); }

bool MenuGlob::processRightMouseClicks(Glob* glob, const Event& event) {
  if (!glob || !mouse_right_event(event) || !(mouse_down_event(event) || mouse_up_event(event))) return false;
  for (Glob* g = glob; g; g = g->parent()) {
    Event local = event;
    local.position = event.screen - g->screenPos();
    MenuItems items = g->getMenuItems(&local);
    if (items.empty()) continue;
    // The release of the press that opened this glob's menu leaves it up.
    if (mouse_up_event(event) && current() && current()->owner() == g) return true;
    return open(items, g, event.screen) != nullptr;
  }
  return false;
}

int MenuGlob::itemAt(XY<int> p) const {
  if (p.x < 0 || p.x >= width()) return -1;
  const int fromTop = height() - frame - 1 - p.y;
  if (fromTop < 0) return -1;
  const int index = fromTop / UifStd::getRowHeight();
  return index < static_cast<int>(items_.size()) ? index : -1;
}

Glob::PixelBox MenuGlob::itemBox(int index) const {
  const int row = UifStd::getRowHeight();
  const int top = height() - frame - index * row;
  return {frame, top - row, width() - frame, top};
}

void MenuGlob::close() {
  if (GlobManager::popup() == this)
    GlobManager::setPopup(nullptr);
  else
    GlobManager::requestDeletion(this);
}

void MenuGlob::choose(int index) {
  if (index < 0 || index >= static_cast<int>(items_.size()) || !items_[index].active) return;
  const MenuItem item = items_[index];
  Glob* owner = owner_;
  // Closing only marks the menu for deletion: it is still the sender below.
  close();
  if (!owner || !isAlive(owner)) return;
  if (!item.message.empty()) {
    for (Glob* g = owner; g; g = g->parent())
      if (g->handleMessageEvent(item.message, this)) return;
    return;
  }
  const Ux::Ptr<MenuData::Change> change(new MenuData::Change(item.label, index, item.tag));
  for (Glob* g = owner; g; g = g->parent())
    if (g->handleDataMessageEvent(MenuData::changeMsg, this, change.get())) return;
}

bool MenuGlob::handleMouseEvent(const Event& e) {
  const int under = itemAt(e.position);
  if (under != hot_) {
    hot_ = under;
    redraw();
  }
  // Either button chooses, so that a right click's menu takes a right click.
  if (mouse_up_event(e) && (mouse_left_event(e) || mouse_right_event(e))) choose(under);
  return true;
}

bool MenuGlob::handleKeyEvent(const Event& e) {
  if (e.type != Event::keyDown) return true;
  if (e.key == keyEscape)
    close();
  else if (e.key == keyReturn)
    choose(hot_);
  return true;
}

void MenuGlob::draw() {
  const Palette& p = getPalette();
  drawRect({0, 0, width(), height()}, p.window(1));
  drawFrame({0, 0, width(), height()}, p.window(6), 1);
  for (int i = 0; i < static_cast<int>(items_.size()); ++i) {
    const MenuItem& item = items_[i];
    const PixelBox row = itemBox(i);
    const bool hot = i == hot_ && item.active;
    if (hot) drawRect(row, highlight);
    if (item.kind == MenuItem::Kind::separator) {
      const int y = (row.y0 + row.y1) / 2;
      drawRect({row.x0 + 4, y, row.x1 - 4, y + 1}, p.window(5));
      continue;
    }
    if (item.kind == MenuItem::Kind::heading) {
      drawRect(row, p.window(3));
      drawText({row.x0 + 6, row.y0, row.x1 - 4, row.y1}, item.label, p.text(), {}, 0);
      continue;
    }
    Colour ink = hot ? Colour(1, 1, 1) : p.text();
    if (!item.active) ink = p.window(5);
    if (item.checked) {
      CanvasRenderer r = canvas().renderer();
      const int cy = (row.y0 + row.y1) / 2;
      r.renderPrimitive(Glib::LineDescription{{5, cy}, {8, cy - 4}, fromColour(ink), 2});
      r.renderPrimitive(Glib::LineDescription{{8, cy - 4}, {13, cy + 4}, fromColour(ink), 2});
    }
    drawText({row.x0 + tickColumn, row.y0, row.x1 - 4, row.y1}, item.label, ink, {}, 0);
    if (!item.keys.empty())
      drawText({row.x0 + tickColumn, row.y0, row.x1 - 8, row.y1}, item.keys, hot ? ink : p.window(5), {}, 2);
  }
}
