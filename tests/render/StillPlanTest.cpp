// Stills made from shared node pictures, on the caller's thread or on the
// workers, against stills whose every picture is made afresh.
#include "host/render/StillPlan.h"

#include <algorithm>
#include <cstring>
#include <random>

#include "host/render/NodePictures.h"
#include "host/render/StillsQueue.h"
#include "tests/render/StillsFixture.h"

namespace rendertest {
namespace {

using Render::NodePictures;
using Render::StillPlan;
using Render::StillsQueue;

bool samePixels(const UxImage& a, const UxImage& b) {
  return a.width() == b.width() && a.height() == b.height() &&
         std::memcmp(a.data(), b.data(), static_cast<std::size_t>(a.width()) * a.height() * 4) == 0;
}

class SharedStills : public Stills {
protected:
  void TearDown() override {
    NodePictures::instance().clear();
    Stills::TearDown();
  }

  // A random graph: test cards, then effects whose inputs are earlier nodes
  // (shared inputs), some later ones (cycles), some free; some bypassed; and
  // a long chain over part of it (deeper than stills follow).
  std::vector<IdStamp> randomGraph(unsigned seed) {
    std::mt19937 random(seed);
    auto pick = [&](std::size_t n) { return std::uniform_int_distribution<std::size_t>(0, n - 1)(random); };
    std::vector<IdStamp> ids;
    const char* cards[] = {"bars", "grid", "ramp", "solid:0.2,0.6,0.9", "solid:1,0.5,0"};
    for (int i = 0; i < 4; ++i) ids.push_back(card(cards[pick(5)]));
    const char* tags[] = {"mix", "wipe", "pip", "colourcorrect", "PixShader:Other"};
    std::vector<Ux::Ptr<EffectInstance>> effects;
    const bool cycles = seed % 3 == 0;
    for (int i = 0; i < 14; ++i) {
      auto e = effect(tags[pick(5)], {ids[pick(ids.size())], pick(6) == 0 ? IdStamp() : ids[pick(ids.size())]});
      e->setParam("amount", {0.1 * static_cast<double>(pick(10))});
      e->setParam("gain", {0.5 + 0.25 * static_cast<double>(pick(4)), 1.0, 0.75});
      if (pick(8) == 0) e->setActive(false);
      effects.push_back(e);
      ids.push_back(e->getId());
    }
    if (cycles) effects[pick(4)]->setInputTrackId(0, ids.back(), false);
    IdStamp below = ids[4 + pick(14)];
    for (int i = 0; i < 70; ++i) ids.push_back(below = effect("colourcorrect", {below})->getId());
    return ids;
  }
};

TEST_F(SharedStills, StillsFromSharedPicturesAreBitForBitThoseMadeAfresh) {
  const VideoFormat format{"test", 48, 27, 16.0 / 9.0};
  for (unsigned seed = 1; seed <= 12; ++seed) {
    SCOPED_TRACE(seed);
    if (seed > 1) {
      TearDown();
      SetUp();
    }
    const std::vector<IdStamp> ids = randomGraph(seed);
    std::vector<Ux::Ptr<UxImage>> fresh;
    for (const IdStamp& id : ids) {
      NodePictures::instance().clear();
      fresh.push_back(still(id, format));
    }
    // Shared, in an order that has inputs made before and after their users.
    NodePictures::instance().clear();
    std::vector<std::size_t> order(ids.size());
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
    std::shuffle(order.begin(), order.end(), std::mt19937(seed));
    for (std::size_t i : order) EXPECT_TRUE(samePixels(*still(ids[i], format), *fresh[i])) << "node " << i;
    // On the workers, asked for together: later stills take pictures that
    // earlier ones promised.
    NodePictures::instance().clear();
    StillsQueue& queue = StillsQueue::instance();
    queue.hold(true);
    for (std::size_t i : order) {
      edit->getChan(0).cels[0].ref = ids[i];
      ASSERT_TRUE(queue.request(this, ids[i], 0, context(format)));
    }
    queue.hold(false);
    queue.wait(this);
    const std::vector<StillsQueue::Finished> made = queue.take(this);
    ASSERT_EQ(made.size(), ids.size());
    for (std::size_t k = 0; k < made.size(); ++k)
      EXPECT_TRUE(made[k].still && samePixels(*made[k].still, *fresh[order[k]])) << "node " << order[k];
  }
}

TEST_F(SharedStills, AStillOverKnownPicturesMakesOnlyItsOwnAndChangesAreNotServedOld) {
  const IdStamp grey = card("solid:0.5,0.5,0.5");
  auto correct = effect("colourcorrect", {grey});
  correct->setParam("gain", {2, 1, 0});
  auto mix = effect("mix", {correct->getId(), card("solid:0,0,1")});
  mix->setParam("amount", {0.0});
  expectColour(*still(correct->getId()), 3, 3, Colour(1, 0.5, 0));
  {
    edit->getChan(0).cels[0].ref = mix->getId();
    StillPlan plan(context());
    EXPECT_EQ(plan.pictures(), 2u) << "the mix and its second input; the correction is known";
    expectColour(*plan.run(), 3, 3, Colour(1, 0.5, 0));
  }
  // A parameter changed below: the mix is made again, from the new picture.
  correct->setParam("gain", {0, 1, 2});
  expectColour(*still(mix->getId()), 3, 3, Colour(0, 0.5, 1));
  // A still planned and dropped unrun gives its promises up: the next
  // still makes those pictures itself.
  correct->setParam("gain", {1, 1, 1});
  edit->getChan(0).cels[0].ref = mix->getId();
  { StillPlan dropped(context()); }
  expectColour(*still(mix->getId()), 3, 3, Colour(0.5, 0.5, 0.5));
}

TEST_F(SharedStills, TheQueueKeepsEachOwnersStillsAndAsksOnce) {
  const IdStamp bars = card("bars");
  edit->getChan(0).cels[0].ref = bars;
  StillsQueue& queue = StillsQueue::instance();
  const int other = 0;
  queue.hold(true);
  EXPECT_TRUE(queue.request(this, bars, 0, context()));
  EXPECT_FALSE(queue.request(this, bars, 0, context())) << "the same still is under way";
  EXPECT_TRUE(queue.request(this, bars, 0, context({"test", 32, 18, 16.0 / 9.0}))) << "another size";
  EXPECT_TRUE(queue.request(&other, bars, 0, context()));
  EXPECT_TRUE(queue.asked(this, bars, 0));
  EXPECT_EQ(queue.outstanding(this), 2u);
  EXPECT_TRUE(queue.take(this).empty()) << "nothing is made while the workers are held";
  queue.forget(&other);
  EXPECT_EQ(queue.outstanding(&other), 0u);
  queue.hold(false);
  queue.wait(this);
  const std::vector<StillsQueue::Finished> made = queue.take(this);
  ASSERT_EQ(made.size(), 2u);
  EXPECT_EQ(made[0].still->width(), 64);
  EXPECT_EQ(made[1].still->width(), 32);
  EXPECT_TRUE(samePixels(*made[0].still, *still(bars)));
  EXPECT_EQ(queue.outstanding(this), 0u);
  EXPECT_FALSE(queue.asked(this, bars, 0));
  EXPECT_TRUE(queue.request(this, bars, 0, context())) << "taken, the still may be asked for again";
  queue.wait(this);
  EXPECT_EQ(queue.take(this).size(), 1u);
}

// Thousands of stills asked for at once, by two owners, one of which goes
// away with some made and some not: each owner's count and questions stay
// its own, and what the gone owner asked for is never handed to anyone.
TEST_F(SharedStills, ManyStillsOfTwoOwnersOneForgotten) {
  const IdStamp bars = card("bars");
  edit->getChan(0).cels[0].ref = bars;
  StillsQueue& queue = StillsQueue::instance();
  const int gone = 0;
  queue.hold(true);
  constexpr int many = 3000;
  for (int k = 0; k < many; ++k) {
    ASSERT_TRUE(queue.request(this, IdStamp(9, 0, static_cast<uint32_t>(k + 1)), k % 3, context()));
    ASSERT_TRUE(queue.request(&gone, IdStamp(9, 0, static_cast<uint32_t>(k + 1)), k % 3, context()));
  }
  EXPECT_FALSE(queue.request(this, IdStamp(9, 0, 7), 6 % 3, context()));
  EXPECT_TRUE(queue.request(this, IdStamp(9, 0, 7), 1, context())) << "another picture of the node";
  EXPECT_EQ(queue.outstanding(this), many + 1u);
  EXPECT_EQ(queue.outstanding(&gone), static_cast<std::size_t>(many));
  queue.hold(false);
  queue.wait(&gone); // some made before the owner goes, the rest after
  queue.forget(&gone);
  EXPECT_EQ(queue.outstanding(&gone), 0u);
  EXPECT_FALSE(queue.asked(&gone, IdStamp(9, 0, 1), 0));
  EXPECT_TRUE(queue.take(&gone).empty());
  EXPECT_TRUE(queue.asked(this, IdStamp(9, 0, 1), 0));
  queue.wait(this);
  const std::vector<StillsQueue::Finished> made = queue.take(this);
  ASSERT_EQ(made.size(), many + 1u);
  EXPECT_EQ(made.front().node, IdStamp(9, 0, 1)) << "in the order asked";
  EXPECT_EQ(made.back().node, IdStamp(9, 0, 7));
  EXPECT_EQ(made.back().what, 1);
  EXPECT_EQ(queue.outstanding(this), 0u);
  EXPECT_TRUE(queue.request(&gone, IdStamp(9, 0, 1), 0, context())) << "an owner's address used again starts afresh";
  queue.forget(&gone);
}

} // namespace
} // namespace rendertest
