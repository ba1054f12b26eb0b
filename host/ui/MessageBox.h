#pragma once
#include <functional>
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

// A question for the user with a choice of answers, a button each in a row
// under the text. The asker is told the answer (its index) once, then the
// question closes. From the keyboard: Return gives the first answer, Escape
// the last (the way out), and an answer's first letter gives that answer.
// While it is up the rest of the screen waits (it is modal). Closed without
// an answer (its screen went), it tells the asker noAnswer.
class FXHOST_API QuestionPanel : public TextRowsPanel {
public:
  using Answered = std::function<void(int answer)>;
  static constexpr int noAnswer = -1;
  static constexpr const char* answerMsg = "QuestionPanel::answer";

  QuestionPanel(const LightweightString<wchar_t>& text, const std::vector<LightweightString<wchar_t>>& answers,
                Answered answered, const Palette& palette);
  ~QuestionPanel() override;

  const std::vector<PushButton*>& buttons() const noexcept { return buttons_; }
  // Answers as the button does: tells the asker, then closes.
  void answer(int index);
  // The asker goes away: the question closes without telling it.
  void withdraw();
  bool handleMessageEvent(const LightweightString<char>& msg, Glob* sender) override;
  bool handleKeyEvent(const Event& e) override;
  LightweightString<char> idstring() const override { return "QuestionPanel"; }

private:
  std::vector<PushButton*> buttons_;
  Answered answered_;
};

// Shows a message box with the text; null (and the text in the host log)
// when there is no screen to show it on.
FXHOST_API MessagePanel* makeMessage(const LightweightString<wchar_t>& text, const Palette& palette = Palette());

// Asks the question; null (the text in the host log, and no answer ever)
// when there is no screen to ask it on.
FXHOST_API QuestionPanel* askQuestion(const LightweightString<wchar_t>& text,
                                      const std::vector<LightweightString<wchar_t>>& answers,
                                      QuestionPanel::Answered answered, const Palette& palette = Palette());

// Every text that makeMessage or askQuestion was asked to show, oldest first (at most the
// last 256), so that a host's automation can tell what the user was told.
FXHOST_API std::vector<LightweightString<wchar_t>> messagesShown();
