#pragma once
#include "host/FxHostApi.h"
#include "host/ui/Glob.h"

// A value between two ends as a knob on a bar: a press puts the knob at the
// mouse and a drag moves it; the release sends the slider's message to its
// parent, which reads value(). Nothing is sent for a press that moved
// nothing.
class FXHOST_API Slider : public Glob {
public:
  Slider(double lo, double hi, double value, LightweightString<char> message, XY<int> size);

  double value() const noexcept { return value_; }
  double lo() const noexcept { return lo_; }
  double hi() const noexcept { return hi_; }
  // A new range and value from outside; sends nothing.
  void set(double lo, double hi, double value);

  bool handleMouseEvent(const Event& e) override;
  void draw() override;
  LightweightString<char> idstring() const override { return "Slider"; }

  // The value at a pixel across the bar, and the pixel of a value.
  double valueAt(int x) const;
  int pixelOf(double value) const;

private:
  double lo_, hi_, value_;
  double pressedAt_ = 0;
  bool down_ = false;
  LightweightString<char> message_;
};
