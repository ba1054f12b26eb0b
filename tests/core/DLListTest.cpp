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

TEST_F(DLListTest, OwningListDestroysItsRecords) {
  {
    DLList list;
    for (int i = 1; i <= 4; ++i) list.append(new Rec(i));
    EXPECT_EQ(values(list), (std::vector<int>{1, 2, 3, 4}));

    Rec* second = static_cast<Rec*>(list.head()->next());
    EXPECT_TRUE(list.destroy(second));
    EXPECT_EQ(Rec::alive, 3);
    EXPECT_EQ(values(list), (std::vector<int>{1, 3, 4}));

    Rec* first = static_cast<Rec*>(list.head());
    EXPECT_TRUE(list.remove(first)); // unlinked, not destroyed: the caller owns it again
    EXPECT_EQ(Rec::alive, 3);
    EXPECT_FALSE(first->isLinked());
    delete first;
  }
  EXPECT_EQ(Rec::alive, 0);
}

TEST_F(DLListTest, NonOwningListOnlyLinks) {
  Rec a(1), b(2), c(3);
  {
    DLList list(false);
    list.append(&a);
    list.append(&b);
    list.append(&c);
    EXPECT_TRUE(list.destroy(&b));
    EXPECT_EQ(values(list), (std::vector<int>{1, 3}));
    list.flush();
    EXPECT_TRUE(list.empty());
    list.append(&a);
  }
  EXPECT_EQ(Rec::alive, 3);
  EXPECT_FALSE(a.isLinked());
  DLList other(false);
  EXPECT_TRUE(other.append(&a)); // free to join another list
}

TEST_F(DLListTest, RecordBelongsToOneListAtATime) {
  DLList first(false), second(false);
  Rec a(1), b(2);
  EXPECT_TRUE(first.append(&a));
  EXPECT_FALSE(first.append(&a));
  EXPECT_FALSE(second.append(&a));
  EXPECT_FALSE(first.append(nullptr));
  EXPECT_FALSE(second.remove(&a));
  EXPECT_FALSE(second.destroy(&a));
  EXPECT_FALSE(first.remove(&b));
  EXPECT_FALSE(first.remove(nullptr));
  EXPECT_TRUE(first.contains(&a));
  EXPECT_FALSE(second.contains(&a));
  EXPECT_EQ(a.list(), &first);
  EXPECT_EQ(values(first), (std::vector<int>{1}));
  EXPECT_TRUE(second.empty());

  // A copy of a linked record is a new, unlinked record.
  Rec copy(a);
  EXPECT_FALSE(copy.isLinked());
  EXPECT_EQ(first.size(), 1u);
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
    EXPECT_EQ(list.head(), list.tail());
    if (!owning) delete r[2];
  }
  EXPECT_EQ(Rec::alive, 0);
}

TEST_F(DLListTest, RemovalIsSafeWhenTheNextLinkIsTakenFirst) {
  DLList list;
  for (int i = 0; i < 6; ++i) list.append(new Rec(i));
  for (DLListRec* r = list.head(); r;) {
    DLListRec* next = r->next();
    if (static_cast<Rec*>(r)->value % 2 == 0) list.destroy(r);
    r = next;
  }
  EXPECT_EQ(values(list), (std::vector<int>{1, 3, 5}));
  EXPECT_EQ(Rec::alive, 3);

  // Emptying from the head, as a flush does, leaves a usable list.
  while (list.head()) list.destroy(list.head());
  EXPECT_EQ(list.head(), nullptr);
  EXPECT_EQ(list.tail(), nullptr);
  list.append(new Rec(9));
  EXPECT_EQ(values(list), (std::vector<int>{9}));
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
  EXPECT_EQ(held->refCount(), 1);
  held.reset();
  EXPECT_EQ(CountedRec::alive, 0);
}

} // namespace
