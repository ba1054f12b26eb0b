#pragma once
#include <vector>

#include "GrphToolApi.h"
#include "host/notify/Notifier.h"
#include "host/notify/NotifyWithDisable.h"

template <class T>
class ValServer;

// The message types of value servers: sent before and after a change.
class GRPHTOOL_API ValServerBase {
public:
  static const NotifyMsgType preValChangedMsgType_;
  static const NotifyMsgType valChangedMsgType_;
  virtual ~ValServerBase();
};

// Judges requested changes of the servers it manages: it may refuse one
// (false) or rewrite the value before it is stored.
template <class T>
class ValManagerBase : public NotifyWithDisable {
public:
  ~ValManagerBase() override = default;
  virtual bool requestValChange(ValServer<T>* server, T& value) = 0;
  // The server is going: forget it.
  virtual void releaseServer(ValServer<T>*) {}
};

// The object a value server belongs to, told of each message (before and
// after a change) ahead of any subscriber. A record that holds its values
// hears them this way rather than by subscribing to each: no subscription,
// and no subscriber list for a value nobody else watches.
template <class T>
class ValOwner {
public:
  virtual void ownedValNotify(ValServer<T>* server, NotifyMsgType type) = 0;

protected:
  ~ValOwner() = default;
};

// One observable value. Assigning a value asks the manager, if there is one,
// then stores the (possibly rewritten) value and tells every subscriber. No
// equality test is made: assigning the current value notifies again.
template <class T>
class ValServer : public NotifierEx<T>, public ValServerBase {
public:
  ValServer() = default;
  explicit ValServer(const T& value) : value_(value) {}
  ValServer(const ValServer&) = delete;
  ValServer& operator=(const ValServer&) = delete;
  ~ValServer() override {
    if (manager_) manager_->releaseServer(this);
  }

  ValServer& operator=(const T& value) {
    updateAndNotify(value);
    return *this;
  }
  // Returns whether the change was accepted.
  virtual bool updateAndNotify(const T& value) {
    if (!manager_) {
      value_ = value;
      notifyValChanged();
      return true;
    }
    T wanted = value;
    if (!manager_->requestValChange(this, wanted)) return false;
    value_ = wanted;
    notifyValChanged();
    return true;
  }
  // Stores without asking the manager and without telling anyone.
  void setValueQuietly(const T& value) { value_ = value; }

  const T& getValue() const noexcept { return value_; }
  operator const T&() const noexcept { return value_; }

  void setManager(ValManagerBase<T>* manager) noexcept { manager_ = manager; }
  ValManagerBase<T>* getManager() const noexcept { return manager_; }
  // The owner outlives the server (it holds it).
  void setOwner(ValOwner<T>* owner) noexcept { owner_ = owner; }

  void notifyValChanged() { send(valChangedMsgType_); }
  void preNotifyValChanged() { send(preValChangedMsgType_); }

private:
  void send(NotifyMsgType type) {
    if (owner_) owner_->ownedValNotify(this, type);
    if (!this->hasSubscribers()) return; // and so no lock is taken
    NotifierEvent<T> event;
    event.value = value_;
    this->issueNotification(event, type);
  }

  T value_{};
  ValManagerBase<T>* manager_ = nullptr;
  ValOwner<T>* owner_ = nullptr;
};
