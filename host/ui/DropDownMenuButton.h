#pragma once
#include <vector>

#include "host/FxHostApi.h"
#include "host/ui/Button.h"

class MenuGlob;

// A button showing the selected one of its entries; a click opens a menu of
// all entries just below it (above when there is no room). Choosing an entry
// selects it and sends dropDownMenuButtonMsg to the parent, which reads the
// selection from the sender.
class FXHOST_API DropDownMenuButton : public Button {
public:
  static constexpr const char* dropDownMenuButtonMsg = "DropDownMenuButton";

  // A width of 0 fits the longest entry; the height defaults to one row.
  DropDownMenuButton(const std::vector<LightweightString<wchar_t>>& entries, int selected, int width = 0,
                     int height = 0);

  const std::vector<LightweightString<wchar_t>>& getEntries() const noexcept { return entries_; }
  void setEntries(const std::vector<LightweightString<wchar_t>>& entries, int selected, bool redrawNow = true);
  // The selected entry's index, or -1 when there are no entries.
  int getSelectedIndex() const noexcept { return selected_; }
  LightweightString<wchar_t> getSelectedText() const;
  // Selects without sending a message; an index out of range is ignored.
  void setSelectedIndex(int index, bool redrawNow = true);

  void draw() override;
  bool handleDataMessageEvent(const LightweightString<char>& msg, Glob* sender, const void* data) override;
  LightweightString<char> idstring() const override { return "DropDownMenuButton"; }

protected:
  void clicked() override;

private:
  std::vector<LightweightString<wchar_t>> entries_;
  int selected_;
};
