#pragma once
#include "host/FxHostApi.h"
#include "host/core/IdStamp.h"
#include "host/stream/StreamableTraits.h"
#include "host/stream/Taggable.h"

// A tag: the handle through which a tag bag gives out one of its objects.
// Layer "P", no own data.
class FXHOST_API TagBase : public Streamable {
  STRM_DECLARE_LAYER(TagBase, Streamable)
public:
  TagBase() = default;
  TagBase(const IdStamp& id, Ux::Ptr<Taggable> object) : id_(id), object_(std::move(object)) {}
  ~TagBase() override;

  void pack(PStream&) const {}
  void unpack(PStream&) {}

  const IdStamp& id() const noexcept { return id_; }
  // The tagged object, or null.
  Ux::Ptr<Taggable> instance() const { return object_; }

private:
  IdStamp id_;
  Ux::Ptr<Taggable> object_;
};

// A typed view of a tagged object; empty when there is none or it is not a T.
template <class T>
class Tag {
public:
  Tag() = default;
  explicit Tag(Ux::Ptr<T> object) : object_(std::move(object)) {}
  explicit Tag(const Ux::Ptr<TagBase>& tag) : object_(tag ? Ux::dynamicCast<T>(tag->instance()) : nullptr) {}

  bool empty() const noexcept { return !object_; }
  T* instance() const noexcept { return object_.get(); }
  const Ux::Ptr<T>& ptr() const noexcept { return object_; }
  T* operator->() const noexcept { return object_.get(); }

private:
  Ux::Ptr<T> object_;
};
