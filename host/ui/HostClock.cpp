#include "host/ui/HostClock.h"

#include <atomic>
#include <chrono>

namespace {
std::atomic<bool> byHand{false};
std::atomic<uint64_t> handTime{0};
} // namespace

uint64_t HostClock::now() {
  if (byHand.load()) return handTime.load();
  using namespace std::chrono;
  return static_cast<uint64_t>(duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

void HostClock::driveByHand(uint64_t start) {
  handTime.store(start);
  byHand.store(true);
}

bool HostClock::drivenByHand() { return byHand.load(); }

void HostClock::advance(uint64_t milliseconds) { handTime.fetch_add(milliseconds); }

uint64_t msecsNow() { return HostClock::now(); }
