#pragma once

// A colour as red, green and blue in 0..1 (and opacity).
struct Colour {
  double r = 0, g = 0, b = 0, a = 1;

  constexpr Colour() noexcept = default;
  constexpr Colour(double r_, double g_, double b_, double a_ = 1) noexcept : r(r_), g(g_), b(b_), a(a_) {}
  // Each channel scaled (lighter above 1, darker below), clamped to 0..1.
  constexpr Colour scaled(double k) const noexcept { return {clamp(r * k), clamp(g * k), clamp(b * k), a}; }
  friend constexpr bool operator==(const Colour&, const Colour&) = default;

private:
  static constexpr double clamp(double v) noexcept { return v < 0 ? 0 : v > 1 ? 1 : v; }
};
