#include "host/notify/NotifyWithDisable.h"

#include <memory>

#include <gtest/gtest.h>

#include "host/notify/EnableDisable.h"
#include "tests/support/NotifyRecorder.h"

namespace {

const NotifyMsgType changed = NotifyMsgTypeDictionary::instance().intern("notifyWithDisableTestChanged");

TEST(NotifyWithDisableTest, SendsTextWithNoObject) {
  NotifyWithDisable sender;
  NotifyMsg heard;
  auto h = sender.getNotify().registerInternal([&](const NotifyMsg& m) {
    heard = m;
    return 0;
  });
  EXPECT_TRUE(sender.issueNotification("moved", changed));
  EXPECT_EQ(heard.text, "moved");
  EXPECT_EQ(heard.type, changed);
  EXPECT_FALSE(heard.object);
}

TEST(NotifyWithDisableTest, SuspensionNestsAndNeverGoesBelowZero) {
  NotifyWithDisable sender;
  testsupport::NotifyRecorder rec(sender.getNotify());

  sender.suspendNotifications();
  sender.suspendNotifications();
  EXPECT_FALSE(sender.issueNotification("a", changed));
  sender.resumeNotifications();
  EXPECT_TRUE(sender.notificationsSuspended());
  EXPECT_FALSE(sender.issueNotification("b", changed));
  sender.resumeNotifications();
  EXPECT_TRUE(sender.issueNotification("c", changed));

  // Surplus resumes are ignored: one suspend still suspends.
  sender.resumeNotifications();
  sender.resumeNotifications();
  EXPECT_EQ(sender.notificationSuspendCount(), 0);
  sender.suspendNotifications();
  EXPECT_FALSE(sender.issueNotification("d", changed));

  ASSERT_EQ(rec.heard.size(), 1u);
  EXPECT_EQ(rec.heard[0].text, "c");
  EXPECT_EQ(rec.heard[0].type, "notifyWithDisableTestChanged");
}

TEST(NotifyWithDisableTest, TakesTheCriticalSectionOnlyWhenSomeoneListens) {
  NotifyWithDisable sender;
  CriticalSection& cs = sender.getNotify().criticalSection();
  const uint64_t start = cs.timesEntered();
  sender.issueNotification("unheard", changed);
  EXPECT_EQ(cs.timesEntered(), start);

  testsupport::NotifyRecorder rec(sender.getNotify());
  const uint64_t subscribed = cs.timesEntered();
  sender.suspendNotifications();
  sender.issueNotification("suspended", changed);
  EXPECT_EQ(cs.timesEntered(), subscribed);
  sender.resumeNotifications();
  sender.issueNotification("heard", changed);
  EXPECT_GT(cs.timesEntered(), subscribed);
}

TEST(EnableDisableTest, DisabledWhileAboveZeroAndNeverBelow) {
  EnableDisable e;
  e.enable();
  EXPECT_EQ(e.disableCount(), 0);
  e.disable();
  e.disable();
  e.enable();
  EXPECT_FALSE(e.isEnabled());
  e.enable();
  EXPECT_TRUE(e.isEnabled());
}

// A client that keeps its subscriptions as counted handles.
class Client : public Notifiable {
public:
  void follow(Notifier& n, bool detachOnFirst = false) {
    keepSubscription(n.registerInternal([this, detachOnFirst](const NotifyMsg&) {
      ++heard;
      if (detachOnFirst) releaseSubscriptions();
      return 0;
    }));
  }
  void detach() { releaseSubscriptions(); }
  int heard = 0;
};

TEST(NotifiableTest, ReleasingOrDestroyingTheClientEndsItsSubscriptions) {
  Notifier a, b;
  auto client = std::make_unique<Client>();
  client->follow(a);
  client->follow(b);
  EXPECT_EQ(client->subscriptionCount(), 2u);
  client->detach();
  EXPECT_EQ(client->subscriptionCount(), 0u);
  EXPECT_FALSE(a.hasSubscribers());

  client->follow(a);
  client.reset();
  EXPECT_FALSE(a.hasSubscribers());
  a.issueNotification(NotifyMsg("after"), changed); // must not reach the dead client
}

TEST(NotifiableTest, ClientMayDetachFromInsideADelivery) {
  Notifier n;
  Client client;
  client.follow(n, true);
  client.follow(n);
  n.issueNotification(NotifyMsg("first"), changed);
  n.issueNotification(NotifyMsg("second"), changed);
  EXPECT_EQ(client.heard, 1);
  EXPECT_FALSE(n.hasSubscribers());
}

TEST(NotifiableTest, ClientOutlivingItsNotifierReleasesSafely) {
  Client client;
  {
    Notifier n;
    client.follow(n);
  }
  EXPECT_EQ(client.heard, 1) << "hears the destruction message";
  client.detach();
}

} // namespace
