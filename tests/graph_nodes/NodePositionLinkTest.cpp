// A node's draw position and its stored record in the edit's position
// manager follow each other, quietly and without echoes.
#include <gtest/gtest.h>

#include "tests/support/NotifyRecorder.h"
#include "tests/support/ViewFixture.h"

namespace {

using testsupport::EditBuilder;
using testsupport::NotifyRecorder;
using testsupport::ViewFixture;

const IdStamp head(2, 0, 1), source(3, 0, 1);

EditPtr twoNodes() {
  EditBuilder b;
  b.material(source);
  b.effect(head, "colourcorrect", {source});
  b.channel(IdStamp(1, 0, 1), L"V1", head);
  return b.edit();
}

class PositionLink : public ::testing::Test {
protected:
  ViewFixture fx{twoNodes()};
  Ux::Ptr<FXGraphViewNode> node = fx.node(head);
};

TEST_F(PositionLink, EitherRecordMovesTheOtherQuietly) {
  // The layout placed every node through its stored record.
  for (const auto& n : fx.view().nodes()) {
    ASSERT_TRUE(n->storedRecord());
    EXPECT_EQ(n->storedRecord(), fx.view().getPosRecForNode(n->getNodeID()));
    EXPECT_EQ(n->getPosition(), n->storedRecord()->getDrawPosition());
  }
  NodeUIPosRec* stored = node->storedRecord();
  NotifyRecorder own(node->positionRecord().getNotify()), kept(stored->getNotify());

  // Moved by someone else: the node follows and says nothing.
  stored->setDrawPosition(1.5, -2, false);
  EXPECT_EQ(node->getPosition(), XY<double>(1.5, -2));
  stored->setDrawPosition(0.5, 0.25, true);
  EXPECT_EQ(node->getPosition(), XY<double>(0.5, 0.25));
  EXPECT_EQ(own.count("nodeRecUpdate"), 0u);
  EXPECT_EQ(kept.count("nodeRecUpdate"), 1u);

  // Moved by the view: the stored record follows, quietly.
  EXPECT_TRUE(node->setPosition(-1, 3, true));
  EXPECT_EQ(stored->getDrawPosition(), XY<double>(-1, 3));
  EXPECT_EQ(own.count("nodeRecUpdate"), 1u);
  EXPECT_EQ(kept.count("nodeRecUpdate"), 1u);

  // Under the node's suspension its own record stays quiet too.
  node->suspendNotifications();
  node->setPosition(2, 2, true);
  node->resumeNotifications();
  EXPECT_EQ(stored->getDrawPosition(), XY<double>(2, 2));
  EXPECT_EQ(own.count("nodeRecUpdate"), 1u);

  // One coordinate set on its own (as a record read back from a stream).
  stored->drawY() = 4;
  EXPECT_EQ(node->getPosition(), XY<double>(2, 4));
  EXPECT_EQ(own.count("nodeRecUpdate"), 1u);
}

// An edit may show many thousands of nodes: each costs a fixed, small number
// of subscriptions. A record hears its own values as their owner, so only
// the stored record and its two values have listeners: one each, the node.
TEST_F(PositionLink, ANodeCostsFewSubscriptions) {
  NodeUIPosRec& own = node->positionRecord();
  NodeUIPosRec* stored = node->storedRecord();
  ASSERT_TRUE(stored);
  EXPECT_EQ(own.drawX().subscriberCount() + own.drawY().subscriberCount(), 0u);
  EXPECT_EQ(own.getNotify().subscriberCount(), 0u);
  EXPECT_EQ(stored->drawX().subscriberCount(), 1u);
  EXPECT_EQ(stored->drawY().subscriberCount(), 1u);
  EXPECT_EQ(stored->getNotify().subscriberCount(), 1u);
  EXPECT_EQ(own.registrationCount() + stored->registrationCount(), 4u) << "each record still follows both values";

  // Without a stored record the node listens to its own, and still hears it move.
  const XY<double> kept = stored->getDrawPosition();
  node->followStoredRecord(nullptr);
  EXPECT_EQ(own.getNotify().subscriberCount(), 1u);
  EXPECT_EQ(stored->drawX().subscriberCount() + stored->getNotify().subscriberCount(), 0u);
  NotifyRecorder heard(own.getNotify());
  node->setPosition(5, 6, true);
  EXPECT_EQ(heard.count("nodeRecUpdate"), 1u);
  EXPECT_EQ(stored->getDrawPosition(), kept) << "a record no longer followed stays put";
}

TEST_F(PositionLink, ANodeLetsGoOfItsOldRecord) {
  Ux::Ptr<NodeUIPosRec> old(node->storedRecord());
  const int held = old->refCount();
  Ux::Ptr<NodeUIPosRec> other(new NodeUIPosRec());
  other->setDrawPosition(4, 4, false);
  node->followStoredRecord(other.get());
  EXPECT_EQ(old->refCount(), held - 1);
  EXPECT_EQ(node->getPosition(), XY<double>(4, 4)) << "takes the new record's place";
  old->setDrawPosition(9, 9, false);
  EXPECT_EQ(node->getPosition(), XY<double>(4, 4));

  // Gone with the view's list (and the extremes the next frame forgets).
  node.reset();
  fx.view().flushNodeList();
  fx.view().redraw();
  EXPECT_EQ(other->refCount(), 1);
  other->setDrawPosition(5, 5, true);
  EXPECT_EQ(other->getDrawPosition(), XY<double>(5, 5));
}

} // namespace
