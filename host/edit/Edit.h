#pragma once
#include <map>
#include <vector>

#include "host/FxHostApi.h"
#include "host/core/Cookie.h"
#include "host/core/LightweightString.h"
#include "host/core/Ptr.h"
#include "host/core/iObject.h"
#include "host/stream/TagBag.h"
#include "host/stream/Taggable.h"

// An edit: named, identified by a cookie, holding its graph nodes in a tag
// bag and other persistent objects bound to it by name (saved with the edit).
// A live edit can be found by its cookie (EditPtr::i_open).
class FXHOST_API Edit : public iObject {
public:
  explicit Edit(const Cookie& cookie, LightweightString<wchar_t> name = {});
  ~Edit() override;
  Edit(const Edit&) = delete;
  Edit& operator=(const Edit&) = delete;

  const Cookie& getCookie() const noexcept { return cookie_; }
  const LightweightString<wchar_t>& getName() const noexcept { return name_; }
  void setName(const LightweightString<wchar_t>& name) { name_ = name; }

  TagBag& getTagBag() noexcept { return tags_; }
  const TagBag& getTagBag() const noexcept { return tags_; }
  // The tagged object with that id as a T, or null.
  template <class T>
  Ux::Ptr<T> openObject(const IdStamp& id) const {
    Ux::Ptr<TagBase> tag = tags_.openObject(id);
    return tag ? Ux::dynamicCast<T>(tag->instance()) : nullptr;
  }

  // Objects bound to the edit by name; saving the edit saves them.
  void bindObjectToEdit(const LightweightString<char>& name, Ux::Ptr<Taggable> object);
  Ux::Ptr<Taggable> openObjectInternal(const LightweightString<char>& name) const;
  bool unbindObject(const LightweightString<char>& name);
  std::vector<std::pair<LightweightString<char>, Ux::Ptr<Taggable>>> boundObjects() const;

  bool isDirty() const noexcept { return dirty_; }
  void setDirty(bool dirty) noexcept { dirty_ = dirty; }

  // Lets go of every held object; bound objects that refer back to the edit
  // then release it. An edit is closed before it is dropped.
  void close();
  bool isClosed() const noexcept { return closed_; }

private:
  Cookie cookie_;
  LightweightString<wchar_t> name_;
  TagBag tags_;
  std::map<LightweightString<char>, Ux::Ptr<Taggable>> bound_;
  bool dirty_ = false;
  bool closed_ = false;
};

// A counted reference to an edit.
class FXHOST_API EditPtr {
public:
  EditPtr() = default;
  EditPtr(std::nullptr_t) {}
  EditPtr(Ux::Ptr<Edit> edit) : edit_(std::move(edit)) {}
  EditPtr(Edit* edit) : edit_(edit) {}

  // Refers to the live, open edit with that cookie; null when there is none.
  // Returns whether an edit was found. `behaviour` 0 is the default: open
  // only what is already loaded.
  bool i_open(const Cookie& cookie, int behaviour = 0);

  Edit* get() const noexcept { return edit_.get(); }
  Edit* operator->() const noexcept { return edit_.get(); }
  Edit& operator*() const noexcept { return *edit_; }
  explicit operator bool() const noexcept { return static_cast<bool>(edit_); }
  const Ux::Ptr<Edit>& ptr() const noexcept { return edit_; }
  friend bool operator==(const EditPtr& a, const EditPtr& b) noexcept { return a.edit_ == b.edit_; }
  void reset() { edit_.reset(); }

private:
  Ux::Ptr<Edit> edit_;
};
