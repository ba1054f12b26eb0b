#pragma once
#include "host/FxHostApi.h"
#include "host/edit/EditGraphIterator.h"
#include "host/ui/MenuItem.h"

// The host's menu entries for an item of an effect graph. Each entry's
// message is a command prefix ("fxutr", "render_effect", "popOut"), the
// sub-command written directly after it, one blank, then the text of the
// item's EditGraphIteratorState; whoever shows the menu handles them.
struct FXHOST_API EffectMenuItems {
  // For an effect: "fxutrparams", "fxutrremove_xfade" (a mix or a wipe
  // heading a video channel), "fxutrtile", "fxutrremove_utr",
  // "fxutrcycle_inputs" (two or more inputs), "fxutrimport_render". For every
  // item: "render_effect", "popOuttile", "popOutlog". None for an invalid
  // iterator.
  static MenuItems getItemsForComponent(const EditGraphIterator& at);

  // The message of a command for a position: prefix + sub-command + " " + state.
  static LightweightString<char> commandFor(const char* prefix, const char* subCommand, const EditGraphIterator& at);
};
