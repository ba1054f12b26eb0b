#include "host/ui/ScrollBar.h"

#include <algorithm>
#include <charconv>
#include <cmath>

ScrollBar::ScrollBar(Orientation orientation, int length)
    : Glob(orientation == horizontal ? XY<int>{length, thickness()} : XY<int>{thickness(), length}),
      orientation_(orientation) {}

bool ScrollBar::setThumbPosition(double position, bool redrawNow) {
  position = std::clamp(position, 0.0, 1.0);
  if (position == position_) return false;
  position_ = position;
  if (redrawNow) redraw();
  return true;
}

bool ScrollBar::setThumbSize(double size, bool redrawNow) {
  size = std::clamp(size, 0.0, 1.0);
  if (size == size_) return false;
  size_ = size;
  if (redrawNow) redraw();
  return true;
}

int ScrollBar::thumbLength() const {
  const int l = length();
  return std::min(l, std::max(minThumbLength, static_cast<int>(std::lround(size_ * l))));
}

Glob::PixelBox ScrollBar::thumbBox() const {
  const int l = length(), t = thumbLength();
  const int travel = l - t;
  const double span = 1 - size_;
  const double fraction = span > 0 ? std::clamp(position_ / span, 0.0, 1.0) : 0.0;
  const int start = static_cast<int>(std::lround(fraction * travel));
  if (orientation_ == horizontal) return {start, 0, start + t, height()};
  return {0, height() - start - t, width(), height() - start};
}

void ScrollBar::notify(const char* what) {
  char number[32];
  const auto [end, ec] = std::to_chars(number, number + sizeof number, position_);
  sendMessage(LightweightString<char>(messagePrefix) + what + " " +
              std::string(number, ec == std::errc() ? end : number));
}

bool ScrollBar::parsePosition(const LightweightString<char>& msg, double& position) {
  if (!msg.startsWith(messagePrefix)) return false;
  const std::size_t blank = msg.find(' ', std::char_traits<char>::length(messagePrefix));
  if (blank == LightweightString<char>::npos) return false;
  const std::string_view number = msg.view().substr(blank + 1);
  double v = 0;
  const auto [end, ec] = std::from_chars(number.data(), number.data() + number.size(), v);
  if (ec != std::errc() || end != number.data() + number.size()) return false;
  position = v;
  return true;
}

bool ScrollBar::handleMouseEvent(const Event& e) {
  if (!isActive() || !mouse_left_event(e)) return false;
  const double span = std::max(0.0, 1 - size_);
  if (mouse_down_event(e)) {
    const PixelBox thumb = thumbBox();
    const int along = alongFromStart(e.position);
    const bool onThumb =
        e.position.x >= thumb.x0 && e.position.x < thumb.x1 && e.position.y >= thumb.y0 && e.position.y < thumb.y1;
    if (onThumb) {
      dragging_ = true;
      grabPosition_ = position_;
      grabAlong_ = along;
      redraw();
      return true;
    }
    // A press on the trough pages towards the mouse.
    const PixelBox t = thumb;
    const int thumbStart = orientation_ == horizontal ? t.x0 : height() - t.y1;
    const double page = along < thumbStart ? -size_ : size_;
    if (setThumbPosition(std::clamp(position_ + page, 0.0, span), true)) notify("page");
    return true;
  }
  if (!dragging_) return false;
  const int travel = length() - thumbLength();
  if (travel > 0) {
    const double moved = double(alongFromStart(e.position) - grabAlong_) * span / travel;
    if (setThumbPosition(std::clamp(grabPosition_ + moved, 0.0, span), true)) notify("drag");
  }
  if (mouse_up_event(e)) {
    dragging_ = false;
    redraw();
    notify("end");
  }
  return true;
}

void ScrollBar::draw() {
  const Palette& p = getPalette();
  drawRect({0, 0, width(), height()}, p.window(4));
  if (!isActive() || size_ >= 1) return;
  const PixelBox thumb = thumbBox();
  drawRect(thumb, dragging_ ? p.window(1) : p.window(2));
  drawFrame(thumb, p.window(3), 2);
}
