#include "values/ValManager.h"

#include <algorithm>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "values/ValClient.h"

namespace {

// The shape of a view that manages its own values: the manager is a base,
// and each managed server is judged by one of the owner's member operations.
class View : public ValManager<double, View> {
public:
  // Zoom is kept within [0.25, 8].
  bool judgeZoom(ValServer<double>* server, double& value) {
    judged.push_back(server);
    value = std::clamp(value, 0.25, 8.0);
    return true;
  }
  // Negative sizes are refused outright.
  bool judgeSize(ValServer<double>* server, double& value) {
    judged.push_back(server);
    entriesWhileJudging = server->criticalSection().timesEntered();
    return value >= 0.0;
  }

  std::vector<ValServer<double>*> judged;
  uint64_t entriesWhileJudging = 0;
};

struct Counter {
  int count = 0;
  ValObserver<double> client{[this](ValServer<double>*) { ++count; }};
};

TEST(ValManagerTest, RefusalLeavesTheValueAndSubscribersUntouched) {
  View view;
  ValServer<double> size(10.0);
  view.manageServer(&size, &View::judgeSize);
  Counter c;
  c.client.registerWith(&size);
  const uint64_t entries = size.criticalSection().timesEntered();

  EXPECT_FALSE(size.updateAndNotify(-1.0));
  size = -2.0;
  EXPECT_EQ(size.getValue(), 10.0);
  EXPECT_EQ(c.count, 0);
  EXPECT_EQ(size.criticalSection().timesEntered(), entries);

  EXPECT_TRUE(size.updateAndNotify(3.0));
  EXPECT_EQ(size.getValue(), 3.0);
  EXPECT_EQ(c.count, 1);
  EXPECT_EQ(view.entriesWhileJudging, entries) << "judged before the server's lock is taken";
}

TEST(ValManagerTest, EachServerHasOneJudgeWhichMayRewriteTheValue) {
  View view;
  ValServer<double> zoom(1.0), size;
  view.manageServer(&zoom, &View::judgeZoom);
  view.manageServer(&size, &View::judgeSize);
  std::vector<double> heard;
  ValObserver<double> client([&](ValServer<double>* s) { heard.push_back(s->getValue()); });
  client.registerWith(&zoom);
  zoom = 100.0;
  zoom = 0.0;
  size = -5.0;
  EXPECT_EQ(heard, (std::vector<double>{8.0, 0.25}));
  EXPECT_EQ(size.getValue(), 0.0);
  EXPECT_EQ(view.judged, (std::vector<ValServer<double>*>{&zoom, &zoom, &size}));

  // Managing again replaces the judge rather than adding a second record.
  view.manageServer(&size, &View::judgeZoom);
  EXPECT_EQ(view.managedCount(), 2u);
  size = -5.0;
  EXPECT_EQ(size.getValue(), 0.25);

  // Taken over by another manager, a server is forgotten by the first: a
  // stale record would outlive the server (which tells only the second when
  // it goes) and be read again by the first's destructor.
  View second;
  second.manageServer(&size, &View::judgeSize);
  EXPECT_EQ(size.getManager(), &second);
  EXPECT_EQ(view.managedCount(), 1u);
  size = -1.0;
  EXPECT_EQ(size.getValue(), 0.25);
}

// A manager of View's kind that is not itself a View has no one to ask.
class NotAView : public ValManager<double, View> {};

TEST(ValManagerTest, WithoutARecordOrAnOwnerToAskEveryValueIsAccepted) {
  View view;
  ValServer<double> stranger(1.0), released;
  stranger.setManager(&view);
  stranger = -1.0;
  EXPECT_EQ(stranger.getValue(), -1.0);
  view.manageServer(&released, &View::judgeSize);
  view.releaseServer(&released);
  EXPECT_EQ(view.managedCount(), 0u);
  released = -1.0;
  EXPECT_EQ(released.getValue(), -1.0);
  EXPECT_TRUE(view.judged.empty());

  NotAView manager;
  ValServer<double> v;
  manager.manageServer(&v, &View::judgeSize);
  v = -1.0;
  EXPECT_EQ(v.getValue(), -1.0);
}

// The common case: an owner holding the very servers it manages.
class ViewWithValues : public View {
public:
  ViewWithValues() {
    manageServer(&zoom, &View::judgeZoom);
    manageServer(&size, &View::judgeSize);
  }
  ValServer<double> zoom{1.0};
  ValServer<double> size{1.0};
};

TEST(ValManagerTest, WhicheverGoesFirstTheOtherForgetsIt) {
  // The server first: the manager keeps judging the rest.
  {
    View view;
    auto v = std::make_unique<ValServer<double>>();
    ValServer<double> other;
    view.manageServer(v.get(), &View::judgeZoom);
    view.manageServer(&other, &View::judgeSize);
    v.reset();
    EXPECT_EQ(view.managedCount(), 1u);
    other = -1.0;
    EXPECT_EQ(other.getValue(), 0.0);
  }
  // The manager first, whether it still manages the server or released it.
  for (bool release : {false, true}) {
    ValServer<double> zoom(1.0);
    {
      View view;
      view.manageServer(&zoom, &View::judgeZoom);
      if (release) view.releaseServer(&zoom);
    }
    EXPECT_EQ(zoom.getManager(), nullptr) << release;
    if (zoom.getManager()) return zoom.setManager(nullptr); // else its destructor calls into the dead manager
    zoom = 100.0;
    EXPECT_EQ(zoom.getValue(), 100.0);
  }
  // An owner of its servers.
  Counter c;
  {
    ViewWithValues view;
    c.client.registerWith(&view.zoom);
    view.zoom = 20.0;
    EXPECT_EQ(view.zoom.getValue(), 8.0);
  }
  EXPECT_EQ(c.client.getServer(), nullptr);
  EXPECT_EQ(c.count, 1);
}

} // namespace
