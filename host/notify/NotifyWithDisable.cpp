#include "host/notify/NotifyWithDisable.h"

NotifyWithDisable::~NotifyWithDisable() = default;

bool NotifyWithDisable::issueNotification(const LightweightString<char>& text, NotifyMsgType type) {
  if (suspended_ != 0) return false;
  // Most objects have nobody listening (a position record of thousands): no
  // message is made for nobody.
  if (notifier_.hasSubscribers()) notifier_.issueNotification(NotifyMsg(text), type);
  return true;
}

Notifiable::~Notifiable() { releaseSubscriptions(); }

void Notifiable::releaseSubscriptions() {
  // Moved out first: releasing may run code that looks at this client.
  std::vector<SubscriptionHandle> gone;
  gone.swap(subscriptions_);
  for (auto& h : gone) h->release();
}
