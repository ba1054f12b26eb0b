#pragma once
#include "GrphToolApi.h"
#include "host/core/LightweightString.h"

namespace VidRouting {

// The two layout orientations of the graph.
struct GRPHTOOL_API Orientations {
  // Stored as int, so a value read from elsewhere that is neither is still
  // an Orientation and asString can answer it.
  enum Orientation : int {
    LeftToRight = 0, // inputs on the left, outputs on the right; trees stacked downwards
    BottomToTop = 1, // inputs below, outputs above; trees side by side
  };
  // "LeftToRight", "BottomToTop", or empty text for any other value.
  static LightweightString<char> asString(Orientation o);
  // Exact, case-sensitive; anything else is LeftToRight.
  static Orientation fromString(const LightweightString<char>& text);
};

} // namespace VidRouting
