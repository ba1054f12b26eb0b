#pragma once
#include "host/FxHostApi.h"
#include "host/core/Colour.h"

// The colours the editor gives to kinds of strip (and graph node) so that a
// kind reads the same everywhere.
class FXHOST_API StripColourManager {
public:
  enum StripType { effect, material, image, alias, matte, audio };
  static Colour getTypeColour(StripType type);
};

// The colour of node titles on active nodes.
FXHOST_API Colour nodeTextColour();
