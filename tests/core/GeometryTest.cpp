#include <gtest/gtest.h>

#include "host/core/Box.h"

namespace {

TEST(BoxTest, SizesAndHitsDoNotDependOnCornerOrder) {
  const Ux::Box<int> upright(10, 20, 30, 60); // left, bottom, right, top
  const Ux::Box<int> reversed(30, 60, 10, 20);
  for (const auto& b : {upright, reversed}) {
    EXPECT_EQ(b.width(), 20);
    EXPECT_EQ(b.height(), 40);
    EXPECT_TRUE(b.contains(10, 20)); // edges belong to the box
    EXPECT_TRUE(b.contains(30, 60));
    EXPECT_FALSE(b.contains(31, 40));
    EXPECT_FALSE(b.contains(20, 19));
  }
  EXPECT_TRUE(Ux::Box<int>(5, 5, 5, 9).isEmpty());
  EXPECT_FALSE(upright.isEmpty());
}

} // namespace
