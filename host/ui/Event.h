#pragma once
#include <cstdint>

#include "host/FxHostApi.h"
#include "host/core/XY.h"

// One input event, as a glob receives it. Positions are in the receiving
// glob's own bottom-up pixels.
struct FXHOST_API Event {
  enum Type { none, mouseDown, mouseUp, mouseMove, wheel, keyDown, keyUp, timer };
  enum Button { noButton = 0, left = 1, right = 2, middle = 3 };
  // Modifier bits of the keyboard state.
  static constexpr unsigned controlHeld = 0x1000000;
  static constexpr unsigned shiftHeld = 0x2000000;
  // Bits of the click state: 32, the right button was pressed while the
  // left was down (a chord); 64, the press began a zoom drag (shift held).
  static constexpr unsigned chordClick = 32;
  static constexpr unsigned zoomDrag = 64;
  // Codes of keys that are not text, as the window system gives them.
  static constexpr int keyBackspace = 8;
  static constexpr int keyTab = 9;
  static constexpr int keyReturn = 13;
  static constexpr int keyEscape = 27;
  static constexpr int keySpace = 32;
  static constexpr int keyDelete = 127;
  static constexpr int arrowRight = 0x4000004F;
  static constexpr int arrowLeft = 0x40000050;
  static constexpr int arrowDown = 0x40000051;
  static constexpr int arrowUp = 0x40000052;

  Type type = none;
  Button button = noButton;
  XY<int> position;   // in the glob
  XY<int> screen;     // on the screen
  XY<int> sinceDown;  // movement since the button went down
  int wheelSteps = 0; // positive away from the user
  int key = 0;        // a key code (Unicode for text keys)
  unsigned modifiers = 0;
  unsigned clickState = 0;
  uint64_t time = 0; // host clock, milliseconds

  bool isMouse() const { return type == mouseDown || type == mouseUp || type == mouseMove || type == wheel; }
};

FXHOST_API bool mouse_left_event(const Event& e);
FXHOST_API bool mouse_right_event(const Event& e);
FXHOST_API bool mouse_up_event(const Event& e);
FXHOST_API bool mouse_down_event(const Event& e);
FXHOST_API bool mouse_move_event(const Event& e);
// Whether the mouse moved far enough since the press to be a drag, not a
// click: more than 2 pixels.
FXHOST_API bool isMouseMoveSignificant(const Event& e);
// The mouse's last known screen position.
FXHOST_API int mouse_get_current_x();
FXHOST_API int mouse_get_current_y();
// The keyboard's modifier bits now.
FXHOST_API unsigned keyboardModifiers();
