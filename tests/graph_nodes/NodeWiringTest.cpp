// The wire tables of on-screen nodes and which of their connections the
// user may edit.
#include <gtest/gtest.h>

#include "tests/support/ViewFixture.h"

namespace {

using testsupport::EditBuilder;
using testsupport::ViewFixture;

const IdStamp wiredMaterial(3, 0, 1), fedMaterial(3, 0, 2), wiredAlias(3, 0, 4);
const IdStamp locked(2, 0, 1), belowLock(2, 0, 2), open(2, 0, 3);

// V1: locked(belowLock(wiredMaterial)); V2: open(alias(fedMaterial)).
EditPtr wiringEdit() {
  EditBuilder b;
  b.material(wiredMaterial);
  b.material(fedMaterial);
  b.effect(belowLock, "colourcorrect", {wiredMaterial});
  b.effect(locked, "pip", {belowLock, IdStamp()})->setConnectionEditable(false);
  b.alias(wiredAlias, fedMaterial);
  b.effect(open, "mix", {wiredAlias});
  b.channel(IdStamp(1, 0, 1), L"V1", locked);
  b.channel(IdStamp(1, 0, 2), L"V2", open);
  return b.edit();
}

class NodeWiring : public ::testing::Test {
protected:
  ViewFixture fx{wiringEdit()};
  Ux::Ptr<FXGraphViewNode> make(const IdStamp& id) {
    return Ux::Ptr<FXGraphViewNode>(
        new FXGraphViewNode(&fx.view(), fx.view().getIteratorFor(id, EditGraphIterator::atNode)));
  }
};

TEST_F(NodeWiring, InputsKeepEmptySlotsWhileOutputsAreErased) {
  Ux::Ptr<FXGraphViewNode> source = make(wiredMaterial), dest = make(locked);
  EXPECT_FALSE(dest->connectInput(0, nullptr));
  ASSERT_TRUE(dest->connectInput(1, source.get()));
  ASSERT_TRUE(dest->connectInput(1, source.get())) << "the same wire again";
  ASSERT_EQ(source->outputTable().size(), 1u) << "takes no second output slot";
  EXPECT_EQ(std::pair(source->getOutputConnect(0), dest->getInputConnect(1)), std::pair(dest.get(), source.get()));
  EXPECT_EQ(source->findOutputConnectFor(dest.get(), 1), 0);
  EXPECT_EQ(dest->findInputConnectFor(source.get(), 0), 1);
  EXPECT_LT(dest->findInputConnectFor(source.get(), 1), 0);
  // One spare output slot beyond the wires, and nothing past it.
  EXPECT_NE(source->getOutputPos(1), XY<int>(-1, -1));
  EXPECT_EQ(source->getOutputPos(2), XY<int>(-1, -1));

  // Each end is disconnected alone: an input slot stays, empty and holding
  // its own index; an output slot is erased.
  dest->disconnectInput(1);
  dest->disconnectInput(3); // never connected
  ASSERT_EQ(dest->inputTable().size(), 2u);
  EXPECT_EQ(dest->inputTable().at(1).node, nullptr);
  EXPECT_EQ(dest->inputTable().at(1).index, 1);
  EXPECT_EQ(dest->inputTable().at(3).node, nullptr);
  EXPECT_EQ(source->getOutputConnect(0), dest.get());
  ASSERT_TRUE(dest->connectInput(1, source.get()));
  source->disconnectOutput(0);
  EXPECT_TRUE(source->outputTable().empty());
  EXPECT_EQ(dest->getInputConnect(1), source.get());
  EXPECT_EQ(source->getOutputPos(1), XY<int>(-1, -1));

  dest->initConnections();
  EXPECT_TRUE(dest->inputTable().empty());
}

TEST_F(NodeWiring, LockedEffectsAndAliasesLimitEditing) {
  struct Expect {
    IdStamp id;
    bool inputs, output;
  };
  // A locked effect locks its own inputs; everything below it is locked
  // both ways. An alias's input is never the user's.
  for (const Expect& e :
       {Expect{locked, false, true}, Expect{belowLock, false, false}, Expect{wiredMaterial, false, false},
        Expect{open, true, true}, Expect{wiredAlias, false, true}, Expect{fedMaterial, true, true}}) {
    Ux::Ptr<FXGraphViewNode> n = fx.node(e.id);
    ASSERT_TRUE(n) << e.id.asString().str();
    EXPECT_EQ(n->inputsEditable(), e.inputs) << e.id.asString().str();
    EXPECT_EQ(n->outputEditable(), e.output) << e.id.asString().str();
  }
  // A wire into an alias may not be moved; its spare slot may start one.
  Ux::Ptr<FXGraphViewNode> fed = fx.node(fedMaterial);
  EXPECT_FALSE(fed->isOutputEditable(0));
  EXPECT_TRUE(fed->isOutputEditable(1));
  EXPECT_TRUE(fx.node(wiredAlias)->isOutputEditable(0));
  EXPECT_FALSE(fx.node(belowLock)->isOutputEditable(1));
}

// A node shared by a locked and an open branch of one tree takes the rule of
// the last path that reaches it: the one through the later input.
TEST(SharedNodeEditability, TheLastPathToASharedNodeDecides) {
  for (bool lockedFirst : {true, false}) {
    SCOPED_TRACE(lockedFirst ? "locked branch first" : "open branch first");
    const IdStamp shared(3, 0, 1), lockedBranch(2, 0, 2), openBranch(2, 0, 3), root(2, 0, 1);
    EditBuilder b;
    b.material(shared);
    b.effect(lockedBranch, "colourcorrect", {shared})->setConnectionEditable(false);
    b.effect(openBranch, "colourcorrect", {shared});
    if (lockedFirst)
      b.effect(root, "mix", {lockedBranch, openBranch});
    else
      b.effect(root, "mix", {openBranch, lockedBranch});
    b.channel(IdStamp(1, 0, 1), L"V1", root);
    ViewFixture fx{b.edit()};
    Ux::Ptr<FXGraphViewNode> n = fx.node(shared);
    ASSERT_TRUE(n);
    EXPECT_EQ(n->inputsEditable(), lockedFirst);
    EXPECT_EQ(n->outputEditable(), lockedFirst);
    EXPECT_EQ(n->outputTable().size(), 2u) << "one wire to each branch";
  }
}

} // namespace
