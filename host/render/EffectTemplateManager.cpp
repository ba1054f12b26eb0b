#include "host/render/EffectTemplateManager.h"

#include <algorithm>

template class Loki::SingletonHolder<EffectTemplateManager, Loki::CreateUsingNew, Loki::DeletableSingleton,
                                     Ux::ThreadSafe>;
template class Loki::DeletableSingleton<EffectTemplateManager>;

namespace {

constexpr int video = 1;
constexpr int audio = 2;

EffectTemplateSummary summary(const wchar_t* name, const char* tag, const wchar_t* category, int trackType,
                              std::vector<LightweightString<wchar_t>> inputs) {
  EffectTemplateSummary s;
  s.name = name;
  s.tagTypeId = tag;
  s.category = category;
  s.trackType = trackType;
  s.numInputs = static_cast<int>(inputs.size());
  s.inputNames = std::move(inputs);
  return s;
}

// The host's own templates: those its stills renderer and audio engine know.
std::vector<EffectTemplateSummary> builtIn() {
  return {
      summary(L"Dissolve", "mix", L"Mixes", video, {L"A", L"B"}),
      summary(L"Wipe", "wipe", L"Mixes", video, {L"A", L"B"}),
      summary(L"Picture in picture", "pip", L"Compositing", video, {L"Background", L"Foreground"}),
      summary(L"Colour correction", "colourcorrect", L"Colour", video, {L"Input"}),
      summary(L"Flat colour", "PixShader:Mattes:flatcol.fx", L"Mattes", video, {}),
      summary(L"Gradient", "PixShader:Mattes:gradients.fx", L"Mattes", video, {}),
      summary(L"Blur", "PixShader:Blur:gaussian.fx", L"Blurs", video, {L"Input"}),
      summary(L"EQ", "\\ZMV\\AUD\\FX\\EQ", L"Audio filters", audio, {L"Input"}),
      summary(L"Crossfade", "\\ZMV\\AUD\\FX\\XF", L"Audio mixes", audio, {L"A", L"B"}),
      summary(L"Compressor", "\\ZMV\\AUD\\FX\\COMP", L"Audio dynamics", audio, {L"Input"}),
      summary(L"Reverb", "\\ZMV\\AUD\\FX\\REV", L"Audio filters", audio, {L"Input"}),
      summary(L"Gain", "\\ZMV\\AUD\\FX\\GAIN", L"Audio dynamics", audio, {L"Input"}),
      summary(L"Pan", "\\ZMV\\AUD\\FX\\PAN", L"Audio mixes", audio, {L"Input"}),
  };
}

} // namespace

EffectTemplateManager& EffectTemplateManager::instance() { return TheEffectTemplateManager::Instance(); }

void EffectTemplateManager::release() { Loki::DeletableSingleton<EffectTemplateManager>::GracefulDelete(); }

EffectTemplateManager::EffectTemplateManager() {
  for (const EffectTemplateSummary& s : builtIn()) addTemplate(s);
}

EffectTemplateManager::~EffectTemplateManager() = default;

void EffectTemplateManager::getCategories(std::vector<EffectCategory>& out, const TemplateMatcher& matcher,
                                          int flags) const {
  std::lock_guard lock(mutex_);
  out.clear();
  for (const EffectCategory& c : catalogue_) {
    EffectCategory shown{c.name, {}};
    if (!matcher.isCategoryAllowed(shown)) continue;
    for (const EffectTemplateSummary& s : c.templates)
      if (matcher.match(s)) shown.templates.push_back(s);
    if ((flags & withTemplatesOnly) && shown.templates.empty()) continue;
    out.push_back(std::move(shown));
  }
}

std::vector<EffectTemplateSummary> EffectTemplateManager::getTemplates(const LightweightString<wchar_t>& category,
                                                                       const TemplateMatcher& matcher) const {
  std::lock_guard lock(mutex_);
  std::vector<EffectTemplateSummary> out;
  for (const EffectCategory& c : catalogue_) {
    if (c.name != category || !matcher.isCategoryAllowed(EffectCategory{c.name, {}})) continue;
    for (const EffectTemplateSummary& s : c.templates)
      if (matcher.match(s)) out.push_back(s);
  }
  return out;
}

bool EffectTemplateManager::findTemplate(const LightweightString<char>& tagTypeId, EffectTemplateSummary& out) const {
  std::lock_guard lock(mutex_);
  for (const EffectCategory& c : catalogue_)
    for (const EffectTemplateSummary& s : c.templates)
      if (s.tagTypeId == tagTypeId) {
        out = s;
        return true;
      }
  return false;
}

void EffectTemplateManager::addTemplate(const EffectTemplateSummary& summary) {
  std::lock_guard lock(mutex_);
  for (EffectCategory& c : catalogue_)
    for (EffectTemplateSummary& s : c.templates)
      if (s.tagTypeId == summary.tagTypeId && s.category == summary.category) {
        s = summary;
        return;
      }
  // A template that moves to another category leaves its old one.
  for (EffectCategory& c : catalogue_)
    std::erase_if(c.templates, [&](const EffectTemplateSummary& s) { return s.tagTypeId == summary.tagTypeId; });
  std::erase_if(catalogue_, [](const EffectCategory& c) { return c.templates.empty(); });
  auto it = std::find_if(catalogue_.begin(), catalogue_.end(),
                         [&](const EffectCategory& c) { return c.name == summary.category; });
  if (it == catalogue_.end()) it = catalogue_.insert(catalogue_.end(), EffectCategory{summary.category, {}});
  it->templates.push_back(summary);
}

std::size_t EffectTemplateManager::templateCount() const {
  std::lock_guard lock(mutex_);
  std::size_t n = 0;
  for (const EffectCategory& c : catalogue_) n += c.templates.size();
  return n;
}
