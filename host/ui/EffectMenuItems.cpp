#include "host/ui/EffectMenuItems.h"

#include "host/config/Resources.h"
#include "host/edit/EffectInstance.h"

namespace {
// Whether the node is a transition the transitions editor can take out: a
// two-input mix or wipe at the head of a video channel.
bool headsChannelAsTransition(const EditGraphIterator& at, const EffectInstance& effect) {
  if (at.getDepth() != 0 || effect.getNumInputs() != 2 || effect.getTrackType() != TrackType::video) return false;
  if (at.getChanIndex(-2) < 0) return false;
  const LightweightString<char> tag = effect.tagTypeId();
  return tag == "mix" || tag == "wipe";
}
} // namespace

LightweightString<char> EffectMenuItems::commandFor(const char* prefix, const char* subCommand,
                                                    const EditGraphIterator& at) {
  return LightweightString<char>(prefix) + subCommand + " " + at.getState().asString();
}

MenuItems EffectMenuItems::getItemsForComponent(const EditGraphIterator& at) {
  MenuItems items;
  if (!at.isValid()) return items;
  auto add = [&](int label, const char* prefix, const char* subCommand) {
    items.emplace_back(resourceStrW(label), commandFor(prefix, subCommand, at));
  };
  if (auto* effect = dynamic_cast<EffectInstance*>(at.getNode().get())) {
    add(13000, "fxutr", "params");
    if (headsChannelAsTransition(at, *effect)) add(13001, "fxutr", "remove_xfade");
    add(13002, "fxutr", "tile");
    add(13003, "fxutr", "remove_utr");
    if (effect->getNumInputs() >= 2) add(13004, "fxutr", "cycle_inputs");
    add(13005, "fxutr", "import_render");
  }
  add(13006, "render_effect", "");
  add(13007, "popOut", "tile");
  add(13008, "popOut", "log");
  return items;
}
