#pragma once
#include <unordered_map>
#include <vector>

#include "host/FxHostApi.h"
#include "host/core/IdStamp.h"
#include "host/stream/TagBase.h"

// The objects an edit holds, keyed by IdStamp.
class FXHOST_API TagBag {
public:
  // The tag of the object with that id, or null.
  Ux::Ptr<TagBase> openObject(const IdStamp& id) const;
  // The object itself, or null: a lookup without making a tag.
  Taggable* find(const IdStamp& id) const;
  // Adds or replaces the object under its id.
  void addObject(const IdStamp& id, Ux::Ptr<Taggable> object);
  // Removes it; false when there was none.
  bool removeObject(const IdStamp& id);
  bool contains(const IdStamp& id) const { return objects_.count(id) != 0; }
  std::size_t size() const noexcept { return objects_.size(); }
  // Every id, in order.
  std::vector<IdStamp> ids() const;
  void clear();

private:
  // Hashed: every step of every walk of the graph looks a node up here.
  std::unordered_map<IdStamp, Ux::Ptr<Taggable>> objects_;
};
