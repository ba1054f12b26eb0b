#pragma once
#include <cstdint>

#include "host/FxHostApi.h"

class Vob;

// Keeps the recorder's transfer state: told when a change is committed to
// a vob that is busy transferring, and asked to stand the recorder down
// before a node under it is removed.
class FXHOST_API TransitStatus {
public:
  static TransitStatus& manager();
  // A change was committed on a vob while its transfer flag was set.
  void notifyChange(Vob* vob);
  // Ends the transfer on the vob so that the record machine is idle.
  void standDown(Vob* vob);
  uint64_t changesSeen() const noexcept { return changes_; }

private:
  uint64_t changes_ = 0;
};
