#include "host/core/Palette.h"

Colour Palette::window(int shade) const {
  static constexpr double factor[shadeCount] = {1.3, 1.2, 1.1, 1.0, 0.86, 0.72, 0.55, 0.38};
  if (shade < 0) shade = 0;
  if (shade >= shadeCount) shade = shadeCount - 1;
  const double k = factor[shade];
  if (k <= 1) return base_.scaled(k);
  // Lighter shades move towards white so that dark colours lighten too.
  const double t = k - 1;
  return Colour(base_.r + (1 - base_.r) * t, base_.g + (1 - base_.g) * t, base_.b + (1 - base_.b) * t, base_.a);
}

Colour Palette::text() const {
  const double luma = 0.299 * base_.r + 0.587 * base_.g + 0.114 * base_.b;
  return luma > 0.55 ? Colour(0.08, 0.08, 0.1) : Colour(0.96, 0.96, 0.96);
}
