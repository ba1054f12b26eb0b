#pragma once
#include <vector>

#include "host/core/LightweightString.h"

// What the editor knows of an effect template before it is used: enough to
// list it, filter it and make an effect from it.
struct EffectTemplateSummary {
  LightweightString<wchar_t> name;
  // The tag type id of the effects made from it ("mix", "PixShader:Blur:gaussian.fx").
  LightweightString<char> tagTypeId;
  LightweightString<wchar_t> category;
  int trackType = 1; // 1 video, 2 audio
  int numInputs = 0;
  std::vector<LightweightString<wchar_t>> inputNames; // one per input
};
