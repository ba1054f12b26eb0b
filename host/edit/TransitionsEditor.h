#pragma once
#include "host/FxHostApi.h"
#include "host/edit/Vob.h"

// Edits the transitions of the edit a vob shows.
class FXHOST_API TransitionsEditor {
public:
  explicit TransitionsEditor(Vob* vob) : vob_(vob) {}
  // Removes the two-input transition (a mix or a wipe) heading a video
  // channel's graph at a time, leaving what fed its input 0 in its place.
  // Returns false when there is none; tells everyone of the change.
  bool removeVideoTransition(int channel, double time);

private:
  Vob* vob_;
};
