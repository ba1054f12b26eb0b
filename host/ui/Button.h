#pragma once
#include "host/FxHostApi.h"
#include "host/ui/Glob.h"

// What clickable widgets share. A press of the left button is shown while
// the mouse stays on the widget and becomes a click when the button is
// released over it. A widget that is not active (Glob::setActive) is drawn
// greyed and leaves the mouse to its parent.
class FXHOST_API Button : public Glob {
public:
  Button(XY<int> size, LightweightString<char> message);

  // The text message a click sends to the parent.
  const LightweightString<char>& getMessage() const noexcept { return message_; }
  void setMessage(const LightweightString<char>& msg) { message_ = msg; }
  // Held down with the mouse on it.
  bool isPressed() const noexcept { return down_ && over_; }

  bool handleMouseEvent(const Event& e) override;

protected:
  // A click: by default sends the message to the parent.
  virtual void clicked();
  // The raised face of the widget, sunken while pressed.
  void drawFace(const PixelBox& box);
  // Ink for labels: the palette's text colour, faded when not active.
  Colour inkColour() const;

private:
  LightweightString<char> message_;
  bool down_ = false;
  bool over_ = false;
};
