#pragma once
#include <vector>

#include "host/FxHostApi.h"
#include "host/ui/EventMsgData.h"
#include "host/ui/GlobManager.h"

// What a tab change message carries.
struct TabDetails {
  LightweightString<wchar_t> title;
  int index = -1;
};

// A row of tabs along the top edge, one per page; one is selected. A click
// on another tab selects it and sends the data message changePageMsg, with
// an EventMsgData<TabDetails> naming the new tab, to the parent. The glob
// shows only the tabs: the owner shows the page. Each page can carry an
// identifier of the owner's choosing.
class FXHOST_API TabbedDialogue : public Glob {
public:
  static constexpr const char* changePageMsg = "TabbedDialogue::changePage";

  struct FXHOST_API InitArgs {
    GlobCreationInfo creationInfo; // its size is the glob's size
    int tabHeight = TabbedDialogue::tabHeight(16);
    Palette palette;
  };

  explicit TabbedDialogue(const InitArgs& args);

  // The least height that shows a row of tabs.
  static int minHeight();
  // The height of a tab whose title is `textHeight` pixels high.
  static int tabHeight(int textHeight);

  // Replaces the pages (their identifiers are cleared) and selects one.
  void setPages(const std::vector<LightweightString<wchar_t>>& titles, int selected, bool redrawNow);
  int pageCount() const noexcept { return static_cast<int>(titles_.size()); }
  const LightweightString<wchar_t>& getPageTitle(int index) const;
  void setPageID(int index, const LightweightString<wchar_t>& id);
  const LightweightString<wchar_t>& getPageID(int index) const;
  // The first page with that identifier, or -1.
  int findPageIdx(const LightweightString<wchar_t>& id) const;
  // The selected page, or -1 when there are none.
  int getCurrentTabIndex() const noexcept { return current_; }
  // Selects a page; with `notify` the parent hears of it as from a click.
  void selectPage(int index, bool redrawNow, bool notify);
  // The tab of a page, in the glob's pixels.
  PixelBox tabBox(int index) const;

  bool handleMouseEvent(const Event& e) override;
  void draw() override;
  LightweightString<char> idstring() const override { return "TabbedDialogue"; }

private:
  struct Page {
    LightweightString<wchar_t> title;
    LightweightString<wchar_t> id;
  };
  std::vector<Page> titles_;
  int current_ = -1;
  int tabHeight_;
};
