#pragma once
#include <cstdint>
#include <limits>
#include <mutex>

#include <loki/Singleton.h>

#include "host/FxHostApi.h"
#include "host/core/LruCache.h"
#include "host/core/ThreadSafe.h"
#include "host/render/RenderContext.h"

namespace Render {

// The process-wide cache of rendered stills: one picture per (edit, node,
// frame, size). A still is stale once its edit's revision has moved on, and
// the least recently used go first when the cache is full (by count or by
// bytes). Pictures handed out are shared: callers must not change them.
class FXHOST_API StillsCache {
public:
  // A graph view shows a still per node: room for every node of a large
  // view, the bytes bound the rest.
  static constexpr std::size_t capacity = 16384;
  // Pixel bytes kept at most; a still bigger than this is not kept at all.
  static constexpr std::size_t byteBudget = std::size_t(256) << 20;

  static StillsCache& instance();

  // The cached still for the context, or null.
  Ux::Ptr<UxImage> getStillImage(const RenderContext& context);
  void add(const RenderContext& context, const Ux::Ptr<UxImage>& still);
  // Forgets the stills of every node of the graph under `head` (inputs that
  // name a channel reach whatever that channel holds at any time) whose
  // frame lies in [from, to), seconds of edit time.
  void forgetGraph(const EditPtr& edit, const IdStamp& head, double from = -std::numeric_limits<double>::infinity(),
                   double to = std::numeric_limits<double>::infinity());
  void clear();
  std::size_t size() const;
  // Pixel bytes held.
  std::size_t bytes() const;

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
    // Which edit made it: another edit with the same cookie (the file opened
    // again) has its own revisions. Compared, never dereferenced.
    const Edit* edit;
    uint64_t revision;
  };
  static bool keyFor(const RenderContext& context, Key& key, const Edit*& edit, uint64_t& revision);

  mutable std::mutex mutex_;
  LruCache<Key, Entry> stills_{byteBudget, capacity};
};

using TheStillsCache =
    Loki::SingletonHolder<StillsCache, Loki::CreateUsingNew, Loki::DeletableSingleton, Ux::ThreadSafe>;

} // namespace Render

extern template class FXHOST_API
    Loki::SingletonHolder<Render::StillsCache, Loki::CreateUsingNew, Loki::DeletableSingleton, Ux::ThreadSafe>;
