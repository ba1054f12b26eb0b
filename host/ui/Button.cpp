#include "host/ui/Button.h"

Button::Button(XY<int> size, LightweightString<char> message) : Glob(size), message_(std::move(message)) {}

bool Button::handleMouseEvent(const Event& e) {
  if (!isActive() || !mouse_left_event(e)) {
    // A button greyed in the middle of a press forgets it.
    if (down_ && !isActive()) down_ = false;
    return false;
  }
  const bool inside = e.position.x >= 0 && e.position.y >= 0 && e.position.x < width() && e.position.y < height();
  if (mouse_down_event(e)) {
    down_ = over_ = true;
    redraw();
    return true;
  }
  if (!down_) return false;
  if (mouse_move_event(e)) {
    if (inside != over_) {
      over_ = inside;
      redraw();
    }
    return true;
  }
  if (mouse_up_event(e)) {
    down_ = over_ = false;
    redraw();
    if (inside) clicked();
    return true;
  }
  return false;
}

void Button::clicked() { sendMessage(message_); }

void Button::drawFace(const PixelBox& box) {
  const Palette& p = getPalette();
  if (isPressed()) {
    drawRect(box, p.window(4));
    drawFrame(box, p.window(6), 1);
  } else {
    drawRect(box, p.window(2));
    drawFrame(box, p.window(3), 2);
  }
}

Colour Button::inkColour() const {
  const Colour ink = getPalette().text();
  if (isActive()) return ink;
  const Colour back = getPalette().window(2);
  return Colour((ink.r + 2 * back.r) / 3, (ink.g + 2 * back.g) / 3, (ink.b + 2 * back.b) / 3);
}
