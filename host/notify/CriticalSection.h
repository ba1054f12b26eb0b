#pragma once
#include <atomic>
#include <cstdint>
#include <mutex>

#include "host/FxHostApi.h"

// A re-entrant lock. It counts how often it has been entered, so that a
// caller can tell whether an operation took it at all.
class FXHOST_API CriticalSection {
public:
  void enter() {
    mutex_.lock();
    entries_.fetch_add(1, std::memory_order_relaxed);
  }
  void leave() { mutex_.unlock(); }
  uint64_t timesEntered() const noexcept { return entries_.load(std::memory_order_relaxed); }

  class Lock {
  public:
    explicit Lock(CriticalSection& cs) : cs_(cs) { cs_.enter(); }
    ~Lock() { cs_.leave(); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

  private:
    CriticalSection& cs_;
  };

private:
  std::recursive_mutex mutex_;
  std::atomic<uint64_t> entries_{0};
};
