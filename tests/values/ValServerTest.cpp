#include "values/ValServer.h"

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "values/ValClient.h"

namespace {

// What a client heard: "pre" or "changed", the server, and its value then.
struct Heard {
  std::string what;
  ValServer<double>* server;
  double value;
  bool operator==(const Heard&) const = default;
};
using HeardList = std::vector<Heard>;

struct Listener {
  HeardList heard;
  ValObserver<double> client{[this](ValServer<double>* s) {
                               heard.push_back({"changed", s, s->getValue()});
                             },
                             [this](ValServer<double>* s) {
                               heard.push_back({"pre", s, s->getValue()});
                             }};
};

// A server that judges its own values: assignment must go through the override.
struct EvenOnly : ValServer<double> {
  using ValServer<double>::operator=;
  bool updateAndNotify(const double& value) override {
    return static_cast<long>(value) % 2 == 0 && ValServer<double>::updateAndNotify(value);
  }
};

TEST(ValServerTest, AssignmentNotifiesEveryTimeAndQuietStoresDoNot) {
  ValServer<double> zoom(1.0);
  Listener a, b;
  a.client.registerWith(&zoom);
  b.client.registerWith(&zoom);
  zoom = 2.0;
  zoom = 2.0; // no equality test: the same value is news again
  EXPECT_TRUE(zoom.updateAndNotify(3.0));
  zoom.preNotifyValChanged();
  zoom.setValueQuietly(5.0);
  zoom.notifyValChanged();
  EXPECT_EQ(a.heard, (HeardList{{"changed", &zoom, 2.0},
                                {"changed", &zoom, 2.0},
                                {"changed", &zoom, 3.0},
                                {"pre", &zoom, 3.0},
                                {"changed", &zoom, 5.0}}));
  EXPECT_EQ(b.heard, a.heard);

  // A server that judges its own values: assignment goes through the override.
  EvenOnly even;
  even = 3.0;
  EXPECT_EQ(even.getValue(), 0.0);
  even = 4.0;
  EXPECT_EQ(even.getValue(), 4.0);
}

TEST(ValClientTest, DisabledClientHearsNothingButStaysSubscribed) {
  ValServer<double> v;
  Listener l;
  l.client.registerWith(&v);
  l.client.disable();
  l.client.disable();
  v = 1.0;
  v.preNotifyValChanged();
  l.client.enable();
  v = 2.0;
  EXPECT_TRUE(l.heard.empty());
  EXPECT_EQ(v.subscriberCount(), 1u);
  l.client.enable();
  l.client.enable(); // never below zero
  v = 3.0;
  l.client.disable();
  v = 4.0;
  EXPECT_EQ(l.heard, (HeardList{{"changed", &v, 3.0}}));
}

TEST(ValClientTest, FollowsAtMostOneServer) {
  ValServer<double> first, second;
  Listener l;
  l.client.registerWith(&first);
  l.client.registerWith(&first); // the same server: still one subscription
  EXPECT_EQ(first.subscriberCount(), 1u);
  first = 1.0;

  l.client.registerWith(&second);
  EXPECT_EQ(first.subscriberCount(), 0u);
  first = 2.0;
  second = 3.0;

  l.client.registerWith(nullptr);
  EXPECT_EQ(second.subscriberCount(), 0u);
  second = 4.0;
  EXPECT_EQ(l.heard, (HeardList{{"changed", &first, 1.0}, {"changed", &second, 3.0}}));
}

TEST(ValClientTest, WhicheverGoesFirstTheOtherForgetsIt) {
  ValServer<double> v;
  {
    Listener l;
    l.client.registerWith(&v);
  }
  EXPECT_FALSE(v.hasSubscribers());
  v = 1.0;

  Listener enabled, disabled;
  disabled.client.disable();
  {
    ValServer<double> gone;
    enabled.client.registerWith(&gone);
    disabled.client.registerWith(&gone);
  }
  for (Listener* l : {&enabled, &disabled}) {
    EXPECT_EQ(l->client.getServer(), nullptr);
    EXPECT_TRUE(l->heard.empty());
  }
  // Free to follow another server; re-registering must not be mistaken for "already held".
  ValServer<double> next;
  enabled.client.registerWith(&next);
  next = 7.0;
  EXPECT_EQ(enabled.heard, (HeardList{{"changed", &next, 7.0}}));
}

struct Multi : MultiValClient<double> {
  HeardList heard;
  void valChangedNtfy(ValServer<double>* s) override { heard.push_back({"changed", s, s->getValue()}); }
  void valPreChangedNtfy(ValServer<double>* s) override { heard.push_back({"pre", s, s->getValue()}); }
};

TEST(MultiValClientTest, HearsEachRegisteredServerOnceUntilItGoes) {
  ValServer<double> x, z;
  auto y = std::make_unique<ValServer<double>>();
  Multi m;
  for (ValServer<double>* s : {&x, y.get(), &x, static_cast<ValServer<double>*>(nullptr), &z}) m.registerWith(s);
  EXPECT_EQ(m.registrationCount(), 3u);
  x = 1.0;
  y->preNotifyValChanged();
  ValServer<double>* gone = y.get();
  y.reset();
  EXPECT_FALSE(m.isRegisteredWith(gone));
  m.deregisterFrom(&x);
  EXPECT_FALSE(x.hasSubscribers());
  x = 3.0;
  z = 2.0;
  m.disable();
  z = 4.0;
  EXPECT_EQ(m.heard, (HeardList{{"changed", &x, 1.0}, {"pre", gone, 0.0}, {"changed", &z, 2.0}}));
  EXPECT_EQ(m.registrationCount(), 1u);
}

// A server the client holds is followed as its owner: heard first, before
// subscribers, through the same disable count, with no subscription.
struct Holder : Multi {
  ValServer<double> own;
  Holder() { followOwn(&own); }
};

TEST(MultiValClientTest, FollowsAServerItHoldsWithoutSubscribing) {
  Holder h;
  Listener outside;
  outside.client.registerWith(&h.own);
  EXPECT_EQ(h.own.subscriberCount(), 1u) << "only the outside listener";
  EXPECT_TRUE(h.isRegisteredWith(&h.own));
  h.followOwn(&h.own);
  EXPECT_EQ(h.registrationCount(), 1u);

  h.own.preNotifyValChanged();
  h.own = 1.0;
  h.disable();
  h.own = 2.0;
  h.enable();
  EXPECT_EQ(h.heard, (HeardList{{"pre", &h.own, 0.0}, {"changed", &h.own, 1.0}}));
  EXPECT_EQ(outside.heard.size(), 3u) << "subscribers hear every message still";

  h.deregisterFrom(&h.own);
  h.own = 3.0;
  EXPECT_EQ(h.heard.size(), 2u);
  EXPECT_EQ(h.registrationCount(), 0u);
}

} // namespace
