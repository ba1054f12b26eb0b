#include "host/stream/Taggable.h"

#include <algorithm>

#include "host/stream/TagBag.h"
#include "host/stream/TagBase.h"

STRM_DEFINE_LAYER(Taggable, "T")
STRM_DEFINE_LAYER(TagBase, "P")

Taggable::~Taggable() = default;

LightweightString<char> Taggable::asString() const { return hierarchyName(true, false); }

Ux::Ptr<Taggable> Taggable::clone() const {
  Ux::Ptr<Streamable> copy = clone(Streamable::BuilderType{});
  copy->assign(this);
  return Ux::dynamicCast<Taggable>(copy);
}

TagBase::~TagBase() = default;

Ux::Ptr<TagBase> TagBag::openObject(const IdStamp& id) const {
  auto it = objects_.find(id);
  if (it == objects_.end() || !it->second) return nullptr;
  return Ux::Ptr<TagBase>(new TagBase(id, it->second));
}

Taggable* TagBag::find(const IdStamp& id) const {
  auto it = objects_.find(id);
  return it == objects_.end() ? nullptr : it->second.get();
}

void TagBag::addObject(const IdStamp& id, Ux::Ptr<Taggable> object) { objects_[id] = std::move(object); }

bool TagBag::removeObject(const IdStamp& id) { return objects_.erase(id) != 0; }

std::vector<IdStamp> TagBag::ids() const {
  std::vector<IdStamp> out;
  out.reserve(objects_.size());
  for (const auto& [id, object] : objects_) out.push_back(id);
  std::sort(out.begin(), out.end());
  return out;
}

void TagBag::clear() {
  // Moved out first: destroying an object may look the bag up.
  auto gone = std::move(objects_);
  objects_.clear();
}
