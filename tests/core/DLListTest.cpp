#include "host/core/DLList.h"

#include <vector>

#include <gtest/gtest.h>

#include "host/core/Ptr.h"
#include "host/core/iObject.h"

namespace {

struct Rec : DLListRec {
  static inline int alive = 0;
  explicit Rec(int v) : value(v) { ++alive; }
  Rec(const Rec& o) : DLListRec(o), value(o.value) { ++alive; }
  ~Rec() override { --alive; }
  int value;
};

std::vector<int> values(const DLList& list) {
  std::vector<int> out;
  for (Rec* r : list.as<Rec>()) out.push_back(r->value);
  // The backward links must tell the same story.
  std::vector<int> back;
  for (DLListRec* r = list.tail(); r; r = r->prev()) back.insert(back.begin(), static_cast<Rec*>(r)->value);
  EXPECT_EQ(out, back);
  EXPECT_EQ(out.size(), list.size());
  return out;
}

class DLListTest : public ::testing::Test {
protected:
  void SetUp() override { Rec::alive = 0; }
};

TEST_F(DLListTest, OwningListsDestroyNonOwningListsOnlyLink) {
  {
    DLList list;
    for (int i = 0; i < 6; ++i) list.append(new Rec(i));
    // Removal is safe when the next link is taken first.
    for (DLListRec* r = list.head(); r;) {
      DLListRec* next = r->next();
      if (static_cast<Rec*>(r)->value % 2 == 0) list.destroy(r);
      r = next;
    }
    EXPECT_EQ(values(list), (std::vector<int>{1, 3, 5}));
    EXPECT_EQ(Rec::alive, 3);
    Rec* first = static_cast<Rec*>(list.head());
    EXPECT_TRUE(list.remove(first)); // unlinked, not destroyed: the caller owns it again
    EXPECT_EQ(Rec::alive, 3);
    EXPECT_FALSE(first->isLinked());
    delete first;
  }
  EXPECT_EQ(Rec::alive, 0);

  Rec a(1), b(2), c(3);
  {
    DLList list(false);
    for (Rec* r : {&a, &b, &c}) list.append(r);
    EXPECT_TRUE(list.destroy(&b));
    EXPECT_EQ(values(list), (std::vector<int>{1, 3}));
    list.flush();
    EXPECT_TRUE(list.empty());
    list.append(&a);
  }
  EXPECT_EQ(Rec::alive, 3);
  EXPECT_FALSE(a.isLinked());
}

TEST_F(DLListTest, RecordDestroyedWhileLinkedUnlinksItself) {
  for (bool owning : {false, true}) {
    DLList list(owning);
    Rec* r[4];
    for (int i = 0; i < 4; ++i) list.append(r[i] = new Rec(i));
    delete r[0]; // head
    delete r[3]; // tail
    EXPECT_EQ(values(list), (std::vector<int>{1, 2}));
    delete r[1];
    EXPECT_EQ(values(list), (std::vector<int>{2}));
    if (!owning) delete r[2];
  }
  EXPECT_EQ(Rec::alive, 0);
}

// A counted record in an owning list: the list holds a reference instead of
// deleting it outright, so an outside holder keeps it alive.
struct CountedRec : DLListRec, iObject {
  static inline int alive = 0;
  CountedRec() { ++alive; }
  ~CountedRec() override { --alive; }
  void adoptedByList() override { incRefCount(); }
  void disposeFromList() override { decRefCount(); }
};

TEST_F(DLListTest, CountedRecordOutlivesItsOwningListWhileHeld) {
  CountedRec::alive = 0;
  Ux::Ptr<CountedRec> held;
  {
    DLList list;
    held = new CountedRec;
    list.append(held.get());
    list.append(new CountedRec);
    EXPECT_EQ(held->refCount(), 2);
  }
  EXPECT_EQ(CountedRec::alive, 1);
  EXPECT_FALSE(held->isLinked());
  held.reset();
  EXPECT_EQ(CountedRec::alive, 0);
}

} // namespace
