#include "host/render/StillsQueue.h"

#include <algorithm>

#include "host/notify/Log.h"
#include "host/render/ImageCache.h"
#include "host/render/StillPlan.h"

namespace Render {

StillsQueue& StillsQueue::instance() {
  static StillsQueue queue;
  return queue;
}

StillsQueue::StillsQueue() {
  // What the workers use must outlive them: made now, it is torn down
  // after the queue at exit.
  ImageCache::makeNow();
  const unsigned cores = std::max(1u, std::thread::hardware_concurrency());
  for (unsigned i = 0; i < std::min(cores, 4u); ++i) threads_.emplace_back([this] { work(); });
}

StillsQueue::~StillsQueue() {
  std::deque<Job> dropped;
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
    dropped.swap(jobs_);
  }
  jobsWaiting_.notify_all();
  for (std::thread& t : threads_) t.join();
}

void StillsQueue::work() {
  for (;;) {
    Job job;
    {
      std::unique_lock lock(mutex_);
      jobsWaiting_.wait(lock, [&] { return stopping_ || (!held_ && !jobs_.empty()); });
      if (stopping_) return;
      job = std::move(jobs_.front());
      jobs_.pop_front();
    }
    Ux::Ptr<UxImage> still;
    try {
      still = job.plan->run();
    } catch (const std::exception& e) {
      Log::printf("Warning: a still could not be made: %s\n", e.what());
    }
    job.plan.reset();
    {
      std::lock_guard lock(mutex_);
      if (auto it = requests_.find(job.id); it != requests_.end()) {
        it->second.done = true;
        it->second.still = std::move(still);
        if (!it->second.owner) forgottenDone_.push_back(job.id);
      }
    }
    jobDone_.notify_all();
  }
}

void StillsQueue::sweep() {
  // The contexts of forgotten stills are let go here, on the asking thread.
  for (const uint64_t id : forgottenDone_) requests_.erase(id);
  forgottenDone_.clear();
}

void StillsQueue::erase(Requests::iterator it) {
  const Request& r = it->second;
  if (r.owner) {
    const auto key = byKey_.find(Key{r.owner, r.node, r.what});
    if (key != byKey_.end()) {
      std::erase(key->second, it->first);
      if (key->second.empty()) byKey_.erase(key);
    }
    if (const auto count = perOwner_.find(r.owner); count != perOwner_.end() && --count->second == 0)
      perOwner_.erase(count);
  }
  requests_.erase(it);
}

bool StillsQueue::request(Owner owner, const IdStamp& node, int what, const RenderContext& context) {
  const EditGraphIterator& at = context.iterator();
  const void* edit = at.getEdit().get();
  const uint64_t revision = at.getEdit() ? at.getEdit()->revision() : 0;
  {
    std::lock_guard lock(mutex_);
    sweep();
    if (const auto same = byKey_.find(Key{owner, node, what}); same != byKey_.end())
      for (const uint64_t id : same->second) {
        const Request& r = requests_.at(id);
        if (r.edit == edit && r.revision == revision && r.lut == context.hasViewLUT() &&
            r.context.time() == context.time() && r.context.format().width == context.format().width &&
            r.context.format().height == context.format().height)
          return false;
      }
  }
  // Planned here, while the graph holds still, and outside the lock so that
  // workers can go on finishing.
  auto plan = std::make_unique<StillPlan>(context);
  std::lock_guard lock(mutex_);
  const uint64_t id = next_++;
  requests_.emplace(id, Request{owner, node, what, context, edit, revision, context.hasViewLUT(), false, nullptr});
  if (owner) {
    byKey_[Key{owner, node, what}].push_back(id);
    ++perOwner_[owner];
  }
  jobs_.push_back(Job{id, std::move(plan)});
  jobsWaiting_.notify_one();
  return true;
}

std::vector<StillsQueue::Finished> StillsQueue::take(Owner owner) {
  std::vector<Finished> out;
  std::lock_guard lock(mutex_);
  for (auto it = requests_.begin(); it != requests_.end();) {
    if (it->second.owner == owner && it->second.done) {
      Request& r = it->second;
      out.push_back(Finished{r.node, r.what, std::move(r.context), std::move(r.still)});
      erase(it++);
    } else {
      ++it;
    }
  }
  sweep();
  return out;
}

std::size_t StillsQueue::outstanding(Owner owner) const {
  std::lock_guard lock(mutex_);
  const auto count = perOwner_.find(owner);
  return count == perOwner_.end() ? 0 : count->second;
}

bool StillsQueue::asked(Owner owner, const IdStamp& node, int what) const {
  std::lock_guard lock(mutex_);
  return owner && byKey_.count(Key{owner, node, what}) > 0;
}

void StillsQueue::wait(Owner owner) {
  std::unique_lock lock(mutex_);
  jobDone_.wait(lock, [&] {
    return std::none_of(requests_.begin(), requests_.end(),
                        [&](const auto& r) { return r.second.owner == owner && !r.second.done; });
  });
}

void StillsQueue::hold(bool held) {
  {
    std::lock_guard lock(mutex_);
    held_ = held;
  }
  jobsWaiting_.notify_all();
}

void StillsQueue::forget(Owner owner) {
  std::lock_guard lock(mutex_);
  if (!owner) return;
  for (auto& [id, r] : requests_) {
    if (r.owner != owner) continue;
    r.owner = nullptr;
    if (r.done) forgottenDone_.push_back(id);
  }
  std::erase_if(byKey_, [&](const auto& entry) { return entry.first.owner == owner; });
  perOwner_.erase(owner);
  sweep();
}

} // namespace Render
