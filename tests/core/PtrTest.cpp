#include "host/core/Ptr.h"

#include <utility>

#include <gtest/gtest.h>

#include "host/core/iObject.h"

namespace {

// Counts live instances so that a test can see exactly when one is deleted.
struct Counted : iObject {
  static inline int alive = 0;
  Counted() { ++alive; }
  Counted(const Counted& o) : iObject(o) { ++alive; }
  ~Counted() override { --alive; }
};
struct Derived : Counted {};
struct Other : iObject {};

class PtrTest : public ::testing::Test {
protected:
  void SetUp() override { Counted::alive = 0; }
  void TearDown() override { EXPECT_EQ(Counted::alive, 0) << "an object leaked"; }
};

TEST_F(PtrTest, LastReferenceToGoDeletesTheObject) {
  Ux::Ptr<Counted> a(new Counted);
  EXPECT_EQ(a->refCount(), 1);
  {
    Ux::Ptr<Counted> b = a;
    Ux::Ptr<Counted> c(a.get()); // a raw pointer rewrapped joins the same count
    EXPECT_EQ(a->refCount(), 3);
  }
  EXPECT_EQ(a->refCount(), 1);
  Ux::Ptr<Counted> moved = std::move(a);
  EXPECT_FALSE(a);
  EXPECT_EQ(moved->refCount(), 1);
  EXPECT_EQ(Counted::alive, 1);
  moved.reset();
  EXPECT_EQ(Counted::alive, 0);
}

TEST_F(PtrTest, AssignmentReleasesTheOldTargetAndSurvivesSelfAssignment) {
  Ux::Ptr<Counted> a(new Counted);
  Ux::Ptr<Counted> b(new Counted);
  a = b;
  EXPECT_EQ(Counted::alive, 1);
  EXPECT_EQ(b->refCount(), 2);

  Ux::Ptr<Counted>& alias = a;
  a = alias;
  a = a.get();
  a = std::move(alias);
  ASSERT_TRUE(a);
  EXPECT_EQ(a->refCount(), 2);

  a = nullptr;
  b = static_cast<Counted*>(nullptr);
  EXPECT_EQ(Counted::alive, 0);
}

TEST_F(PtrTest, DynamicCastSharesOwnershipOrGivesEmpty) {
  Ux::Ptr<Counted> base(new Derived);
  Ux::Ptr<Derived> derived = Ux::dynamicCast<Derived>(base);
  ASSERT_TRUE(derived);
  EXPECT_EQ(derived.get(), base.get());
  EXPECT_EQ(base->refCount(), 2);

  EXPECT_FALSE(Ux::dynamicCast<Other>(base));
  EXPECT_EQ(base->refCount(), 2);
  EXPECT_FALSE(Ux::dynamicCast<Derived>(Ux::Ptr<Counted>()));

  Ux::Ptr<iObject> upcast = derived; // converting copy
  base.reset();
  derived.reset();
  EXPECT_EQ(Counted::alive, 1);
  upcast.reset();
}

TEST_F(PtrTest, CopyOfAnObjectIsANewObjectWithItsOwnCount) {
  Ux::Ptr<Counted> a(new Counted);
  Ux::Ptr<Counted> copy(new Counted(*a));
  EXPECT_EQ(a->refCount(), 1);
  EXPECT_EQ(copy->refCount(), 1);
  a.reset();
  EXPECT_EQ(Counted::alive, 1);
}

} // namespace
