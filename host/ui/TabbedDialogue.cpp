#include "host/ui/TabbedDialogue.h"

#include <algorithm>

#include "host/ui/TextMetrics.h"
#include "host/ui/UifStd.h"

namespace {
constexpr int tabPadding = 10; // each side of a title
constexpr int minTabWidth = 48;
constexpr int tabGap = 2;
constexpr int baseLine = 2; // the line under the tabs
} // namespace

TabbedDialogue::TabbedDialogue(const InitArgs& args)
    : Glob(args.creationInfo.size), tabHeight_(std::max(1, args.tabHeight)) {
  setPalette(args.palette);
}

int TabbedDialogue::minHeight() { return UifStd::getRowHeight() + 2 * baseLine; }

int TabbedDialogue::tabHeight(int textHeight) { return std::max(0, textHeight) + 8; }

void TabbedDialogue::setPages(const std::vector<LightweightString<wchar_t>>& titles, int selected, bool redrawNow) {
  titles_.clear();
  for (const auto& t : titles) titles_.push_back({t, {}});
  current_ = titles_.empty() ? -1 : std::clamp(selected, 0, pageCount() - 1);
  if (redrawNow) redraw();
}

const LightweightString<wchar_t>& TabbedDialogue::getPageTitle(int index) const {
  static const LightweightString<wchar_t> none;
  return index >= 0 && index < pageCount() ? titles_[index].title : none;
}

void TabbedDialogue::setPageID(int index, const LightweightString<wchar_t>& id) {
  if (index >= 0 && index < pageCount()) titles_[index].id = id;
}

const LightweightString<wchar_t>& TabbedDialogue::getPageID(int index) const {
  static const LightweightString<wchar_t> none;
  return index >= 0 && index < pageCount() ? titles_[index].id : none;
}

int TabbedDialogue::findPageIdx(const LightweightString<wchar_t>& id) const {
  for (int i = 0; i < pageCount(); ++i)
    if (titles_[i].id == id) return i;
  return -1;
}

void TabbedDialogue::selectPage(int index, bool redrawNow, bool notify) {
  if (index < 0 || index >= pageCount()) return;
  const bool changed = index != current_;
  current_ = index;
  if (changed && redrawNow) redraw();
  if (notify) {
    const EventMsgData<TabDetails> details{{titles_[index].title, index}};
    sendDataMessage(changePageMsg, &details);
  }
}

Glob::PixelBox TabbedDialogue::tabBox(int index) const {
  const int top = height();
  const int bottom = std::max(0, top - tabHeight_);
  int x = 0;
  for (int i = 0; i < pageCount(); ++i) {
    const int w = std::max(minTabWidth, measureText(titles_[i].title).x + 2 * tabPadding);
    if (i == index) return {x, bottom, x + w, top};
    x += w + tabGap;
  }
  return {};
}

bool TabbedDialogue::handleMouseEvent(const Event& e) {
  if (!isActive() || !mouse_left_event(e)) return false;
  if (!mouse_down_event(e)) return true;
  for (int i = 0; i < pageCount(); ++i) {
    const PixelBox b = tabBox(i);
    if (e.position.x >= b.x0 && e.position.x < b.x1 && e.position.y >= b.y0 && e.position.y < b.y1) {
      // Only a change of page is news.
      if (i != current_) selectPage(i, true, true);
      return true;
    }
  }
  return true;
}

void TabbedDialogue::draw() {
  const Palette& p = getPalette();
  const int w = width(), h = height();
  drawRect({0, 0, w, h}, p.window(3));
  const int lineTop = std::max(0, h - tabHeight_);
  drawRect({0, std::max(0, lineTop - baseLine), w, lineTop}, p.window(6));
  for (int i = 0; i < pageCount(); ++i) {
    const PixelBox b = tabBox(i);
    const bool selected = i == current_;
    // The selected tab stands on the line, joined to the page below it.
    const PixelBox face{b.x0, selected ? b.y0 - baseLine : b.y0, b.x1, selected ? b.y1 : b.y1 - 2};
    drawRect(face, selected ? p.window(1) : p.window(4));
    drawFrame(face, p.window(6), 1);
    drawText({b.x0 + tabPadding, face.y0, b.x1 - tabPadding, face.y1}, titles_[i].title, p.text(), {}, 1);
  }
}
