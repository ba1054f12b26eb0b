#include "host/notify/Notifier.h"

#include <algorithm>
#include <atomic>
#include <vector>

struct NotifierState {
  struct Entry {
    uint64_t id;
    NotifyMsgType filter;
    bool live = true;
    NotifierBase::RawCallback callback;
  };

  CriticalSection cs;
  // The subscribers in the order of their ids, which only grow. They sit in
  // the list itself (one allocation for all of them, not one each), so the
  // list must not move while a callback runs from it: a subscriber that
  // arrives during a delivery and finds the list full waits in `later`,
  // where each stays put, and joins the list when the outermost delivery
  // ends. Once one waits there, every newer one does, keeping the order.
  std::vector<Entry> entries;
  std::vector<std::unique_ptr<Entry>> later;
  std::atomic<std::size_t> liveCount{0};
  uint64_t nextId = 1;
  int deliveryDepth = 0;
  bool needsCompacting = false;

  Entry* find(uint64_t id) {
    auto it = std::lower_bound(entries.begin(), entries.end(), id,
                               [](const Entry& e, uint64_t wanted) { return e.id < wanted; });
    if (it != entries.end() && it->id == id) return &*it;
    auto lt = std::lower_bound(later.begin(), later.end(), id,
                               [](const std::unique_ptr<Entry>& e, uint64_t wanted) { return e->id < wanted; });
    return lt != later.end() && (*lt)->id == id ? lt->get() : nullptr;
  }
  void add(Entry entry) {
    if (deliveryDepth > 0 && (!later.empty() || entries.size() == entries.capacity()))
      later.push_back(std::make_unique<Entry>(std::move(entry)));
    else
      entries.push_back(std::move(entry));
  }
  void remove(uint64_t id) {
    CriticalSection::Lock lock(cs);
    Entry* e = find(id);
    if (!e || !e->live) return;
    e->live = false;
    const std::size_t live = liveCount.fetch_sub(1, std::memory_order_relaxed) - 1;
    // An entry may be running right now: erased only outside deliveries, and
    // in bulk once the dead outnumber the live, so that letting go of many
    // subscriptions one by one costs no more than their number.
    needsCompacting = true;
    if (deliveryDepth == 0 && entries.size() > 2 * live + 8) compact();
  }
  // Outside deliveries only: entries may move.
  void compact() {
    for (auto& e : later) entries.push_back(std::move(*e));
    later.clear();
    std::erase_if(entries, [](const Entry& e) { return !e.live; });
    needsCompacting = false;
  }
  bool isLive(uint64_t id) {
    CriticalSection::Lock lock(cs);
    const Entry* e = find(id);
    return e && e->live;
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
  state_->add(NotifierState::Entry{id, filter, true, std::move(callback)});
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
  // Those who subscribe from here on hear the next notification, not this one.
  const std::size_t count = state->entries.size(), laterCount = state->later.size();
  auto offer = [&](NotifierState::Entry& e) {
    if (e.live && (e.filter == anyNotifyMsgType || e.filter == type)) e.callback(event, type);
  };
  for (std::size_t i = 0; i < count && i < state->entries.size(); ++i) offer(state->entries[i]);
  for (std::size_t i = 0; i < laterCount && i < state->later.size(); ++i) offer(*state->later[i]);
  if (--state->deliveryDepth == 0 && (state->needsCompacting || !state->later.empty())) state->compact();
}

void NotifierBase::dropAllSubscribers() {
  if (!state_) return;
  CriticalSection::Lock lock(state_->cs);
  for (auto& e : state_->entries) e.live = false;
  for (auto& e : state_->later) e->live = false;
  state_->liveCount.store(0, std::memory_order_relaxed);
  if (state_->deliveryDepth == 0) {
    state_->entries.clear();
    state_->later.clear();
  } else {
    state_->needsCompacting = true;
  }
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
