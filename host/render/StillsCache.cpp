#include "host/render/StillsCache.h"

#include <cmath>
#include <set>

#include "host/render/NodePictures.h"

template class Loki::SingletonHolder<Render::StillsCache, Loki::CreateUsingNew, Loki::DeletableSingleton,
                                     Ux::ThreadSafe>;

namespace Render {
namespace {

// The nodes an edit's graph under `head` can reach at any time: an input that
// names a channel reaches every node the channel's cels show.
std::set<IdStamp> graphNodes(const Edit& edit, const IdStamp& head) {
  std::set<IdStamp> nodes;
  std::set<IdStamp> channelsSeen;
  std::vector<IdStamp> todo{head};
  while (!todo.empty()) {
    const IdStamp id = todo.back();
    todo.pop_back();
    if (Ux::Ptr<FXGraphNodeBase> node = edit.openNode(id)) {
      if (!nodes.insert(id).second) continue;
      for (unsigned i = 0; i < node->getNumInputs(); ++i) todo.push_back(node->getInputTrackId(i));
    } else if (const int chan = edit.findChan(id); chan >= 0 && channelsSeen.insert(id).second) {
      for (const Cel& cel : edit.getChan(chan).cels)
        if (cel.kind != Cel::Kind::black) todo.push_back(cel.ref);
    }
  }
  return nodes;
}

} // namespace

StillsCache& StillsCache::instance() { return TheStillsCache::Instance(); }

bool StillsCache::keyFor(const RenderContext& context, Key& key, const Edit*& edit, uint64_t& revision) {
  const EditGraphIterator& at = context.iterator();
  if (!at.isValid() || !at.getEdit()) return false;
  edit = at.getEdit().get();
  key = Key{edit->getCookie(), at.getNode()->getId(),
            static_cast<int64_t>(std::llround(context.time() * edit->getFrameRate())), context.format().width,
            context.format().height};
  revision = edit->revision();
  return true;
}

Ux::Ptr<UxImage> StillsCache::getStillImage(const RenderContext& context) {
  Key key;
  const Edit* edit = nullptr;
  uint64_t revision = 0;
  if (!keyFor(context, key, edit, revision)) return nullptr;
  std::lock_guard lock(mutex_);
  const Entry* entry = stills_.find(key);
  if (!entry) return nullptr;
  if (entry->revision != revision || entry->edit != edit) {
    stills_.erase(key);
    return nullptr;
  }
  return entry->still;
}

void StillsCache::add(const RenderContext& context, const Ux::Ptr<UxImage>& still) {
  Key key;
  const Edit* edit = nullptr;
  uint64_t revision = 0;
  if (!still || !keyFor(context, key, edit, revision)) return;
  const std::size_t size = still->pixelBytes();
  std::lock_guard lock(mutex_);
  stills_.put(key, Entry{still, edit, revision}, size);
}

void StillsCache::forgetGraph(const EditPtr& edit, const IdStamp& head, double from, double to) {
  if (!edit) return;
  const std::set<IdStamp> nodes = graphNodes(*edit, head);
  const double fps = edit->getFrameRate();
  auto inRange = [&](int64_t frame) {
    return (std::isinf(from) || frame >= std::llround(from * fps)) &&
           (std::isinf(to) || frame < std::llround(to * fps));
  };
  // The pictures stills are made from go too: what they show has changed.
  NodePictures::instance().clear();
  std::lock_guard lock(mutex_);
  stills_.retain([&](const Key& key, const Entry&) {
    return !(key.edit == edit->getCookie() && nodes.count(key.node) && inRange(key.frame));
  });
}

void StillsCache::clear() {
  NodePictures::instance().clear();
  std::lock_guard lock(mutex_);
  stills_.clear();
}

std::size_t StillsCache::size() const {
  std::lock_guard lock(mutex_);
  return stills_.size();
}

std::size_t StillsCache::bytes() const {
  std::lock_guard lock(mutex_);
  return stills_.bytes();
}

} // namespace Render
