#pragma once

// A point or a size. XY<double> is a graph-space point (graph units, y up);
// XY<int> is a pixel position (bottom-up pixels).
template <class T>
struct XY {
  T x{};
  T y{};

  constexpr XY() noexcept = default;
  constexpr XY(T x_, T y_) noexcept : x(x_), y(y_) {}

  friend constexpr bool operator==(const XY&, const XY&) = default;
  constexpr XY operator+(const XY& o) const noexcept { return {x + o.x, y + o.y}; }
  constexpr XY operator-(const XY& o) const noexcept { return {x - o.x, y - o.y}; }
  constexpr XY operator*(T k) const noexcept { return {x * k, y * k}; }
};
