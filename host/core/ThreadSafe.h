#pragma once
#include <atomic>
#include <mutex>

namespace Ux {

// A threading policy for Loki's SingletonHolder: creation is serialised by
// one std::mutex per host class, and the holder's instance pointer is an
// atomic so that the unlocked first check in SingletonHolder::Instance() is
// not a data race. Loki's own lockable models do not build with current
// compilers in threaded mode; this one stands in for them.
//
// The second parameter is the mutex policy that SingletonHolder passes on;
// it is ignored, the lock is always a std::mutex.
template <class Host, class = void>
class ThreadSafe {
public:
  using VolatileType = std::atomic<Host>;

  // Holds the class-wide mutex for its scope. Not recursive: code run under
  // it (a singleton's constructor) must not ask for the same singleton.
  class Lock {
  public:
    Lock() : guard_(mutex()) {}
    explicit Lock(const ThreadSafe&) : guard_(mutex()) {}
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

  private:
    std::lock_guard<std::mutex> guard_;
  };

private:
  static std::mutex& mutex() {
    static std::mutex m;
    return m;
  }
};

} // namespace Ux
