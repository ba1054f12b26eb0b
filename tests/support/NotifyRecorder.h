#pragma once
#include <string>
#include <vector>

#include "host/notify/Notifier.h"

namespace testsupport {

// Records the messages a notifier sends, by type name and text.
class NotifyRecorder {
public:
  struct Heard {
    std::string type;
    std::string text;
  };
  // Listens to every message type.
  explicit NotifyRecorder(Notifier& n) {
    handle_ = n.registerInternal([this](const NotifyMsg& m) {
      heard.push_back({NotifyMsgTypeDictionary::instance().nameOf(m.type).str(), m.text.str()});
      return 0;
    });
  }
  std::size_t count(const std::string& type) const {
    std::size_t n = 0;
    for (const auto& h : heard) n += h.type == type;
    return n;
  }
  std::vector<Heard> heard;

private:
  SubscriptionHandle handle_;
};

} // namespace testsupport
