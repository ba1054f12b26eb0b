#include "host/render/TemplateMatcher.h"

TemplateMatcher::~TemplateMatcher() = default;

bool TemplateMatcher::match(const EffectTemplateSummary&) const { return true; }

bool TemplateMatcher::isCategoryAllowed(const EffectCategory&) const { return true; }
