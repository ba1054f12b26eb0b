#include "host/notify/Notifier.h"

#include <algorithm>
#include <atomic>
#include <vector>

struct NotifierState {
  struct Entry {
    uint64_t id;
    NotifyMsgType filter;
    NotifierBase::RawCallback callback;
    bool live = true;
  };

  CriticalSection cs;
  // unique_ptr keeps an entry in place while the vector grows mid-delivery.
  std::vector<std::unique_ptr<Entry>> entries;
  std::atomic<std::size_t> liveCount{0};
  uint64_t nextId = 1;
  int deliveryDepth = 0;
  bool needsCompacting = false;

  // Entries stay in the order of their ids, which only grow: found by halving.
  std::vector<std::unique_ptr<Entry>>::iterator find(uint64_t id) {
    auto it = std::lower_bound(entries.begin(), entries.end(), id,
                               [](const std::unique_ptr<Entry>& e, uint64_t wanted) { return e->id < wanted; });
    return it != entries.end() && (*it)->id == id ? it : entries.end();
  }
  void remove(uint64_t id) {
    CriticalSection::Lock lock(cs);
    const auto it = find(id);
    if (it == entries.end() || !(*it)->live) return;
    (*it)->live = false;
    const std::size_t live = liveCount.fetch_sub(1, std::memory_order_relaxed) - 1;
    // An entry may be running right now: erased only outside deliveries, and
    // in bulk once the dead outnumber the live, so that letting go of many
    // subscriptions one by one costs no more than their number.
    needsCompacting = true;
    if (deliveryDepth == 0 && entries.size() > 2 * live + 8) compact();
  }
  void compact() {
    std::erase_if(entries, [](const auto& e) { return !e->live; });
    needsCompacting = false;
  }
  bool isLive(uint64_t id) {
    CriticalSection::Lock lock(cs);
    const auto it = find(id);
    return it != entries.end() && (*it)->live;
  }
};

Subscription::~Subscription() { release(); }

void Subscription::release() {
  if (auto state = state_.lock()) state->remove(id_);
  state_.reset();
}

bool Subscription::active() const {
  auto state = state_.lock();
  return state && state->isLive(id_);
}

// The state is made when the first subscriber arrives: most notifiers (a
// record's, a value's) are never listened to.
NotifierBase::NotifierBase() = default;

NotifierBase::NotifierBase(const NotifierBase&) {}

NotifierState& NotifierBase::state() const {
  if (!state_) state_ = std::make_shared<NotifierState>();
  return *state_;
}

NotifierBase::~NotifierBase() = default;

SubscriptionHandle NotifierBase::registerInternal(RawCallback callback, NotifyMsgType filter) {
  CriticalSection::Lock lock(state().cs);
  const uint64_t id = state_->nextId++;
  state_->entries.push_back(
      std::make_unique<NotifierState::Entry>(NotifierState::Entry{id, filter, std::move(callback)}));
  state_->liveCount.fetch_add(1, std::memory_order_relaxed);
  return SubscriptionHandle(new Subscription(state_, id));
}

bool NotifierBase::hasSubscribers() const noexcept {
  return state_ && state_->liveCount.load(std::memory_order_relaxed) != 0;
}

std::size_t NotifierBase::subscriberCount() const noexcept {
  return state_ ? state_->liveCount.load(std::memory_order_relaxed) : 0;
}

CriticalSection& NotifierBase::criticalSection() const { return state().cs; }

void NotifierBase::deliverRaw(const void* event, NotifyMsgType type) {
  if (!hasSubscribers()) return;
  // Keeps the state alive should a subscriber destroy this notifier.
  std::shared_ptr<NotifierState> state = state_;
  CriticalSection::Lock lock(state->cs);
  ++state->deliveryDepth;
  const std::size_t count = state->entries.size();
  for (std::size_t i = 0; i < count && i < state->entries.size(); ++i) {
    NotifierState::Entry* e = state->entries[i].get();
    if (e->live && (e->filter == anyNotifyMsgType || e->filter == type)) e->callback(event, type);
  }
  if (--state->deliveryDepth == 0 && state->needsCompacting) state->compact();
}

void NotifierBase::dropAllSubscribers() {
  if (!state_) return;
  CriticalSection::Lock lock(state_->cs);
  for (auto& e : state_->entries) e->live = false;
  state_->liveCount.store(0, std::memory_order_relaxed);
  if (state_->deliveryDepth == 0)
    state_->entries.clear();
  else
    state_->needsCompacting = true;
}

Notifier::~Notifier() {
  if (hasSubscribers()) {
    NotifyMsg gone;
    gone.type = NotifyMsgTypeDictionary::objectDestroyedMsgType();
    deliver(gone, gone.type);
  }
  dropAllSubscribers();
}

void Notifier::issueNotification(NotifyMsg msg, NotifyMsgType type) {
  msg.type = type;
  deliver(msg, type);
}
