#include "host/ui/TextField.h"

#include <string>

#include "host/ui/Event.h"

TextField::TextField(LightweightString<wchar_t> text, LightweightString<char> message, XY<int> size)
    : Glob(size), text_(std::move(text)), message_(std::move(message)) {}

void TextField::setText(const LightweightString<wchar_t>& text) {
  if (editing_ || text == text_) return;
  text_ = text;
  redraw();
}

bool TextField::handleMouseEvent(const Event& e) {
  if (!mouse_left_event(e)) return false;
  if (mouse_down_event(e) && !editing_) {
    editing_ = true;
    before_ = text_;
    redraw();
  }
  return true;
}

bool TextField::handleKeyEvent(const Event& e) {
  if (!editing_ || e.type != Event::keyDown) return false;
  std::wstring text(text_.str());
  switch (e.key) {
  case Event::keyReturn:
  case Event::keyTab:
    editing_ = false;
    redraw();
    sendMessage(message_);
    return true;
  case Event::keyEscape:
    editing_ = false;
    text_ = before_;
    redraw();
    return true;
  case Event::keyBackspace:
    if (!text.empty()) text.pop_back();
    break;
  default:
    if (e.key < 32 || e.key == 127 || e.key >= 0xD800 || text.size() >= longest) return true;
    text += static_cast<wchar_t>(e.key);
  }
  text_ = LightweightString<wchar_t>(text);
  redraw();
  return true;
}

void TextField::draw() {
  const Palette& p = getPalette();
  drawRect({0, 0, width(), height()}, editing_ ? Colour(1, 1, 1) : p.window(2));
  drawFrame({0, 0, width(), height()}, editing_ ? Colour(0.25, 0.45, 0.8) : p.window(6), 1);
  LightweightString<wchar_t> shown = text_;
  if (editing_) shown += L"_";
  drawText({4, 0, width() - 4, height()}, shown, editing_ ? Colour(0, 0, 0) : p.text(), {}, 0);
}
