#include "host/edit/Edit.h"

#include <mutex>
#include <unordered_map>

namespace {
// Live, open edits by cookie. Not owning: an edit leaves when it closes or goes.
struct LiveEdits {
  std::mutex mutex;
  std::map<Cookie, Edit*> edits;
};
LiveEdits& liveEdits() {
  static LiveEdits live;
  return live;
}
} // namespace

Edit::Edit(const Cookie& cookie, LightweightString<wchar_t> name) : cookie_(cookie), name_(std::move(name)) {
  if (!cookie_.valid()) return;
  LiveEdits& live = liveEdits();
  std::lock_guard lock(live.mutex);
  live.edits[cookie_] = this;
}

Edit::~Edit() {
  close();
}

void Edit::close() {
  if (!closed_) {
    closed_ = true;
    LiveEdits& live = liveEdits();
    std::lock_guard lock(live.mutex);
    auto it = live.edits.find(cookie_);
    if (it != live.edits.end() && it->second == this) live.edits.erase(it);
  }
  for (auto& [name, object] : bound_)
    if (object) object->preDestroyNotify();
  auto bound = std::move(bound_);
  bound_.clear();
  bound.clear();
  tags_.clear();
}

void Edit::bindObjectToEdit(const LightweightString<char>& name, Ux::Ptr<Taggable> object) {
  if (object) bound_[name] = std::move(object);
  else bound_.erase(name);
}

Ux::Ptr<Taggable> Edit::openObjectInternal(const LightweightString<char>& name) const {
  auto it = bound_.find(name);
  return it == bound_.end() ? nullptr : it->second;
}

bool Edit::unbindObject(const LightweightString<char>& name) {
  return bound_.erase(name) != 0;
}

std::vector<std::pair<LightweightString<char>, Ux::Ptr<Taggable>>> Edit::boundObjects() const {
  return {bound_.begin(), bound_.end()};
}

bool EditPtr::i_open(const Cookie& cookie, int) {
  LiveEdits& live = liveEdits();
  std::lock_guard lock(live.mutex);
  auto it = live.edits.find(cookie);
  // A held reference keeps the edit alive; one already going is not reopened.
  if (it == live.edits.end() || it->second->refCount() == 0) {
    edit_.reset();
    return false;
  }
  edit_ = Ux::Ptr<Edit>(it->second);
  return true;
}
