#include "host/ui/Slider.h"

#include <algorithm>
#include <cmath>

#include "host/ui/Event.h"

namespace {
constexpr int inset = 6; // the knob's half width: the ends stay reachable
}

Slider::Slider(double lo, double hi, double value, LightweightString<char> message, XY<int> size)
    : Glob(size), message_(std::move(message)) {
  set(lo, hi, value);
}

void Slider::set(double lo, double hi, double value) {
  if (!std::isfinite(lo) || !std::isfinite(hi) || !(hi > lo)) lo = 0, hi = 1;
  lo_ = lo;
  hi_ = hi;
  value_ = std::isfinite(value) ? std::clamp(value, lo_, hi_) : lo_;
  redraw();
}

double Slider::valueAt(int x) const {
  const int span = std::max(1, width() - 2 * inset);
  return lo_ + (hi_ - lo_) * std::clamp(double(x - inset) / span, 0.0, 1.0);
}

int Slider::pixelOf(double value) const {
  const int span = std::max(1, width() - 2 * inset);
  return inset + static_cast<int>(std::lround((value - lo_) / (hi_ - lo_) * span));
}

bool Slider::handleMouseEvent(const Event& e) {
  if (!mouse_left_event(e)) return false;
  if (mouse_down_event(e)) {
    down_ = true;
    pressedAt_ = value_;
  }
  if (!down_) return false;
  value_ = valueAt(e.position.x);
  redraw();
  if (mouse_up_event(e)) {
    down_ = false;
    if (value_ != pressedAt_) sendMessage(message_);
  }
  return true;
}

void Slider::draw() {
  const Palette& p = getPalette();
  drawRect({0, 0, width(), height()}, p.window(2));
  const int mid = height() / 2;
  drawRect({inset, mid - 2, width() - inset, mid + 2}, p.window(5));
  const int x = pixelOf(value_);
  drawRect({inset, mid - 2, x, mid + 2}, Colour(0.25, 0.45, 0.8));
  drawRect({x - inset + 1, 2, x + inset - 1, height() - 2}, down_ ? Colour(0.25, 0.45, 0.8) : p.window(1));
  drawFrame({x - inset + 1, 2, x + inset - 1, height() - 2}, p.window(7), 1);
}
