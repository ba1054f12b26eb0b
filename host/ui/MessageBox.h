#pragma once
#include <vector>

#include "host/FxHostApi.h"
#include "host/ui/TextRowsPanel.h"

class PushButton;

// A message for the user: its text, word-wrapped, over an OK button that
// closes it. It comes up centred on the screen, above everything else.
class FXHOST_API MessagePanel : public TextRowsPanel {
public:
  // The message sent by its OK button.
  static constexpr const char* okMsg = "MessagePanel::ok";

  MessagePanel(const LightweightString<wchar_t>& text, const Palette& palette);
  ~MessagePanel() override;

  PushButton* okButton() const noexcept { return ok_; }
  bool handleMessageEvent(const LightweightString<char>& msg, Glob* sender) override;
  LightweightString<char> idstring() const override { return "MessagePanel"; }

private:
  PushButton* ok_ = nullptr;
};

// Shows a message box with the text; null (and the text in the host log)
// when there is no screen to show it on.
FXHOST_API MessagePanel* makeMessage(const LightweightString<wchar_t>& text, const Palette& palette = Palette());

// Every text that makeMessage was asked to show, oldest first (at most the
// last 256), so that a host's automation can tell what the user was told.
FXHOST_API std::vector<LightweightString<wchar_t>> messagesShown();
