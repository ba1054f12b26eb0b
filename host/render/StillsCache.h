#pragma once
#include <cstdint>
#include <list>
#include <map>
#include <mutex>

#include <loki/Singleton.h>

#include "host/FxHostApi.h"
#include "host/core/ThreadSafe.h"
#include "host/render/RenderContext.h"

namespace Render {

// The process-wide cache of rendered stills: one picture per (edit, node,
// frame, size). A still is stale once its edit's revision has moved on, and
// the least recently used go first when the cache is full.
class FXHOST_API StillsCache {
public:
  static constexpr std::size_t capacity = 256;

  static StillsCache& instance();

  // The cached still for the context, or null.
  Ux::Ptr<UxImage> getStillImage(const RenderContext& context);
  void add(const RenderContext& context, const Ux::Ptr<UxImage>& still);
  // Forgets the stills of every node of the graph under `head`.
  void forgetGraph(const EditPtr& edit, const IdStamp& head);
  void clear();
  std::size_t size() const;

private:
  struct Key {
    Cookie edit;
    IdStamp node;
    int64_t frame;
    int width, height;
    auto operator<=>(const Key&) const = default;
  };
  struct Entry {
    Ux::Ptr<UxImage> still;
    uint64_t revision;
    std::list<Key>::iterator use;
  };
  static bool keyFor(const RenderContext& context, Key& key, uint64_t& revision);

  mutable std::mutex mutex_;
  std::map<Key, Entry> stills_;
  std::list<Key> uses_; // most recent first
};

using TheStillsCache =
    Loki::SingletonHolder<StillsCache, Loki::CreateUsingNew, Loki::DeletableSingleton, Ux::ThreadSafe>;

} // namespace Render

extern template class FXHOST_API
    Loki::SingletonHolder<Render::StillsCache, Loki::CreateUsingNew, Loki::DeletableSingleton, Ux::ThreadSafe>;
