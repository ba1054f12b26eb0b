// The cache under the stills, node pictures and picture files: what goes
// first when it is full, and what it refuses.
#include "host/core/LruCache.h"

#include <string>

#include <gtest/gtest.h>

TEST(LruCache, TheLeastRecentlyUsedGoFirstByBytesOrByCount) {
  LruCache<int, std::string> cache(100, 3);
  cache.put(1, "one", 40);
  cache.put(2, "two", 40);
  ASSERT_NE(cache.find(1), nullptr); // 2 is now the oldest
  cache.put(3, "three", 40);
  EXPECT_EQ(cache.find(2), nullptr) << "over the byte budget: the oldest went";
  EXPECT_EQ(*cache.find(1), "one");
  EXPECT_EQ(cache.bytes(), 80u);

  cache.put(4, "four", 1);
  cache.put(5, "five", 1);
  EXPECT_EQ(cache.size(), 3u) << "over the count";
  EXPECT_EQ(cache.find(3), nullptr) << "1 was used after 3 was put";
  EXPECT_EQ(cache.bytes(), 42u);
}

TEST(LruCache, ReplacingRefusingAndForgetting) {
  LruCache<int, std::string> cache(100);
  cache.put(1, "one", 60);
  cache.put(1, "uno", 30);
  EXPECT_EQ(*cache.find(1), "uno");
  EXPECT_EQ(cache.bytes(), 30u) << "a replaced value's bytes leave with it";
  // Too big for the whole budget: not kept, and what was under the key goes.
  EXPECT_FALSE(cache.put(1, "huge", 101));
  EXPECT_EQ(cache.find(1), nullptr);
  EXPECT_EQ(cache.bytes(), 0u);

  for (int k = 0; k < 6; ++k) cache.put(k * 10, std::to_string(k), 10);
  cache.retain([](int key, const std::string&) { return key % 20 == 0; });
  EXPECT_EQ(cache.size(), 3u);
  EXPECT_EQ(cache.bytes(), 30u);
  ASSERT_NE(cache.firstKeyFrom(21), nullptr);
  EXPECT_EQ(*cache.firstKeyFrom(21), 40);
  EXPECT_EQ(cache.firstKeyFrom(41), nullptr);
  cache.clear();
  EXPECT_EQ(cache.size(), 0u);
  EXPECT_EQ(cache.bytes(), 0u);
}
