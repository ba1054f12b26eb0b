#pragma once
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/FxHostApi.h"
#include "host/core/LightweightString.h"

// Notification message type ids, interned by name once per process. Id 0
// stands for "every type" in a subscription.
using NotifyMsgType = int;
constexpr NotifyMsgType anyNotifyMsgType = 0;

class FXHOST_API NotifyMsgTypeDictionary {
public:
  static NotifyMsgTypeDictionary& instance();

  // The id of the name, making one on first use. Ids start at 1.
  NotifyMsgType intern(const LightweightString<char>& name);
  // The name of an id; empty for an unknown id.
  LightweightString<char> nameOf(NotifyMsgType id) const;

  // Sent by a notifier as it is destroyed, so that subscribers forget it.
  static NotifyMsgType objectDestroyedMsgType();

private:
  NotifyMsgTypeDictionary() = default;
  mutable std::mutex mutex_;
  std::unordered_map<std::string, NotifyMsgType> ids_;
  std::vector<std::string> names_{std::string()};
};
