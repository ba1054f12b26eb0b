#pragma once
#include <vector>

#include "host/core/LightweightString.h"
#include "host/render/EffectTemplateSummary.h"

// A group of effect templates as the effect template manager reports it for
// a TemplateMatcher: the category's name and those of its templates that the
// matcher accepted, in catalogue order.
struct EffectCategory {
  LightweightString<wchar_t> name;
  std::vector<EffectTemplateSummary> templates;
};
