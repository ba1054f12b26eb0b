#pragma once
#include "host/FxHostApi.h"
#include "host/core/LightweightString.h"
#include "host/core/XY.h"

// The pixel size of a text in a font (empty: the default) at a point size
// (0: the widgets' size). Works before the screen exists, so that widgets can
// size themselves while they are being built.
FXHOST_API XY<int> measureText(const LightweightString<wchar_t>& text, const LightweightString<char>& font = {},
                               int pointSize = 0);
