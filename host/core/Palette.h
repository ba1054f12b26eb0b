#pragma once
#include "host/FxHostApi.h"
#include "host/core/Colour.h"

// The shades of one colour for drawing a widget: window(0) is the lightest,
// window(3) the colour itself, window(7) the darkest. Frames and outlines use
// the dark shades, highlights the light ones.
class FXHOST_API Palette {
public:
  static constexpr int shadeCount = 8;

  Palette() : Palette(schemeWindow()) {}
  explicit Palette(const Colour& base) : base_(base) {}

  Colour window(int shade) const;
  const Colour& base() const noexcept { return base_; }
  // Text on this palette's window colour: dark on light colours, light on dark.
  Colour text() const;

  // The colour scheme's panel colour, the base of the default palette.
  static Colour schemeWindow() { return Colour(0.78, 0.79, 0.81); }

private:
  Colour base_;
};

// A colour as the renderer takes it: red, green, blue and alpha in 0..1.
struct NormalisedRGB {
  double r = 0, g = 0, b = 0, a = 1;
  friend constexpr bool operator==(const NormalisedRGB&, const NormalisedRGB&) = default;
};
inline NormalisedRGB fromColour(const Colour& c) { return {c.r, c.g, c.b, c.a}; }
