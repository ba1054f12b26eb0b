#pragma once
#include <algorithm>

namespace Ux {

// Coordinate conventions of a box. Host pixels are bottom-up: y0 is the
// bottom edge and y1 the top edge.
struct BottomUpTraits {};

template <class T, class Traits = BottomUpTraits>
struct Box {
  T x0{}, y0{}, x1{}, y1{};

  constexpr Box() noexcept = default;
  constexpr Box(T l, T b, T r, T t) noexcept : x0(l), y0(b), x1(r), y1(t) {}

  constexpr T width() const noexcept { return x1 > x0 ? x1 - x0 : x0 - x1; }
  constexpr T height() const noexcept { return y1 > y0 ? y1 - y0 : y0 - y1; }
  constexpr bool isEmpty() const noexcept { return x0 == x1 || y0 == y1; }
  // Edges included.
  constexpr bool contains(T x, T y) const noexcept {
    return x >= std::min(x0, x1) && x <= std::max(x0, x1) && y >= std::min(y0, y1) && y <= std::max(y0, y1);
  }
  friend constexpr bool operator==(const Box&, const Box&) = default;
};

} // namespace Ux
