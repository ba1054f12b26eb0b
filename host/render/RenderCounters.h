#pragma once
#include <atomic>

#include "host/FxHostApi.h"

namespace Render {

// Work done since the process started, for the checks of what the caches
// save; counted on whichever thread does the work.
struct Counters {
  std::atomic<unsigned> stillsRendered{0}; // stills made from their plans
  std::atomic<unsigned> picturesAsked{0};  // pictures asked of the image cache
  std::atomic<unsigned> filesRead{0};      // picture files decoded from disk
};

FXHOST_API Counters& counters();

} // namespace Render
