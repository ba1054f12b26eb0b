#include "graph_tool/DDVideoEffectsList.h"

#include "host/render/EffectTemplateManager.h"

bool TrackTypeTemplateMatcher::match(const EffectTemplateSummary& summary) const {
  if (summary.trackType != trackType_) return false;
  return TemplateMatcher::match(summary);
}

void DDVideoEffectsList::getCategories(std::vector<EffectCategory>& out) {
  out.clear();
  TheEffectTemplateManager::Instance().getCategories(out, VideoTemplateMatcher(), 1);
}
