// The files shared by every thread: frames kept and shared, files closed
// past the limit, changes on disk seen, failures remembered.
#include "host/media/MediaFiles.h"

#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/media/MediaFixture.h"

using namespace mediatest;

namespace mediatest {
class MediaCache : public ::testing::Test {
protected:
  void SetUp() override { MediaFiles::clear(); }
  void TearDown() override { MediaFiles::clear(); }
};
} // namespace mediatest

TEST_F(MediaCache, TimesWithinAFrameShareItsPicture) {
  const std::string clip = colourClip("rgb.mp4");
  const auto a = MediaFiles::frameAt(clip, 0.50);
  ASSERT_TRUE(a.image) << a.why;
  const auto before = MediaFiles::stats();
  const auto b = MediaFiles::frameAt(clip, 0.51);
  EXPECT_EQ(b.image, a.image);
  EXPECT_EQ(MediaFiles::stats().framesDecoded, before.framesDecoded);
  EXPECT_EQ(MediaFiles::stats().cacheHits, before.cacheHits + 1);
  const auto c = MediaFiles::frameAt(clip, 0.53);
  EXPECT_NE(c.image, a.image) << "the next frame";

  ASSERT_TRUE(centreIs(MediaFiles::frameAt(clip, 2.5).image, 0, 0, 255));
  const auto seeks = MediaFiles::stats().seeks;
  EXPECT_EQ(MediaFiles::frameAt(clip, 0.505).image, a.image) << "kept, and known to be the frame shown";
  EXPECT_EQ(MediaFiles::stats().seeks, seeks);
}

TEST_F(MediaCache, AFileChangedOnDiskIsReadAgain) {
  const std::string path = folder().path("changing.mp4");
  std::filesystem::copy_file(colourClip("rgb.mp4"), path);
  ASSERT_TRUE(centreIs(MediaFiles::frameAt(path, 2.5).image, 0, 0, 255));
  std::filesystem::copy_file(colourClip("small.mp4", "160x120"), path,
                             std::filesystem::copy_options::overwrite_existing);
  const auto changed = MediaFiles::frameAt(path, 2.5);
  ASSERT_TRUE(changed.image) << changed.why;
  EXPECT_EQ(changed.image->width(), 160);
  EXPECT_EQ(MediaFiles::stats().keptFrames, 1u) << "the old file's frames are dropped";
}

TEST_F(MediaCache, AFailureIsRememberedUntilTheFileChanges) {
  const std::string path = folder().path("later.mp4");
  EXPECT_EQ(MediaFiles::frameAt(path, 0).why, "no such file");
  folder().write("later.mp4", "not yet");
  EXPECT_EQ(MediaFiles::frameAt(path, 0).why, "not a picture or video file") << "seen once it is there";
  const auto opens = MediaFiles::stats().opens;
  EXPECT_EQ(MediaFiles::frameAt(path, 1).why, "not a picture or video file");
  EXPECT_EQ(MediaFiles::stats().opens, opens) << "not tried again";
  std::filesystem::copy_file(colourClip("rgb.mp4"), path, std::filesystem::copy_options::overwrite_existing);
  EXPECT_TRUE(centreIs(MediaFiles::frameAt(path, 1.5).image, 0, 255, 0));
}

TEST_F(MediaCache, TheLeastRecentlyUsedFilesClose) {
  const std::string clip = colourClip("rgb.mp4");
  std::vector<std::string> copies;
  for (int i = 0; i < 10; ++i) {
    copies.push_back(folder().path("copy" + std::to_string(i) + ".mp4"));
    std::filesystem::copy_file(clip, copies.back(), std::filesystem::copy_options::overwrite_existing);
  }
  const auto start = MediaFiles::stats();
  for (const auto& c : copies) ASSERT_TRUE(MediaFiles::frameAt(c, 0.5).image);
  EXPECT_EQ(MediaFiles::stats().opens, start.opens + 10);
  EXPECT_EQ(MediaFiles::stats().openFiles, MediaFiles::maxOpenFiles);
  EXPECT_TRUE(MediaFiles::frameAt(copies[0], 0.5).image);
  EXPECT_EQ(MediaFiles::stats().opens, start.opens + 10) << "its frame was kept though the file closed";
  EXPECT_TRUE(centreIs(MediaFiles::frameAt(copies[0], 1.5).image, 0, 255, 0));
  EXPECT_EQ(MediaFiles::stats().opens, start.opens + 11) << "opened again";
  EXPECT_TRUE(MediaFiles::frameAt(copies[9], 1.5).image);
  EXPECT_EQ(MediaFiles::stats().opens, start.opens + 11) << "still open";
  MediaFiles::clear();
  EXPECT_EQ(MediaFiles::stats().openFiles, 0u);
  EXPECT_EQ(MediaFiles::stats().keptFrames, 0u);
}

TEST_F(MediaCache, KeptFramesStayWithinTheirBudget) {
  const std::string clip = ffmpeg("-f lavfi -i testsrc=s=1280x720:r=25:d=1" + encoding(), "hd.mp4");
  for (int frame = 0; frame < 25; ++frame) ASSERT_TRUE(MediaFiles::frameAt(clip, frame / 25.0).image);
  const auto s = MediaFiles::stats();
  EXPECT_LE(s.keptBytes, MediaFiles::frameBytes);
  EXPECT_EQ(s.keptFrames, MediaFiles::frameBytes / (1280 * 720 * 4));
}

TEST_F(MediaCache, ThreadsReadFilesAtOnce) {
  const std::string files[] = {colourClip("rgb.mp4"), colourClip("small.mp4", "160x120")};
  const double times[] = {2.5, 0.5, 1.5, 0.1, 2.9, 1.0};
  const int colours[][3] = {{0, 0, 255}, {255, 0, 0}, {0, 255, 0}, {255, 0, 0}, {0, 0, 255}, {0, 255, 0}};
  std::vector<std::thread> threads;
  std::vector<int> wrong(4, 0);
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&, t] {
      for (int round = 0; round < 3; ++round)
        for (int i = 0; i < 6; ++i) {
          const int k = (i * (t + 1) + round) % 6;
          const auto frame = MediaFiles::frameAt(files[(t + i) % 2], times[k]);
          if (!centreIs(frame.image, colours[k][0], colours[k][1], colours[k][2])) ++wrong[std::size_t(t)];
        }
    });
  for (auto& th : threads) th.join();
  for (int t = 0; t < 4; ++t) EXPECT_EQ(wrong[std::size_t(t)], 0) << "thread " << t;
}
