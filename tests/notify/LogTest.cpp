#include "host/notify/Log.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Lines = std::vector<std::string>;

TEST(LogTest, CapturesNestAndChannelsAreSeparate) {
  LogChannel::Capture outer(Log::channel());
  LogChannel::Capture debug(debugChannel());
  Log::printf("edit %s has %d nodes\n", "Promo", 3);
  {
    LogChannel::Capture inner(Log::channel());
    Log::channel().write("nested");
    EXPECT_EQ(inner.messages(), (Lines{"nested"}));
  }
  debugPrintf("Danger %s!\n", "Will Robinson");
  Log::channel().printf("%s", "");
  EXPECT_EQ(outer.messages(), (Lines{"edit Promo has 3 nodes\n", "nested", ""}));
  EXPECT_EQ(outer.joined(), "edit Promo has 3 nodes\nnested");
  EXPECT_EQ(debug.messages(), (Lines{"Danger Will Robinson!\n"}));
}

TEST(LogTest, RecentMessagesAreBoundedOldestFirst) {
  LogChannel channel("bounded", false);
  for (int i = 0; i < 300; ++i) channel.printf("%d", i);
  const Lines recent = channel.recent();
  ASSERT_EQ(recent.size(), 256u);
  EXPECT_EQ(recent.front(), "44");
  EXPECT_EQ(recent.back(), "299");
}

TEST(LogTest, EchoWritesOneLineToStderrWithTheChannelName) {
  LogChannel channel("chan", false);
  testing::internal::CaptureStderr();
  channel.write("quiet\n");
  channel.setEcho(true);
  channel.write("with newline\n");
  channel.write("without");
  channel.setEcho(false);
  channel.write("quiet again");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "chan: with newline\nchan: without\n");
}

} // namespace
