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

TEST_F(PtrTest, LastReferenceToGoDeletesTheObjectAndCastsShareIt) {
  Ux::Ptr<Counted> a(new Counted);
  {
    Ux::Ptr<Counted> b = a;
    Ux::Ptr<Counted> c(a.get()); // a raw pointer rewrapped joins the same count
    EXPECT_EQ(a->refCount(), 3);
    // A copy of the object is a new object with its own count.
    EXPECT_EQ(Ux::Ptr<Counted>(new Counted(*a))->refCount(), 1);
  }
  Ux::Ptr<Counted> moved = std::move(a);
  EXPECT_FALSE(a);
  EXPECT_EQ(moved->refCount(), 1);

  // Assignment releases the old target and survives self-assignment.
  Ux::Ptr<Counted> other(new Counted);
  moved = other;
  EXPECT_EQ(Counted::alive, 1);
  Ux::Ptr<Counted>& alias = moved;
  moved = alias;
  moved = moved.get();
  moved = std::move(alias);
  ASSERT_TRUE(moved);
  EXPECT_EQ(other->refCount(), 2);
  moved = nullptr;
  other.reset();
  EXPECT_EQ(Counted::alive, 0);

  // A dynamic cast shares ownership, or gives an empty pointer.
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
}

} // namespace
