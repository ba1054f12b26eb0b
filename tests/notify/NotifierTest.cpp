#include "host/notify/Notifier.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

const NotifyMsgType typeA = NotifyMsgTypeDictionary::instance().intern("notifierTestA");
const NotifyMsgType typeB = NotifyMsgTypeDictionary::instance().intern("notifierTestB");

// Each subscriber writes "<who>:<text>" (the type's name for the destruction
// message) into one shared log, so order across subscribers is visible.
struct Log {
  std::vector<std::string> lines;
  Notifier::Callback as(const std::string& who) {
    return [this, who](const NotifyMsg& m) {
      const bool gone = m.type == NotifyMsgTypeDictionary::objectDestroyedMsgType();
      lines.push_back(who + ":" + (gone ? std::string("destroyed") : m.text.str()));
      return 0;
    };
  }
};

using Lines = std::vector<std::string>;

TEST(NotifierTest, DeliversInSubscriptionOrderToTheTypesAsked) {
  auto& dict = NotifyMsgTypeDictionary::instance();
  EXPECT_EQ(dict.intern("notifierTestA"), typeA);
  EXPECT_EQ(dict.nameOf(typeB), "notifierTestB");
  EXPECT_TRUE(dict.nameOf(-1).empty());

  Notifier n;
  Log log;
  NotifyMsgType seen = anyNotifyMsgType;
  auto onlyA = n.registerInternal(log.as("a"), typeA);
  auto stamp = n.registerInternal([&](const NotifyMsg& m) {
    seen = m.type;
    return 0;
  });
  auto onlyB = n.registerInternal(log.as("b"), typeB);
  auto all = n.registerInternal(log.as("*"));
  n.issueNotification(NotifyMsg("x"), typeA);
  EXPECT_EQ(seen, typeA);
  n.issueNotification(NotifyMsg("y"), typeB);
  EXPECT_EQ(log.lines, (Lines{"a:x", "*:x", "b:y", "*:y"}));
}

TEST(NotifierTest, SubscriptionLastsWhileAHandleHoldsIt) {
  Notifier n;
  Log log;
  SubscriptionHandle h = n.registerInternal(log.as("s"));
  SubscriptionHandle copy = h;
  h.reset();
  n.issueNotification(NotifyMsg("kept"), typeA);
  copy.reset();
  EXPECT_FALSE(n.hasSubscribers());
  n.issueNotification(NotifyMsg("gone"), typeA);

  // release() ends it even while handles remain, and a second release is harmless.
  SubscriptionHandle again = n.registerInternal(log.as("r"));
  again->release();
  again->release();
  EXPECT_FALSE(again->active());
  n.issueNotification(NotifyMsg("after"), typeA);
  EXPECT_EQ(log.lines, (Lines{"s:kept"}));
}

TEST(NotifierTest, SubscribersJoinFromTheNextMessageAndLeaveAtOnce) {
  Notifier n;
  Log log;
  std::vector<SubscriptionHandle> added;
  SubscriptionHandle self, later;
  self = n.registerInternal([&](const NotifyMsg& m) {
    log.lines.push_back("self:" + m.text.str());
    added.push_back(n.registerInternal(log.as("new")));
    if (m.text == "two") {
      self.reset();  // itself, while running
      later.reset(); // one not yet reached
    }
    return 0;
  });
  later = n.registerInternal(log.as("later"));
  n.issueNotification(NotifyMsg("one"), typeA);
  n.issueNotification(NotifyMsg("two"), typeA);
  n.issueNotification(NotifyMsg("three"), typeA);
  EXPECT_EQ(log.lines, (Lines{"self:one", "later:one", "self:two", "new:two", "new:three", "new:three"}));
}

TEST(NotifierTest, NestedNotificationFromADeliveryReachesEveryone) {
  Notifier n;
  Log log;
  auto h1 = n.registerInternal([&](const NotifyMsg& m) {
    log.lines.push_back("1:" + m.text.str());
    if (m.text == "outer") n.issueNotification(NotifyMsg("inner"), typeB);
    return 0;
  });
  auto h2 = n.registerInternal(log.as("2"));
  n.issueNotification(NotifyMsg("outer"), typeA);
  EXPECT_EQ(log.lines, (Lines{"1:outer", "1:inner", "2:inner", "2:outer"}));
}

// Subscribers that arrive mid-delivery while the list is full wait apart:
// they must still hear a nested message, in order, and leave when told.
TEST(NotifierTest, ManyJoiningDuringADeliveryKeepTheirOrder) {
  Notifier n;
  Log log;
  std::vector<SubscriptionHandle> added;
  auto first = n.registerInternal([&](const NotifyMsg& m) {
    if (m.text != "outer") return 0;
    for (int i = 0; i < 9; ++i) added.push_back(n.registerInternal(log.as(std::to_string(i))));
    added[4].reset(); // one waiting leaves before it hears anything
    n.issueNotification(NotifyMsg("inner"), typeB);
    return 0;
  });
  auto last = n.registerInternal(log.as("last"));
  n.issueNotification(NotifyMsg("outer"), typeA);
  const Lines heard{"last:inner", "0:inner", "1:inner", "2:inner", "3:inner",
                    "5:inner",    "6:inner", "7:inner", "8:inner", "last:outer"};
  EXPECT_EQ(log.lines, heard);
  log.lines.clear();
  added[7].reset();
  n.issueNotification(NotifyMsg("next"), typeA);
  EXPECT_EQ(log.lines, (Lines{"last:next", "0:next", "1:next", "2:next", "3:next", "5:next", "6:next", "8:next"}));
  EXPECT_EQ(n.subscriberCount(), 9u);
}

TEST(NotifierTest, DestroyedNotifierSaysSoFirstThenLeavesHandlesInert) {
  auto n = std::make_unique<Notifier>();
  Log log;
  SubscriptionHandle any = n->registerInternal(log.as("any"));
  SubscriptionHandle filtered = n->registerInternal(log.as("filtered"), typeA);
  SubscriptionHandle gone = n->registerInternal(log.as("gone"), NotifyMsgTypeDictionary::objectDestroyedMsgType());
  n.reset();
  EXPECT_EQ(log.lines, (Lines{"any:destroyed", "gone:destroyed"}));
  EXPECT_FALSE(any->active());
  EXPECT_FALSE(filtered->active());
  any->release();

  // Destroyed by a subscriber in the middle of a delivery.
  log.lines.clear();
  n = std::make_unique<Notifier>();
  SubscriptionHandle killer = n->registerInternal([&](const NotifyMsg& m) {
    log.lines.push_back("killer:" + std::string(m.text == "go" ? "go" : "other"));
    if (m.text == "go") n.reset();
    return 0;
  });
  SubscriptionHandle after = n->registerInternal(log.as("after"));
  n->issueNotification(NotifyMsg("go"), typeA);
  EXPECT_EQ(log.lines, (Lines{"killer:go", "killer:other", "after:destroyed"}));
  EXPECT_FALSE(after->active());
}

TEST(NotifierTest, OtherThreadsWaitWhileADeliveryRuns) {
  Notifier n;
  std::atomic<bool> registered{false};
  bool doneDuringDelivery = true;
  SubscriptionHandle fromThread;
  std::thread worker;
  auto h = n.registerInternal([&](const NotifyMsg&) {
    worker = std::thread([&] {
      fromThread = n.registerInternal([](const NotifyMsg&) { return 0; });
      registered = true;
    });
    // Long enough for an unguarded list to be changed under us.
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    doneDuringDelivery = registered;
    return 0;
  });
  n.issueNotification(NotifyMsg("slow"), typeA);
  worker.join();
  EXPECT_FALSE(doneDuringDelivery);
  EXPECT_EQ(n.subscriberCount(), 2u);
}

} // namespace
