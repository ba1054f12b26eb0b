#pragma once
#include <mutex>
#include <vector>

#include <loki/Singleton.h>

#include "host/FxHostApi.h"
#include "host/core/ThreadSafe.h"
#include "host/render/EffectCategory.h"
#include "host/render/TemplateMatcher.h"

// The catalogue of effect templates, video and audio, in named categories.
// One per process (TheEffectTemplateManager); it starts with the host's own
// templates and can be given more. Its methods may be called from any thread.
class FXHOST_API EffectTemplateManager {
public:
  // Flags of getCategories.
  enum { withTemplatesOnly = 1 }; // leave out categories where nothing matched

  // The process-wide manager, made on first use.
  static EffectTemplateManager& instance();
  // Deletes it; the next instance() makes a fresh one.
  static void release();

  // The categories that the matcher allows, in catalogue order, each with the
  // templates that it matches.
  void getCategories(std::vector<EffectCategory>& out, const TemplateMatcher& matcher, int flags) const;
  // The templates of one category that the matcher matches.
  std::vector<EffectTemplateSummary> getTemplates(const LightweightString<wchar_t>& category,
                                                  const TemplateMatcher& matcher) const;
  // The template that makes effects of a tag type id; false when there is none.
  bool findTemplate(const LightweightString<char>& tagTypeId, EffectTemplateSummary& out) const;
  // Adds a template at the end of its category (a new category goes last);
  // one with the same tag type id is replaced in place.
  void addTemplate(const EffectTemplateSummary& summary);
  std::size_t templateCount() const;

private:
  friend struct Loki::CreateUsingNew<EffectTemplateManager>;
  EffectTemplateManager();
  ~EffectTemplateManager();
  EffectTemplateManager(const EffectTemplateManager&) = delete;
  EffectTemplateManager& operator=(const EffectTemplateManager&) = delete;

  mutable std::mutex mutex_;
  std::vector<EffectCategory> catalogue_; // every template, by category
};

using TheEffectTemplateManager =
    Loki::SingletonHolder<EffectTemplateManager, Loki::CreateUsingNew, Loki::DeletableSingleton, Ux::ThreadSafe>;
// The holder's state lives in fxhost alone, so that every library that asks
// gets the same manager.
extern template class FXHOST_API
    Loki::SingletonHolder<EffectTemplateManager, Loki::CreateUsingNew, Loki::DeletableSingleton, Ux::ThreadSafe>;
extern template class FXHOST_API Loki::DeletableSingleton<EffectTemplateManager>;
