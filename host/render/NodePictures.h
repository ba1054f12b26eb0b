#pragma once
#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>

#include "host/FxHostApi.h"
#include "host/core/IdStamp.h"
#include "host/core/LruCache.h"
#include "host/draw/UxImage.h"

namespace Render {

// Pictures of graph nodes at a working size, shared by every still that
// uses them: a node that feeds many others is made once per (time, size),
// and the stills above it start from its picture instead of walking down
// again. Only a node's own picture is kept (nothing below it closes a cycle
// and nothing was cut by the input depth limit), so whichever still made
// it, any other may use it.
//
// A picture can be promised before it is made: a still planned while
// another still that makes the same picture waits in the queue takes the
// promise, and its run waits for it if it must. Promises are made in plan
// order and kept in run order, so a wait never closes a circle.
class FXHOST_API NodePictures {
public:
  // Pixel bytes of made pictures kept at most (least recently used go first).
  static constexpr std::size_t byteBudget = std::size_t(32) << 20;

  struct Key {
    const void* edit; // compared, never dereferenced
    uint64_t revision;
    uint64_t nodeChanges; // FXGraphNodeBase::changeCount()
    double time;
    IdStamp node;
    int width, height;
    auto operator<=>(const Key&) const = default;
  };

  class Entry {
  public:
    // The longest run of inputs below the node that the picture used.
    int height() const noexcept { return height_; }

  private:
    friend class NodePictures;
    Key key_{};
    int height_ = 0;
    bool made_ = false;
    Ux::Ptr<UxImage> picture_;
  };
  using EntryPtr = std::shared_ptr<Entry>;

  static NodePictures& instance();

  // The entry for the key, made or promised; null when there is none.
  EntryPtr find(const Key& key);
  // Whether a picture of the node is known at any size for the key's edit,
  // revision, changes and time: then nothing below the node closes a cycle.
  bool knows(const Key& key);
  // A new promise for the key; null when the key has an entry already.
  EntryPtr promise(const Key& key, int height);
  // Keeps a promise; a null picture gives it up (its entry goes, and
  // whoever waits gets null).
  void fulfil(const EntryPtr& entry, const Ux::Ptr<UxImage>& picture);
  // The entry's picture, waiting until it is made.
  Ux::Ptr<UxImage> wait(const EntryPtr& entry);

  // Forgets everything; promises still out are kept by their makers but no
  // longer found.
  void clear();
  std::size_t size() const;
  std::size_t bytes() const;

private:
  mutable std::mutex mutex_;
  std::condition_variable madeSignal_;
  std::map<Key, EntryPtr> promised_; // not made yet; never dropped
  LruCache<Key, EntryPtr> made_{byteBudget};
};

} // namespace Render
