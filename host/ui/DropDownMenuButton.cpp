#include "host/ui/DropDownMenuButton.h"

#include <algorithm>

#include "host/ui/GlobManager.h"
#include "host/ui/MenuGlob.h"
#include "host/ui/TextMetrics.h"
#include "host/ui/UifStd.h"

namespace {
constexpr int labelMargin = 6;  // left of the text
constexpr int arrowColumn = 18; // the arrow at the right
constexpr const char* entryTag = "DropDownMenuButton entry";

int fittingWidth(const std::vector<LightweightString<wchar_t>>& entries) {
  int w = 0;
  for (const auto& e : entries) w = std::max(w, measureText(e).x);
  return labelMargin + w + arrowColumn;
}
} // namespace

DropDownMenuButton::DropDownMenuButton(const std::vector<LightweightString<wchar_t>>& entries, int selected, int width,
                                       int height)
    : Button({width > 0 ? width : fittingWidth(entries), height > 0 ? height : UifStd::getRowHeight()},
             dropDownMenuButtonMsg),
      entries_(entries), selected_(entries.empty() ? -1 : std::clamp(selected, 0, int(entries.size()) - 1)) {}

void DropDownMenuButton::setEntries(const std::vector<LightweightString<wchar_t>>& entries, int selected,
                                    bool redrawNow) {
  entries_ = entries;
  selected_ = entries.empty() ? -1 : std::clamp(selected, 0, int(entries.size()) - 1);
  if (redrawNow) redraw();
}

LightweightString<wchar_t> DropDownMenuButton::getSelectedText() const {
  return selected_ >= 0 ? entries_[selected_] : LightweightString<wchar_t>();
}

void DropDownMenuButton::setSelectedIndex(int index, bool redrawNow) {
  if (index < 0 || index >= int(entries_.size()) || index == selected_) return;
  selected_ = index;
  if (redrawNow) redraw();
}

void DropDownMenuButton::clicked() {
  if (entries_.empty()) return;
  MenuItems items;
  for (const auto& e : entries_) items.emplace_back(e, LightweightString<char>(), entryTag);
  if (selected_ >= 0) items[selected_].checked = true;
  const XY<int> at = screenPos();
  MenuGlob* menu = MenuGlob::open(items, this, at);
  if (!menu) return;
  // The menu hangs from the button's bottom edge; with no room there it
  // stands on the button's top edge instead.
  if (menu->getY() + menu->height() != at.y) {
    const int above = at.y + height();
    if (above + menu->height() <= GlobManager::screenSize().y) menu->setPos(menu->getX(), above);
  }
  GlobManager::invalidate();
}

bool DropDownMenuButton::handleDataMessageEvent(const LightweightString<char>& msg, Glob* sender, const void* data) {
  const auto* menu = dynamic_cast<const MenuGlob*>(sender);
  if (msg != MenuData::changeMsg || !data || !menu || menu->owner() != this) return false;
  const auto* change = static_cast<const MenuData::Change*>(data);
  if (change->tag != entryTag) return false;
  setSelectedIndex(change->index);
  sendMessage(dropDownMenuButtonMsg);
  return true;
}

void DropDownMenuButton::draw() {
  const int w = width(), h = height();
  drawFace({0, 0, w, h});
  const Colour ink = inkColour();
  drawText({labelMargin, 0, w - arrowColumn, h}, getSelectedText(), ink, {}, 0);
  // A small downward triangle in the arrow column.
  const int cx = w - arrowColumn / 2, cy = h / 2;
  CanvasRenderer r = canvas().renderer();
  for (int row = 0; row < 4; ++row)
    r.renderPrimitive(
        Glib::LineDescription{{cx - 3 + row, cy - 2 + row}, {cx + 3 - row, cy - 2 + row}, fromColour(ink), 1});
}
