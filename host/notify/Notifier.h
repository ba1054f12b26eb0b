#pragma once
#include <cstdint>
#include <functional>
#include <memory>
#include <type_traits>

#include "host/FxHostApi.h"
#include "host/core/Ptr.h"
#include "host/core/iObject.h"
#include "host/notify/CriticalSection.h"
#include "host/notify/NotifyMsg.h"

struct NotifierState;

// A counted subscription handle: the subscription lasts while a handle holds
// it. Releasing the last handle (or calling release()) ends it. A handle whose
// notifier died first is inert.
class FXHOST_API Subscription : public iObject {
public:
  ~Subscription() override;
  void release();
  bool active() const;

private:
  friend class NotifierBase;
  Subscription(std::weak_ptr<NotifierState> state, uint64_t id) : state_(std::move(state)), id_(id) {}
  std::weak_ptr<NotifierState> state_;
  uint64_t id_;
};
using SubscriptionHandle = Ux::Ptr<Subscription>;

// Type-erased core of every notifier: an ordered subscriber list guarded by a
// critical section, which is held while a notification is delivered.
// Subscribers may subscribe or unsubscribe from inside a delivery: a new
// subscriber hears the next notification, a removed one hears nothing more.
class FXHOST_API NotifierBase {
public:
  using RawCallback = std::function<int(const void* event, NotifyMsgType type)>;

  NotifierBase();
  // A copy starts with no subscribers of its own.
  NotifierBase(const NotifierBase&);
  NotifierBase& operator=(const NotifierBase&) { return *this; }
  virtual ~NotifierBase();

  // Subscribes a callback to messages of `filter` (anyNotifyMsgType: all).
  SubscriptionHandle registerInternal(RawCallback callback, NotifyMsgType filter = anyNotifyMsgType);
  bool hasSubscribers() const noexcept;
  std::size_t subscriberCount() const noexcept;
  CriticalSection& criticalSection() const;

protected:
  // Delivers to every matching subscriber, in subscription order, with the
  // critical section held. Does nothing (and takes no lock) without
  // subscribers.
  void deliverRaw(const void* event, NotifyMsgType type);
  // Ends every subscription; their handles become inert.
  void dropAllSubscribers();

private:
  NotifierState& state() const;
  mutable std::shared_ptr<NotifierState> state_; // made by the first subscription
};

// A notifier of events of one type.
template <class Event>
class NotifierT : public NotifierBase {
public:
  using Callback = std::function<int(const Event&)>;

  // Any callable taking the event. It is kept as it is, not wrapped in a
  // Callback first: a lambda holding one pointer then needs no allocation of
  // its own, which counts when every record subscribes to its values.
  template <class F>
  requires std::is_invocable_r_v<int, const F&, const Event&>
      SubscriptionHandle registerInternal(F callback, NotifyMsgType filter = anyNotifyMsgType) {
    return NotifierBase::registerInternal(
        [cb = std::move(callback)](const void* event, NotifyMsgType) { return cb(*static_cast<const Event*>(event)); },
        filter);
  }
  template <class C>
  SubscriptionHandle registerInternal(C* object, int (C::*method)(const Event&),
                                      NotifyMsgType filter = anyNotifyMsgType) {
    return registerInternal([object, method](const Event& e) { return (object->*method)(e); }, filter);
  }

protected:
  void deliver(const Event& event, NotifyMsgType type) { deliverRaw(&event, type); }
};

// The notifier of plain NotifyMsg messages.
class FXHOST_API Notifier : public NotifierT<NotifyMsg> {
public:
  Notifier() = default;
  Notifier(const Notifier& o) : NotifierT<NotifyMsg>(o) {}
  Notifier& operator=(const Notifier&) { return *this; }
  // Tells subscribers that the notifier is going (objectDestroyed).
  ~Notifier() override;

  // Stamps the type on the message and delivers it.
  void issueNotification(NotifyMsg msg, NotifyMsgType type);
};

// The message sent to an event's subscribers by NotifierEx: type, value and
// the sending notifier.
template <class T>
class NotifierEx;

template <class T>
struct NotifierEvent {
  NotifyMsgType type = anyNotifyMsgType;
  T value{};
  NotifierEx<T>* source = nullptr;
};

// A notifier of a value of type T (the base of value servers).
template <class T>
class NotifierEx : public NotifierT<NotifierEvent<T>> {
public:
  NotifierEx() = default;
  NotifierEx(const NotifierEx& o) : NotifierT<NotifierEvent<T>>(o) {}
  NotifierEx& operator=(const NotifierEx&) { return *this; }
  ~NotifierEx() override {
    if (this->hasSubscribers()) {
      NotifierEvent<T> gone;
      gone.type = NotifyMsgTypeDictionary::objectDestroyedMsgType();
      gone.source = this;
      this->deliver(gone, gone.type);
    }
    this->dropAllSubscribers();
  }

  // Sets the event's type and source, then delivers it.
  void issueNotification(NotifierEvent<T>& event, NotifyMsgType type) {
    event.type = type;
    event.source = this;
    this->deliver(event, type);
  }
};
