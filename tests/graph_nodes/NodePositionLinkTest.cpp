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
// of subscriptions. A record hears its own values as their owner and the
// node follows both records' draw positions as a follower, so only the
// stored record's own messages have a listener: the node.
TEST_F(PositionLink, ANodeCostsFewSubscriptions) {
  NodeUIPosRec& own = node->positionRecord();
  NodeUIPosRec* stored = node->storedRecord();
  ASSERT_TRUE(stored);
  for (NodeUIPosRec* r : {&own, stored}) {
    EXPECT_EQ(r->drawX().subscriberCount() + r->drawY().subscriberCount(), 0u);
    EXPECT_EQ(r->drawFollowerCount(), 1u);
    EXPECT_EQ(r->registrationCount(), 2u) << "each record still follows both values";
  }
  EXPECT_EQ(own.getNotify().subscriberCount(), 0u);
  EXPECT_EQ(stored->getNotify().subscriberCount(), 1u);

  // Without a stored record the node listens to its own, and still hears it move.
  const XY<double> kept = stored->getDrawPosition();
  node->followStoredRecord(nullptr);
  EXPECT_EQ(own.getNotify().subscriberCount(), 1u);
  EXPECT_EQ(stored->drawFollowerCount() + stored->getNotify().subscriberCount(), 0u);
  NotifyRecorder heard(own.getNotify());
  node->setPosition(5, 6, true);
  EXPECT_EQ(heard.count("nodeRecUpdate"), 1u);
  EXPECT_EQ(stored->getDrawPosition(), kept) << "a record no longer followed stays put";
}

// Two views of one edit show a node each for the same stored record: both
// follow its quiet moves, and one going leaves the other following.
TEST_F(PositionLink, TwoNodesFollowOneRecord) {
  NodeUIPosRec* stored = node->storedRecord();
  Ux::Ptr<FXGraphViewNode> second(
      new FXGraphViewNode(&fx.view(), fx.view().getIteratorFor(head, EditGraphIterator::atNode)));
  second->followStoredRecord(stored);
  EXPECT_EQ(stored->drawFollowerCount(), 2u);
  stored->setDrawPosition(7, 8, false);
  EXPECT_EQ(node->getPosition(), XY<double>(7, 8));
  EXPECT_EQ(second->getPosition(), XY<double>(7, 8));

  second->setPosition(1, 2, false);
  EXPECT_EQ(stored->getDrawPosition(), XY<double>(1, 2)) << "either node's move reaches the record";
  EXPECT_EQ(node->getPosition(), XY<double>(1, 2)) << "and from it the other node";

  second.reset();
  EXPECT_EQ(stored->drawFollowerCount(), 1u);
  stored->drawX() = 3;
  EXPECT_EQ(node->getPosition(), XY<double>(3, 2));
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
