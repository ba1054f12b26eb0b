#pragma once
#include <algorithm>
#include <functional>
#include <vector>

#include "host/notify/EnableDisable.h"
#include "values/ValServer.h"

// A client of at most one value server. While its disable count is 1 or more
// it hears nothing but stays subscribed.
template <class T>
class ValClient : public EnableDisable {
public:
  ValClient() = default;
  ValClient(const ValClient&) = delete;
  ValClient& operator=(const ValClient&) = delete;
  virtual ~ValClient() = default;

  void registerWith(ValServer<T>* server) {
    if (server == server_) return;
    subscription_.reset();
    server_ = server;
    if (server_)
      subscription_ = server_->registerInternal([this](const NotifierEvent<T>& e) { return handleValueChange(e); });
  }
  ValServer<T>* getServer() const noexcept { return server_; }

  int handleValueChange(const NotifierEvent<T>& event) {
    if (event.type == NotifyMsgTypeDictionary::objectDestroyedMsgType()) {
      server_ = nullptr;
      subscription_.reset();
    } else if (event.type == ValServerBase::valChangedMsgType_) {
      if (disableCount() < 1) valChangedNtfy(static_cast<ValServer<T>*>(event.source));
    } else if (event.type == ValServerBase::preValChangedMsgType_) {
      if (disableCount() < 1) valPreChangedNtfy(static_cast<ValServer<T>*>(event.source));
    }
    return 0;
  }

  virtual void valChangedNtfy(ValServer<T>*) {}
  virtual void valPreChangedNtfy(ValServer<T>*) {}

private:
  ValServer<T>* server_ = nullptr;
  SubscriptionHandle subscription_;
};

// A client that forwards the notifications to callbacks of its owner.
template <class T>
class ValObserver : public ValClient<T> {
public:
  using Callback = std::function<void(ValServer<T>*)>;
  explicit ValObserver(Callback changed, Callback preChanged = {})
      : changed_(std::move(changed)), preChanged_(std::move(preChanged)) {}
  void valChangedNtfy(ValServer<T>* s) override {
    if (changed_) changed_(s);
  }
  void valPreChangedNtfy(ValServer<T>* s) override {
    if (preChanged_) preChanged_(s);
  }

private:
  Callback changed_;
  Callback preChanged_;
};

// A client that may be registered with several servers at once. A server the
// client itself holds is followed as its owner (followOwn): it counts as a
// registration but costs no subscription.
template <class T>
class MultiValClient : public EnableDisable, public ValOwner<T> {
public:
  MultiValClient() = default;
  // Subscriptions belong to the object, not to its value.
  MultiValClient(const MultiValClient&) {}
  MultiValClient& operator=(const MultiValClient&) { return *this; }
  virtual ~MultiValClient() = default;

  // Adds the server; registering with one already held does nothing.
  void registerWith(ValServer<T>* server) {
    if (!server || isRegisteredWith(server)) return;
    SubscriptionHandle h = server->registerInternal([this](const NotifierEvent<T>& e) { return handleValueChange(e); });
    registrations_.push_back({server, server, std::move(h)});
  }
  // Follows a server that lives inside this client, as its owner. The server
  // must not outlive the registration (deregisterFrom, or this client going).
  void followOwn(ValServer<T>* server) {
    if (!server || isRegisteredWith(server)) return;
    server->setOwner(this);
    registrations_.push_back({server, server, {}});
  }
  void deregisterFrom(ValServer<T>* server) {
    std::erase_if(registrations_, [server](const Registration& r) {
      if (r.server != server) return false;
      if (!r.subscription) server->setOwner(nullptr);
      return true;
    });
  }
  bool isRegisteredWith(const ValServer<T>* server) const {
    return std::any_of(registrations_.begin(), registrations_.end(),
                       [server](const Registration& r) { return r.server == server; });
  }
  std::size_t registrationCount() const noexcept { return registrations_.size(); }
  // Room for this many servers without growing the list again.
  void reserveRegistrations(std::size_t n) { registrations_.reserve(n); }

  int handleValueChange(const NotifierEvent<T>& event) {
    if (event.type == NotifyMsgTypeDictionary::objectDestroyedMsgType()) {
      // The server is mid-destruction: compare addresses only.
      std::erase_if(registrations_, [&](const Registration& r) { return r.notifier == event.source; });
    } else {
      dispatch(static_cast<ValServer<T>*>(event.source), event.type);
    }
    return 0;
  }
  void ownedValNotify(ValServer<T>* server, NotifyMsgType type) override { dispatch(server, type); }

  virtual void valChangedNtfy(ValServer<T>*) {}
  virtual void valPreChangedNtfy(ValServer<T>*) {}

private:
  void dispatch(ValServer<T>* server, NotifyMsgType type) {
    if (disableCount() >= 1) return;
    if (type == ValServerBase::valChangedMsgType_)
      valChangedNtfy(server);
    else if (type == ValServerBase::preValChangedMsgType_)
      valPreChangedNtfy(server);
  }

  struct Registration {
    ValServer<T>* server;
    const NotifierEx<T>* notifier;   // the same object, for the destruction message
    SubscriptionHandle subscription; // none for a server followed as its owner
  };
  std::vector<Registration> registrations_;
};
