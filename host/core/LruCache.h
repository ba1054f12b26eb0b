#pragma once
#include <cstddef>
#include <limits>
#include <list>
#include <map>
#include <utility>

// Values by key, each with its size in bytes; the least recently used go
// first once the cache holds more entries than its capacity or more bytes
// than its budget. A value larger than the whole budget is never kept. Not
// locked: the caches built on it hold their own mutex round every call.
template <class Key, class Value>
class LruCache {
public:
  explicit LruCache(std::size_t byteBudget, std::size_t capacity = std::numeric_limits<std::size_t>::max())
      : byteBudget_(byteBudget), capacity_(capacity) {}

  // The value under the key, now the most recently used; null when absent.
  Value* find(const Key& key) {
    const auto it = slots_.find(key);
    if (it == slots_.end()) return nullptr;
    uses_.splice(uses_.begin(), uses_, it->second.use);
    return &it->second.value;
  }

  // Keeps the value in place of any under the key, as the most recently
  // used; false, and nothing kept under the key, when it is over budget.
  bool put(const Key& key, Value value, std::size_t bytes) {
    erase(key);
    if (bytes > byteBudget_ || capacity_ == 0) return false;
    uses_.push_front(key);
    slots_.emplace(key, Slot{std::move(value), bytes, uses_.begin()});
    bytes_ += bytes;
    while (slots_.size() > capacity_ || bytes_ > byteBudget_) drop(slots_.find(uses_.back()));
    return true;
  }

  void erase(const Key& key) {
    if (const auto it = slots_.find(key); it != slots_.end()) drop(it);
  }

  // Forgets every entry for which keep(key, value) is false.
  template <class Keep>
  void retain(Keep keep) {
    for (auto it = slots_.begin(); it != slots_.end();) {
      const auto next = std::next(it);
      if (!keep(it->first, static_cast<const Value&>(it->second.value))) drop(it);
      it = next;
    }
  }

  // The least key not below `key` (keys are ordered), or null; for asking
  // about a run of neighbouring keys. Not a use.
  const Key* firstKeyFrom(const Key& key) const {
    const auto it = slots_.lower_bound(key);
    return it == slots_.end() ? nullptr : &it->first;
  }

  void clear() {
    slots_.clear();
    uses_.clear();
    bytes_ = 0;
  }
  std::size_t size() const noexcept { return slots_.size(); }
  std::size_t bytes() const noexcept { return bytes_; }

private:
  struct Slot {
    Value value;
    std::size_t bytes;
    typename std::list<Key>::iterator use;
  };

  void drop(typename std::map<Key, Slot>::iterator it) {
    bytes_ -= it->second.bytes;
    uses_.erase(it->second.use);
    slots_.erase(it);
  }

  std::size_t byteBudget_;
  std::size_t capacity_;
  std::map<Key, Slot> slots_;
  std::list<Key> uses_; // most recent first
  std::size_t bytes_ = 0;
};
