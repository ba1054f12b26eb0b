#pragma once
#include "host/FxHostApi.h"
#include "host/render/EffectCategory.h"
#include "host/render/EffectTemplateSummary.h"

// A filter over effect templates, for those who list them. The base accepts
// every template and every category; subclasses narrow it.
class FXHOST_API TemplateMatcher {
public:
  TemplateMatcher() = default;
  TemplateMatcher(const TemplateMatcher&) = default;
  TemplateMatcher& operator=(const TemplateMatcher&) = default;
  virtual ~TemplateMatcher();

  virtual bool match(const EffectTemplateSummary& summary) const;
  // Asked with the category's name before its templates are matched.
  virtual bool isCategoryAllowed(const EffectCategory& category) const;
};
