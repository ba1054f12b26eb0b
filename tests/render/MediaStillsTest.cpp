// Stills of file materials: real frames decoded at the edit's time, and the
// offline card where there is nothing to decode.
#include <cstdlib>
#include <filesystem>

#include "host/media/MediaFiles.h"
#include "host/render/NodePictures.h"
#include "host/render/StillPixels.h"
#include "tests/render/StillsFixture.h"
#include "tests/support/Program.h"

namespace rendertest {
namespace media {

// Clips made for the test: one colour a second, so that a frame's colour
// tells its time.
class MediaStills : public Stills {
protected:
  static void SetUpTestSuite() {
    folder_ = new testsupport::TempFolder;
    const std::string out = folder_->path("colours.mp4");
    const std::string command =
        "ffmpeg -v error -y -f lavfi -i color=c=red:s=160x90:r=25:d=1 -f lavfi -i color=c=lime:s=160x90:r=25:d=1 "
        "-f lavfi -i color=c=blue:s=160x90:r=25:d=1 -filter_complex concat=n=3:v=1:a=0 -g 50 -pix_fmt yuv420p '" +
        out + "'";
    made_ = std::system(command.c_str()) == 0;
  }
  static void TearDownTestSuite() {
    delete folder_;
    folder_ = nullptr;
  }
  void SetUp() override {
    Stills::SetUp();
    if (!made_) GTEST_SKIP() << "the ffmpeg program could not make the test clip";
    edit->setFolder(folder_->path(""));
  }
  void TearDown() override {
    Render::NodePictures::instance().clear();
    MediaFiles::clear();
    Stills::TearDown();
  }
  IdStamp clip(const char* file, MediaPlacement placement = {}) {
    const IdStamp id = material(MaterialUsageNode::Media::file, file);
    edit->openObject<MaterialUsageNode>(id)->setPlacement(placement);
    return id;
  }
  Ux::Ptr<UxImage> at(const IdStamp& node, double time) {
    edit->getChan(0).cels[0].ref = node;
    return Render::VidRenderUtils::renderStill(context({"test", 64, 36, 16.0 / 9.0}, time));
  }
  static testsupport::TempFolder* folder_;
  static bool made_;
};
testsupport::TempFolder* MediaStills::folder_ = nullptr;
bool MediaStills::made_ = false;

const Colour red(1, 0, 0), green(0, 1, 0), blue(0, 0, 1);

void expectNear(const UxImage& image, Colour want, const char* what = "") {
  const Colour got = image.pixel(image.width() / 2, image.height() / 2);
  EXPECT_NEAR(got.r, want.r, 0.06) << what;
  EXPECT_NEAR(got.g, want.g, 0.06) << what;
  EXPECT_NEAR(got.b, want.b, 0.06) << what;
}

TEST_F(MediaStills, TheFrameFollowsTheEditsTimeWherePlacementPutsIt) {
  // Media time = in + (edit time - at) x speed.
  const IdStamp plain = clip("colours.mp4");
  expectNear(*at(plain, 0.5), red);
  expectNear(*at(plain, 2.5), blue);
  expectNear(*at(plain, 1.5), green, "back again: a seek");
  expectNear(*at(plain, 9), blue, "past the end: the last frame");
  const IdStamp placed = clip("colours.mp4", {1.0, 4.0, 1, true});
  expectNear(*at(placed, 4.5), green);
  expectNear(*at(placed, 5.5), blue);
  expectNear(*at(placed, 2), red, "before its first frame: the first");
  const IdStamp fast = clip("colours.mp4", {0, 0, 2, true});
  expectNear(*at(fast, 1.2), blue);
  const IdStamp frozen = clip("colours.mp4", {1.5, 0, 0, true});
  expectNear(*at(frozen, 0.1), green);
  expectNear(*at(frozen, 3), green);
}

TEST_F(MediaStills, WhatCannotBeDecodedShowsTheOfflineCard) {
  const Ux::Ptr<UxImage> card = Render::Pixels::offline("gone.mov", 64, 36);
  folder_->write("notes.mp4", "not a clip at all\n");
  for (const char* file : {"gone.mov", "notes.mp4", ""}) {
    const Ux::Ptr<UxImage> still = at(clip(file), 1);
    ASSERT_TRUE(still) << file;
    // The card's ground, not black.
    const Colour corner = still->pixel(8, 8);
    EXPECT_GT(corner.r, 0.15) << file;
    EXPECT_LT(corner.g, 0.1) << file;
  }
  // The card says what it is.
  bool light = false;
  for (int x = 0; x < card->width(); ++x) light = light || card->pixel(x, card->height() * 42 / 100).r > 0.8;
  EXPECT_TRUE(light) << "the words \"Media offline\" across the card";
}

} // namespace media
} // namespace rendertest
