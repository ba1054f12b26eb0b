#pragma once
#include <cstdint>

#include "host/FxHostApi.h"

// The host clock, in milliseconds. It follows the system's steady clock, or,
// in headless runs, is driven by hand so that timer-driven behaviour (fades,
// auto-scroll) is deterministic.
class FXHOST_API HostClock {
public:
  static uint64_t now();
  // Switches to the hand-driven clock, starting at `start`.
  static void driveByHand(uint64_t start = 0);
  static bool drivenByHand();
  // Moves the hand-driven clock on.
  static void advance(uint64_t milliseconds);
};

FXHOST_API uint64_t msecsNow();
