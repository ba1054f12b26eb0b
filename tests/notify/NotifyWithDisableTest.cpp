#include "host/notify/NotifyWithDisable.h"

#include <memory>

#include <gtest/gtest.h>

#include "tests/support/NotifyRecorder.h"

namespace {

const NotifyMsgType changed = NotifyMsgTypeDictionary::instance().intern("notifyWithDisableTestChanged");

TEST(NotifyWithDisableTest, SuspensionNestsAndNeverGoesBelowZero) {
  NotifyWithDisable sender;
  testsupport::NotifyRecorder rec(sender.getNotify());
  CriticalSection& cs = sender.getNotify().criticalSection();

  sender.suspendNotifications();
  sender.suspendNotifications();
  const uint64_t entries = cs.timesEntered();
  EXPECT_FALSE(sender.issueNotification("a", changed));
  EXPECT_EQ(cs.timesEntered(), entries) << "suspended, the lock is not taken";
  sender.resumeNotifications();
  EXPECT_FALSE(sender.issueNotification("b", changed));
  sender.resumeNotifications();
  EXPECT_TRUE(sender.issueNotification("c", changed));

  // Surplus resumes are ignored: one suspend still suspends.
  sender.resumeNotifications();
  sender.resumeNotifications();
  sender.suspendNotifications();
  EXPECT_FALSE(sender.issueNotification("d", changed));

  ASSERT_EQ(rec.heard.size(), 1u);
  EXPECT_EQ(rec.heard[0].text, "c");
  EXPECT_EQ(rec.heard[0].type, "notifyWithDisableTestChanged");
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
  client->detach();
  EXPECT_EQ(client->subscriptionCount(), 0u);
  EXPECT_FALSE(a.hasSubscribers());

  client->follow(a);
  client.reset();
  EXPECT_FALSE(a.hasSubscribers());
  a.issueNotification(NotifyMsg("after"), changed); // must not reach the dead client

  // From inside a delivery too.
  Client inside;
  inside.follow(a, true);
  inside.follow(a);
  a.issueNotification(NotifyMsg("first"), changed);
  a.issueNotification(NotifyMsg("second"), changed);
  EXPECT_EQ(inside.heard, 1);
  EXPECT_FALSE(a.hasSubscribers());

  // Outliving its notifier, it hears the destruction and releases safely.
  Client outliving;
  {
    Notifier n;
    outliving.follow(n);
  }
  EXPECT_EQ(outliving.heard, 1);
  outliving.detach();
}

} // namespace
