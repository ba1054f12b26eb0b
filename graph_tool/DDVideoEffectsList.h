#pragma once
#include <vector>

#include "GrphToolApi.h"
#include "host/render/TemplateMatcher.h"
#include "host/ui/EffectsBrowser.h"

// Accepts the templates of one track type (1 video, 2 audio) that the base
// filter also accepts.
class GRPHTOOL_API TrackTypeTemplateMatcher : public TemplateMatcher {
public:
  explicit TrackTypeTemplateMatcher(int trackType) : trackType_(trackType) {}
  bool match(const EffectTemplateSummary& summary) const override;
  int trackType() const noexcept { return trackType_; }

private:
  int trackType_;
};

// The video templates.
class GRPHTOOL_API VideoTemplateMatcher : public TrackTypeTemplateMatcher {
public:
  VideoTemplateMatcher() : TrackTypeTemplateMatcher(1) {}
};

// The templates list down the left of the effect graph tool: the host's
// effect browser, offering only categories that hold video templates, from
// which templates are dragged onto the graph view.
class GRPHTOOL_API DDVideoEffectsList : public EffectsBrowser {
public:
  struct InitArgs : EffectsBrowser::InitArgs {
    using EffectsBrowser::InitArgs::InitArgs;
  };

  explicit DDVideoEffectsList(const InitArgs& args) : EffectsBrowser(args) {}
  void getCategories(std::vector<EffectCategory>& out) override;

private:
  [[maybe_unused]] int reserved_ = 0; // kept for the browser's owner; unused here
};
