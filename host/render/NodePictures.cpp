#include "host/render/NodePictures.h"

#include <limits>

namespace Render {
namespace {

std::size_t pixelBytes(const UxImage& image) {
  return static_cast<std::size_t>(image.width()) * static_cast<std::size_t>(image.height()) * 4;
}

} // namespace

NodePictures& NodePictures::instance() {
  // Never destroyed: workers may still hold it while the process ends.
  static NodePictures* pictures = new NodePictures;
  return *pictures;
}

NodePictures::EntryPtr NodePictures::find(const Key& key) {
  std::lock_guard lock(mutex_);
  const auto it = entries_.find(key);
  if (it == entries_.end()) return nullptr;
  if (it->second->kept_) uses_.splice(uses_.begin(), uses_, it->second->use_);
  return it->second;
}

bool NodePictures::knows(const Key& key) {
  Key from = key;
  from.width = from.height = std::numeric_limits<int>::min();
  std::lock_guard lock(mutex_);
  const auto it = entries_.lower_bound(from);
  if (it == entries_.end()) return false;
  const Key& k = it->first;
  return k.edit == key.edit && k.revision == key.revision && k.nodeChanges == key.nodeChanges && k.time == key.time &&
         k.node == key.node;
}

NodePictures::EntryPtr NodePictures::promise(const Key& key, int height) {
  std::lock_guard lock(mutex_);
  auto [it, fresh] = entries_.try_emplace(key);
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
    const auto it = entries_.find(entry->key_);
    if (it != entries_.end() && it->second == entry) {
      const std::size_t size = picture ? pixelBytes(*picture) : 0;
      if (!picture || size > byteBudget) {
        entries_.erase(it);
      } else {
        uses_.push_front(entry->key_);
        entry->use_ = uses_.begin();
        entry->kept_ = true;
        bytes_ += size;
        while (bytes_ > byteBudget) drop(entries_.find(uses_.back()));
      }
    }
  }
  made_.notify_all();
}

Ux::Ptr<UxImage> NodePictures::wait(const EntryPtr& entry) {
  std::unique_lock lock(mutex_);
  made_.wait(lock, [&] { return entry->made_; });
  return entry->picture_;
}

void NodePictures::drop(std::map<Key, EntryPtr>::iterator it) {
  Entry& entry = *it->second;
  if (entry.kept_) {
    bytes_ -= entry.picture_ ? pixelBytes(*entry.picture_) : 0;
    uses_.erase(entry.use_);
    entry.kept_ = false;
  }
  entries_.erase(it);
}

void NodePictures::clear() {
  std::lock_guard lock(mutex_);
  for (auto& [key, entry] : entries_) entry->kept_ = false;
  entries_.clear();
  uses_.clear();
  bytes_ = 0;
}

std::size_t NodePictures::size() const {
  std::lock_guard lock(mutex_);
  return entries_.size();
}

std::size_t NodePictures::bytes() const {
  std::lock_guard lock(mutex_);
  return bytes_;
}

} // namespace Render
