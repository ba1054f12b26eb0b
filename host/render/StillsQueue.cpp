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
      }
    }
    jobDone_.notify_all();
  }
}

void StillsQueue::sweep() {
  for (auto it = requests_.begin(); it != requests_.end();)
    it = !it->second.owner && it->second.done ? requests_.erase(it) : std::next(it);
}

bool StillsQueue::request(Owner owner, const IdStamp& node, int what, const RenderContext& context) {
  const EditGraphIterator& at = context.iterator();
  const void* edit = at.getEdit().get();
  const uint64_t revision = at.getEdit() ? at.getEdit()->revision() : 0;
  {
    std::lock_guard lock(mutex_);
    sweep();
    for (const auto& [id, r] : requests_)
      if (r.owner == owner && r.node == node && r.what == what && r.edit == edit && r.revision == revision &&
          r.lut == context.hasViewLUT() && r.context.time() == context.time() &&
          r.context.format().width == context.format().width && r.context.format().height == context.format().height)
        return false;
  }
  // Planned here, while the graph holds still, and outside the lock so that
  // workers can go on finishing.
  auto plan = std::make_unique<StillPlan>(context);
  std::lock_guard lock(mutex_);
  const uint64_t id = next_++;
  requests_.emplace(id, Request{owner, node, what, context, edit, revision, context.hasViewLUT(), false, nullptr});
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
      it = requests_.erase(it);
    } else {
      ++it;
    }
  }
  sweep();
  return out;
}

std::size_t StillsQueue::outstanding(Owner owner) const {
  std::lock_guard lock(mutex_);
  return static_cast<std::size_t>(
      std::count_if(requests_.begin(), requests_.end(), [&](const auto& r) { return r.second.owner == owner; }));
}

bool StillsQueue::asked(Owner owner, const IdStamp& node, int what) const {
  std::lock_guard lock(mutex_);
  return std::any_of(requests_.begin(), requests_.end(), [&](const auto& r) {
    return r.second.owner == owner && r.second.node == node && r.second.what == what;
  });
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
  for (auto& [id, r] : requests_)
    if (r.owner == owner) r.owner = nullptr;
  sweep();
}

} // namespace Render
