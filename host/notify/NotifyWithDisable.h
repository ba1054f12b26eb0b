#pragma once
#include "host/FxHostApi.h"
#include "host/notify/Notifier.h"

// A notifier with a suspension count: while the count is non-zero nothing is
// sent. Programmatic changes are bracketed by suspend/resume so that
// observers do not re-enter whoever made the change.
class FXHOST_API NotifyWithDisable {
public:
  NotifyWithDisable() = default;
  NotifyWithDisable(const NotifyWithDisable&) {}
  NotifyWithDisable& operator=(const NotifyWithDisable&) { return *this; }
  virtual ~NotifyWithDisable();

  Notifier& getNotify() noexcept { return notifier_; }
  const Notifier& getNotify() const noexcept { return notifier_; }

  void suspendNotifications() noexcept { ++suspended_; }
  // Never below zero.
  void resumeNotifications() noexcept {
    if (suspended_ > 0) --suspended_;
  }
  int notificationSuspendCount() const noexcept { return suspended_; }
  bool notificationsSuspended() const noexcept { return suspended_ != 0; }

  // Sends the text with a null object unless suspended; returns whether sent.
  bool issueNotification(const LightweightString<char>& text, NotifyMsgType type);

private:
  Notifier notifier_;
  int suspended_ = 0;
};

// Keeps notifications off for a scope, as EasyBackup keeps one undo step
// open: suspended on construction, resumed however the scope is left. For a
// notifier, or anything that suspends and resumes as one does; a null source
// is let be.
template <class Source>
class NotificationsSuspended {
public:
  explicit NotificationsSuspended(Source* source) noexcept : source_(source) {
    if (source_) source_->suspendNotifications();
  }
  explicit NotificationsSuspended(Source& source) noexcept : NotificationsSuspended(&source) {}
  ~NotificationsSuspended() {
    if (source_) source_->resumeNotifications();
  }
  NotificationsSuspended(const NotificationsSuspended&) = delete;
  NotificationsSuspended& operator=(const NotificationsSuspended&) = delete;

private:
  Source* source_;
};

// Keeps a client's subscription handles; releasing them ends the subscriptions.
class FXHOST_API Notifiable {
public:
  Notifiable() = default;
  Notifiable(const Notifiable&) {}
  Notifiable& operator=(const Notifiable&) { return *this; }
  virtual ~Notifiable();

  std::size_t subscriptionCount() const noexcept { return subscriptions_.size(); }

protected:
  void keepSubscription(SubscriptionHandle handle) { subscriptions_.push_back(std::move(handle)); }
  void releaseSubscriptions();

private:
  std::vector<SubscriptionHandle> subscriptions_;
};
