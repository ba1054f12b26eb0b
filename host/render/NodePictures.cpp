#include "host/render/NodePictures.h"

#include <limits>

namespace Render {

NodePictures& NodePictures::instance() {
  // Never destroyed: workers may still hold it while the process ends.
  static NodePictures* pictures = new NodePictures;
  return *pictures;
}

NodePictures::EntryPtr NodePictures::find(const Key& key) {
  std::lock_guard lock(mutex_);
  if (const EntryPtr* made = made_.find(key)) return *made;
  const auto it = promised_.find(key);
  return it == promised_.end() ? nullptr : it->second;
}

bool NodePictures::knows(const Key& key) {
  // Keys order by size last: the first key from the smallest size is the
  // node's at that moment, if it has one.
  Key from = key;
  from.width = from.height = std::numeric_limits<int>::min();
  auto sameMoment = [&](const Key* k) {
    return k && k->edit == key.edit && k->revision == key.revision && k->nodeChanges == key.nodeChanges &&
           k->time == key.time && k->node == key.node;
  };
  std::lock_guard lock(mutex_);
  const auto promised = promised_.lower_bound(from);
  return sameMoment(made_.firstKeyFrom(from)) || (promised != promised_.end() && sameMoment(&promised->first));
}

NodePictures::EntryPtr NodePictures::promise(const Key& key, int height) {
  std::lock_guard lock(mutex_);
  if (made_.find(key)) return nullptr;
  auto [it, fresh] = promised_.try_emplace(key);
  if (!fresh) return nullptr;
  it->second = std::make_shared<Entry>();
  it->second->key_ = key;
  it->second->height_ = height;
  return it->second;
}

void NodePictures::fulfil(const EntryPtr& entry, const Ux::Ptr<UxImage>& picture) {
  if (!entry) return;
  {
    std::lock_guard lock(mutex_);
    entry->made_ = true;
    entry->picture_ = picture;
    // Kept only while its promise still stands (a clear forgets promises);
    // a picture given up, or too big to keep, is forgotten.
    const auto it = promised_.find(entry->key_);
    if (it != promised_.end() && it->second == entry) {
      promised_.erase(it);
      if (picture) made_.put(entry->key_, entry, picture->pixelBytes());
    }
  }
  madeSignal_.notify_all();
}

Ux::Ptr<UxImage> NodePictures::wait(const EntryPtr& entry) {
  std::unique_lock lock(mutex_);
  madeSignal_.wait(lock, [&] { return entry->made_; });
  return entry->picture_;
}

void NodePictures::clear() {
  std::lock_guard lock(mutex_);
  promised_.clear();
  made_.clear();
}

std::size_t NodePictures::size() const {
  std::lock_guard lock(mutex_);
  return promised_.size() + made_.size();
}

std::size_t NodePictures::bytes() const {
  std::lock_guard lock(mutex_);
  return made_.bytes();
}

} // namespace Render
