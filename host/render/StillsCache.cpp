#include "host/render/StillsCache.h"

#include <cmath>
#include <set>

template class Loki::SingletonHolder<Render::StillsCache, Loki::CreateUsingNew, Loki::DeletableSingleton,
                                     Ux::ThreadSafe>;

namespace Render {

StillsCache& StillsCache::instance() { return TheStillsCache::Instance(); }

bool StillsCache::keyFor(const RenderContext& context, Key& key, uint64_t& revision) {
  const EditGraphIterator& at = context.iterator();
  if (!at.isValid() || !at.getEdit()) return false;
  const Edit& edit = *at.getEdit();
  key = Key{edit.getCookie(), at.getNode()->getId(),
            static_cast<int64_t>(std::llround(context.time() * edit.getFrameRate())), context.format().width,
            context.format().height};
  revision = edit.revision();
  return true;
}

Ux::Ptr<UxImage> StillsCache::getStillImage(const RenderContext& context) {
  Key key;
  uint64_t revision = 0;
  if (!keyFor(context, key, revision)) return nullptr;
  std::lock_guard lock(mutex_);
  auto it = stills_.find(key);
  if (it == stills_.end()) return nullptr;
  if (it->second.revision != revision) {
    uses_.erase(it->second.use);
    stills_.erase(it);
    return nullptr;
  }
  uses_.splice(uses_.begin(), uses_, it->second.use);
  return it->second.still;
}

void StillsCache::add(const RenderContext& context, const Ux::Ptr<UxImage>& still) {
  Key key;
  uint64_t revision = 0;
  if (!still || !keyFor(context, key, revision)) return;
  std::lock_guard lock(mutex_);
  if (auto it = stills_.find(key); it != stills_.end()) {
    uses_.erase(it->second.use);
    stills_.erase(it);
  }
  uses_.push_front(key);
  stills_[key] = Entry{still, revision, uses_.begin()};
  while (stills_.size() > capacity) {
    stills_.erase(uses_.back());
    uses_.pop_back();
  }
}

void StillsCache::forgetGraph(const EditPtr& edit, const IdStamp& head) {
  if (!edit) return;
  // The graph's nodes whatever the time: a still of any frame of them goes.
  std::set<IdStamp> nodes;
  std::vector<IdStamp> todo{head};
  while (!todo.empty()) {
    const IdStamp id = todo.back();
    todo.pop_back();
    Ux::Ptr<FXGraphNodeBase> node = edit->openNode(id);
    if (!node || !nodes.insert(id).second) continue;
    for (unsigned i = 0; i < node->getNumInputs(); ++i) todo.push_back(node->getInputTrackId(i));
  }
  std::lock_guard lock(mutex_);
  for (auto it = stills_.begin(); it != stills_.end();) {
    if (it->first.edit == edit->getCookie() && nodes.count(it->first.node)) {
      uses_.erase(it->second.use);
      it = stills_.erase(it);
    } else {
      ++it;
    }
  }
}

void StillsCache::clear() {
  std::lock_guard lock(mutex_);
  stills_.clear();
  uses_.clear();
}

std::size_t StillsCache::size() const {
  std::lock_guard lock(mutex_);
  return stills_.size();
}

} // namespace Render
