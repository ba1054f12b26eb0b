#pragma once
#include "host/FxHostApi.h"
#include "host/ui/Glob.h"

// A horizontal or vertical scroll bar. Its thumb has a position and a size,
// both fractions of the whole scrolled extent: the size is the part in view,
// the position where that part starts, from the left (horizontal) or from
// the top (vertical), so it runs from 0 to 1 - size.
//
// The user drags the thumb, or presses on the trough beside it to move it by
// one thumb size (a page) towards the mouse. Each change goes to the parent
// as the text message "ScrollBar <what> <position>": what is "drag" while the
// thumb is dragged, "end" when the drag ends, "page" for a trough press; the
// position is written so that it reads back exactly (parsePosition).
class FXHOST_API ScrollBar : public Glob {
public:
  enum Orientation { horizontal, vertical };
  static constexpr const char* messagePrefix = "ScrollBar ";

  // The width of a vertical bar and the height of a horizontal one.
  static constexpr int thickness() { return 12; }
  // The least thumb length in pixels, so that a small thumb can be grabbed.
  static constexpr int minThumbLength = 10;

  // `length` runs along the bar.
  ScrollBar(Orientation orientation, int length);

  Orientation orientation() const noexcept { return orientation_; }
  double getThumbPosition() const noexcept { return position_; }
  double getThumbSize() const noexcept { return size_; }
  // Each clamps to 0..1 and returns whether the value changed; with
  // `redrawNow` a change is drawn at once.
  bool setThumbPosition(double position, bool redrawNow);
  bool setThumbSize(double size, bool redrawNow);
  bool isThumbBeingDragged() const noexcept { return dragging_; }
  // The thumb, in the bar's pixels.
  PixelBox thumbBox() const;

  // The position in a message from a scroll bar; false when it is not one.
  static bool parsePosition(const LightweightString<char>& msg, double& position);

  bool handleMouseEvent(const Event& e) override;
  void draw() override;
  LightweightString<char> idstring() const override { return "ScrollBar"; }

private:
  int length() const { return orientation_ == horizontal ? width() : height(); }
  // Pixels from the start of the bar (left or top) to a point.
  int alongFromStart(XY<int> p) const { return orientation_ == horizontal ? p.x : height() - p.y; }
  int thumbLength() const;
  void notify(const char* what);

  Orientation orientation_;
  double position_ = 0;
  double size_ = 1;
  bool dragging_ = false;
  double grabPosition_ = 0; // the position when the drag began
  int grabAlong_ = 0;       // the mouse then, pixels from the start
};
