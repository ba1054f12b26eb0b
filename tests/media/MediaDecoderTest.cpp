// One media file decoded: which frame a time shows, what reaching it costs,
// the colours and shape it comes out in, and the reasons files fail.
#include "host/media/MediaDecoder.h"

#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/media/MediaFixture.h"

using namespace mediatest;

TEST(MediaDecoder, EachTimeShowsTheFrameStartedByThen) {
  const std::string clip = colourClip("rgb.mp4");
  ASSERT_FALSE(clip.empty());
  std::string why;
  const auto d = MediaDecoder::open(clip, why);
  ASSERT_TRUE(d) << why;
  EXPECT_EQ(d->width(), 320);
  EXPECT_EQ(d->height(), 240);
  EXPECT_NEAR(d->duration(), 3, 0.05);
  EXPECT_NEAR(d->frameRate(), 25, 0.01);
  EXPECT_EQ(d->path(), clip);

  EXPECT_TRUE(centreIs(d->frameAt(0.5, why), 255, 0, 0));
  EXPECT_TRUE(centreIs(d->frameAt(1.5, why), 0, 255, 0));
  EXPECT_TRUE(centreIs(d->frameAt(2.5, why), 0, 0, 255));
  EXPECT_TRUE(centreIs(d->frameAt(0.5, why), 255, 0, 0)) << "back again";
  EXPECT_TRUE(centreIs(d->frameAt(10, why), 0, 0, 255)) << "past the end: the last frame";
  EXPECT_TRUE(centreIs(d->frameAt(-1, why), 255, 0, 0)) << "before the start: the first";
  EXPECT_TRUE(centreIs(d->frameAt(std::numeric_limits<double>::infinity(), why), 0, 0, 255));
  EXPECT_TRUE(centreIs(d->frameAt(std::nan(""), why), 255, 0, 0));
  // The last red frame starts at 0.96 and the first green one at 1.
  EXPECT_TRUE(centreIs(d->frameAt(0.999, why), 255, 0, 0));
  EXPECT_TRUE(centreIs(d->frameAt(1.0, why), 0, 255, 0));
}

TEST(MediaDecoder, ScrubbingOnDecodesAndJumpsSeekToAKeyFrame) {
  std::string why;
  const auto d = MediaDecoder::open(colourClip("rgb.mp4"), why);
  ASSERT_TRUE(d) << why;
  for (int frame = 0; frame <= 40; ++frame) ASSERT_TRUE(d->goTo(frame / 25.0, why)) << why;
  EXPECT_EQ(d->seeks(), 0) << "on through the clip, a frame at a time";
  EXPECT_LE(d->framesDecoded(), 42);

  // Back, to the key frame at 0 and on from there.
  int64_t before = d->framesDecoded();
  ASSERT_TRUE(d->goTo(0.2, why));
  EXPECT_EQ(d->seeks(), 1);
  EXPECT_LE(d->framesDecoded() - before, 8);
  // Far ahead: from the key frame at 2 s, not on through every frame.
  before = d->framesDecoded();
  ASSERT_TRUE(d->goTo(2.9, why));
  EXPECT_EQ(d->seeks(), 2);
  EXPECT_LE(d->framesDecoded() - before, 26);
  EXPECT_TRUE(centreIs(d->picture(why), 0, 0, 255));
}

TEST(MediaDecoder, TimesWithinAFrameNameItOnce) {
  // Timestamps in frames: a time rounded to the nearest would show the next
  // frame half a frame early.
  std::string why;
  const auto d = MediaDecoder::open(colourClip("rgb25.mp4", "320x240", "-video_track_timescale 25"), why);
  ASSERT_TRUE(d) << why;
  ASSERT_TRUE(d->goTo(0.49, why)); // frame 12: 0.48 to 0.52
  const int64_t key = d->frameKey();
  const int64_t decoded = d->framesDecoded();
  EXPECT_EQ(d->knownFrameKey(0.485), key) << "known from the frames around it, without decoding";
  EXPECT_EQ(d->framesDecoded(), decoded);
  for (double t : {0.48, 0.50, 0.519}) {
    ASSERT_TRUE(d->goTo(t, why));
    EXPECT_EQ(d->frameKey(), key) << t;
  }
  ASSERT_TRUE(d->goTo(0.52, why));
  EXPECT_EQ(d->frameKey(), key + 1);
  EXPECT_FALSE(d->knownFrameKey(2.5)) << "not decoded yet";
  EXPECT_EQ(d->knownFrameKey(-5), d->knownFrameKey(0)) << "the first frame, before the start";
}

TEST(MediaDecoder, ColoursFollowTheStreamsMatrixAndRange) {
  struct Case {
    const char* name;
    std::string size, scale, tags;
  } cases[] = {
      {"HD untagged is BT.709", "1280x720", "out_color_matrix=bt709:out_range=tv", ""},
      {"SD untagged is BT.601", "320x240", "out_color_matrix=bt601:out_range=tv", ""},
      {"a tag wins over the size", "320x240", "out_color_matrix=bt709:out_range=tv", "-colorspace bt709"},
      {"full range when it says so", "320x240", "out_color_matrix=bt601:out_range=pc", "-color_range pc"},
  };
  int n = 0;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string file = colourFrame("colour" + std::to_string(n++) + ".mp4", c.size, c.scale, c.tags);
    ASSERT_FALSE(file.empty());
    std::string why;
    const auto d = MediaDecoder::open(file, why);
    ASSERT_TRUE(d) << why;
    EXPECT_TRUE(centreIs(d->frameAt(0, why), probeR, probeG, probeB, 6));
  }
  // A JPEG still: full range by its pixel format.
  const std::string jpeg = ffmpeg("-f lavfi -i color=c=0x32C864:s=160x120 -frames:v 1 -q:v 2", "colour.jpg");
  std::string why;
  const auto d = MediaDecoder::open(jpeg, why);
  ASSERT_TRUE(d) << why;
  EXPECT_TRUE(centreIs(d->frameAt(0, why), probeR, probeG, probeB, 6));
}

TEST(MediaDecoder, PicturesComeWithSquarePixelsAndPremultipliedAlpha) {
  for (const auto& [sar, width] : std::vector<std::pair<std::string, int>>{{"16/15", 768}, {"64/45", 1024}}) {
    const std::string clip = ffmpeg("-f lavfi -i color=c=gray:s=720x576:r=25:d=0.2,setsar=" + sar + encoding(),
                                    "wide" + std::to_string(width) + ".mp4");
    std::string why;
    const auto d = MediaDecoder::open(clip, why);
    ASSERT_TRUE(d) << why;
    EXPECT_EQ(d->width(), width) << sar;
    EXPECT_EQ(d->height(), 576);
    const auto image = d->frameAt(0.1, why);
    ASSERT_TRUE(image) << why;
    EXPECT_EQ(image->width(), width);
    EXPECT_EQ(image->height(), 576);
  }

  const std::string png = ffmpeg("-f lavfi -i color=c=red@0.5:s=64x48,format=rgba -frames:v 1", "half.png");
  std::string why;
  const auto d = MediaDecoder::open(png, why);
  ASSERT_TRUE(d) << why;
  const auto image = d->frameAt(3, why);
  ASSERT_TRUE(image) << why;
  const uint32_t p = image->row(10)[10];
  EXPECT_NEAR(double(p >> 24), 128, 1);
  EXPECT_NEAR(double(p >> 16 & 255), 128, 1) << "red, premultiplied";
  EXPECT_EQ(p & 0xffff, 0u);
  EXPECT_EQ(d->seeks(), 0) << "a still shows at every time without seeking";
}

TEST(MediaDecoder, FilesThatCannotBeShownSayWhy) {
  const std::string clip = colourClip("rgb.mp4");
  const std::string moovLast = ffmpeg("-f lavfi -i testsrc=s=160x120:r=25:d=1" + encoding(), "moovlast.mp4");
  // A PNG whose header claims 30000x30000 pixels (its checksum made good).
  std::string huge = readBytes(ffmpeg("-f lavfi -i color=s=16x16 -frames:v 1", "small.png"));
  ASSERT_GT(huge.size(), 33u);
  for (int at : {16, 20}) huge.replace(at, 4, std::string("\x00\x00\x75\x30", 4));
  uint32_t crc = 0xffffffffu;
  for (std::size_t i = 12; i < 29; ++i) {
    crc ^= uint8_t(huge[i]);
    for (int k = 0; k < 8; ++k) crc = crc >> 1 ^ (0xedb88320u & (0u - (crc & 1)));
  }
  crc = ~crc;
  for (int k = 0; k < 4; ++k) huge[std::size_t(29 + k)] = char(crc >> (24 - 8 * k) & 255);

  const struct {
    std::string path, why;
  } cases[] = {
      {folder().path("absent.mp4"), "no such file"},
      {folder().write("text.mp4", "This is a note about the shoot, not a video.\n"), "not a picture or video file"},
      {folder().write("empty.mp4", ""), "the file is empty"},
      {folder().path(""), "a folder, not a picture or video file"},
      {cutShort(moovLast, 2048, "cut.mp4"), "a damaged or cut short QuickTime / MOV file"},
      {cutShort(moovLast, readBytes(moovLast).size() / 2, "halfcut.mp4"),
       "a damaged or cut short QuickTime / MOV file"},
      {ffmpeg("-f lavfi -i sine=d=0.2", "tone.wav"), "no video stream"},
      {ffmpeg("-f lavfi -i color=s=9000x8 -frames:v 1", "wide.png"), "its frames are larger than 8192 pixels a side"},
      {folder().write("huge.png", huge), "its frames are larger than 8192 pixels a side"},
  };
  for (const auto& c : cases) {
    std::string why;
    EXPECT_FALSE(MediaDecoder::open(c.path, why)) << c.path;
    EXPECT_EQ(why, c.why) << c.path;
  }
  // Cut short with its index first: a reason, whatever the cut leaves.
  std::string why;
  EXPECT_FALSE(MediaDecoder::open(cutShort(clip, 2048, "cutfirst.mp4"), why));
  EXPECT_FALSE(why.empty());
  EXPECT_EQ(why.find('\n'), std::string::npos);
}

TEST(MediaDecoder, DamagedClipsGiveTheFramesTheyHave) {
  const std::string clip = patternClip("pattern.mp4");
  ASSERT_FALSE(clip.empty());
  const std::string whole = readBytes(clip);
  std::string why;
  const auto half = MediaDecoder::open(cutShort(clip, whole.size() / 2, "pattern-half.mp4"), why);
  ASSERT_TRUE(half) << why;
  EXPECT_TRUE(half->frameAt(0.2, why)) << why;
  EXPECT_TRUE(half->frameAt(2.9, why)) << "the last frame it has";
  const auto full = MediaDecoder::open(clip, why);
  ASSERT_TRUE(full && full->goTo(2.9, why)) << why;
  EXPECT_LT(half->frameKey(), full->frameKey()) << "not a frame from past the cut";

  // Junk over the middle: every time answers (a frame or a reason), and soon.
  std::string damaged = whole;
  for (std::size_t i = whole.size() / 3; i < whole.size() * 2 / 3; ++i) damaged[i] = char(i * 7919 >> 3);
  const auto d = MediaDecoder::open(folder().write("pattern-damaged.mp4", damaged), why);
  ASSERT_TRUE(d) << why;
  for (double t : {0.1, 2.9, 1.5, 0.5, 2.0, 1.0, 2.5}) {
    why.clear();
    if (!d->frameAt(t, why)) {
      EXPECT_FALSE(why.empty()) << t;
    }
  }
}
