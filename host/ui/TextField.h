#pragma once
#include "host/FxHostApi.h"
#include "host/ui/Glob.h"

// One line of text to type: a press gives it the keyboard; typing edits it,
// Backspace takes the last character off, Return sends its message to the
// parent (which reads text()), Escape puts back the text it had.
class FXHOST_API TextField : public Glob {
public:
  static constexpr std::size_t longest = 64;

  TextField(LightweightString<wchar_t> text, LightweightString<char> message, XY<int> size);

  const LightweightString<wchar_t>& text() const noexcept { return text_; }
  // Text from outside: shown unless the user is typing.
  void setText(const LightweightString<wchar_t>& text);
  bool editing() const noexcept { return editing_; }

  bool handleMouseEvent(const Event& e) override;
  bool handleKeyEvent(const Event& e) override;
  void draw() override;
  LightweightString<char> idstring() const override { return "TextField"; }

private:
  LightweightString<wchar_t> text_, before_;
  LightweightString<char> message_;
  bool editing_ = false;
};
