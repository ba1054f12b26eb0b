#include "host/notify/NotifyMsgTypeDictionary.h"

NotifyMsgTypeDictionary& NotifyMsgTypeDictionary::instance() {
  static NotifyMsgTypeDictionary dictionary;
  return dictionary;
}

NotifyMsgType NotifyMsgTypeDictionary::intern(const LightweightString<char>& name) {
  std::lock_guard lock(mutex_);
  auto [it, added] = ids_.try_emplace(name.str(), static_cast<NotifyMsgType>(names_.size()));
  if (added) names_.push_back(name.str());
  return it->second;
}

LightweightString<char> NotifyMsgTypeDictionary::nameOf(NotifyMsgType id) const {
  std::lock_guard lock(mutex_);
  if (id <= 0 || static_cast<std::size_t>(id) >= names_.size()) return {};
  return LightweightString<char>(names_[static_cast<std::size_t>(id)]);
}

NotifyMsgType NotifyMsgTypeDictionary::objectDestroyedMsgType() {
  static const NotifyMsgType type = instance().intern("objectDestroyed");
  return type;
}
