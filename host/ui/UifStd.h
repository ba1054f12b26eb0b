#pragma once
#include "host/FxHostApi.h"
#include "host/core/LightweightString.h"

// The toolkit's standard measures, in pixels.
struct FXHOST_API UifStd {
  static constexpr int getRowHeight() { return 22; }
  static constexpr int getWidgetGap() { return 4; }
  static constexpr int getIndentWidth() { return 8; }
  // The font of panel titles.
  static LightweightString<char> getTitleFont() { return "Sans Bold"; }
};

// The name of the toolkit's default font; index 0 is the plain face.
FXHOST_API LightweightString<char> getDefaultFontName(int index);
