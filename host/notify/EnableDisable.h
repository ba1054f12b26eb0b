#pragma once
#include "host/FxHostApi.h"

// A disable count: disabled while above zero. Enabling never takes it below zero.
class FXHOST_API EnableDisable {
public:
  void disable() noexcept { ++count_; }
  void enable() noexcept {
    if (count_ > 0) --count_;
  }
  bool isEnabled() const noexcept { return count_ < 1; }
  int disableCount() const noexcept { return count_; }

private:
  int count_ = 0;
};
