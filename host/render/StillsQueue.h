#pragma once
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <vector>

#include "host/FxHostApi.h"
#include "host/core/IdStamp.h"
#include "host/render/RenderContext.h"

namespace Render {

class StillPlan;

// Makes stills on a few worker threads, so that the thread that owns the
// edits (the window's) never waits for pixels. A still is planned on the
// asking thread when it is asked for (the plan reads the graph) and made
// later on a worker from the plan alone, in the order asked. Finished
// stills wait until their owner takes them, on the asking thread.
//
// Everything but the workers' own loop is called from the thread that owns
// the edits.
class FXHOST_API StillsQueue {
public:
  using Owner = const void*;
  struct Finished {
    IdStamp node;
    int what; // the owner's own tag: which picture of the node
    RenderContext context;
    Ux::Ptr<UxImage> still; // null only for an invalid format or a failed run
  };

  static StillsQueue& instance();
  ~StillsQueue();

  // Asks for the still of the context. False when the same still (same
  // place, revision, time, size and look-up table) is asked for already and
  // not yet taken.
  bool request(Owner owner, const IdStamp& node, int what, const RenderContext& context);
  // The owner's finished stills, in the order they were asked for.
  std::vector<Finished> take(Owner owner);
  // Stills the owner asked for and has not taken.
  std::size_t outstanding(Owner owner) const;
  // Whether a still of the node is asked for and not yet taken.
  bool asked(Owner owner, const IdStamp& node, int what) const;
  // Waits until every still the owner asked for is made.
  void wait(Owner owner);
  // Drops the owner's stills, made or to come.
  void forget(Owner owner);
  unsigned workers() const noexcept { return static_cast<unsigned>(threads_.size()); }
  // While held, workers start no new still (what runs finishes): tests use
  // it to keep stills under way while they drive the window.
  void hold(bool held);

private:
  StillsQueue();
  struct Request {
    Owner owner;
    IdStamp node;
    int what;
    RenderContext context; // made, copied and dropped on the asking thread only
    const void* edit;
    uint64_t revision;
    bool lut;
    bool done = false;
    Ux::Ptr<UxImage> still;
  };
  struct Job {
    uint64_t id;
    std::unique_ptr<StillPlan> plan;
  };
  // Which still of whose: the requests a new one may repeat.
  struct Key {
    Owner owner;
    IdStamp node;
    int what;
    bool operator==(const Key&) const = default;
  };
  struct KeyHash {
    std::size_t operator()(const Key& k) const noexcept {
      return std::hash<const void*>()(k.owner) ^ (std::hash<IdStamp>()(k.node) * 31 + static_cast<std::size_t>(k.what));
    }
  };
  using Requests = std::map<uint64_t, Request>;
  void work();
  void sweep();                      // mutex_ held; drops forgotten requests that are done
  void erase(Requests::iterator it); // mutex_ held

  mutable std::mutex mutex_;
  std::condition_variable jobsWaiting_, jobDone_;
  std::deque<Job> jobs_;
  Requests requests_; // in the order asked
  // Requests with an owner by key, and how many each owner has: a window
  // asking for thousands of thumbnails pays per still, not per still asked.
  std::unordered_map<Key, std::vector<uint64_t>, KeyHash> byKey_;
  std::unordered_map<Owner, std::size_t> perOwner_;
  std::vector<uint64_t> forgottenDone_; // dropped by the next sweep, on the asking thread
  uint64_t next_ = 1;
  bool stopping_ = false;
  bool held_ = false;
  std::vector<std::thread> threads_;
};

} // namespace Render
