#include "host/render/StillsCache.h"

#include <gtest/gtest.h>

#include "host/edit/CelEventPair.h"
#include "host/notify/Log.h"
#include "host/render/ImageCache.h"
#include "host/render/RenderCounters.h"
#include "tests/render/StillsFixture.h"
#include "tests/support/Program.h"

namespace {

using Render::StillsCache;
using Render::VidRenderUtils;

class CachedStills : public rendertest::Stills {
protected:
  void SetUp() override {
    Stills::SetUp();
    cache().clear();
  }
  void TearDown() override {
    cache().clear();
    Stills::TearDown();
  }
  static StillsCache& cache() { return StillsCache::instance(); }
  static Ux::Ptr<UxImage> thumbnail(const Render::RenderContext& c) { return VidRenderUtils::cachedStill(c); }
  // Keeps a small picture as the still of a position.
  void keep(const EditGraphIterator& at) { cache().add(Render::RenderContext(at, tiny), new UxImage(4, 4)); }
  bool kept(const EditGraphIterator& at) { return bool(cache().getStillImage(Render::RenderContext(at, tiny))); }

  const VideoFormat tiny{"tiny", 4, 4, 1.0};
};

TEST_F(CachedStills, AreRenderedOnceUntilTheEditChanges) {
  edit->getChan(0).cels[0].ref = card("bars");
  const unsigned before = Render::counters().stillsRendered.load();
  Ux::Ptr<UxImage> first = thumbnail(context());
  EXPECT_EQ(thumbnail(context()), first) << "served from the cache";
  // 1.01 s lies on the same frame as 1 s (at 25 frames a second).
  EXPECT_EQ(thumbnail(context({"test", 64, 36, 16.0 / 9.0}, 1.01)), first);
  EXPECT_EQ(Render::counters().stillsRendered.load(), before + 1);

  thumbnail(context({"small", 32, 18, 16.0 / 9.0}));
  thumbnail(context({"test", 64, 36, 16.0 / 9.0}, 2));
  EXPECT_EQ(Render::counters().stillsRendered.load(), before + 3) << "another size and another frame are other stills";

  edit->addModification({EditModification(EditModification::effectParams)}, true);
  EXPECT_FALSE(cache().getStillImage(context())) << "stale once the edit has changed";
  EXPECT_NE(thumbnail(context()), first);
  EXPECT_EQ(Render::counters().stillsRendered.load(), before + 4);
}

TEST_F(CachedStills, TheLeastRecentlyUsedGoFirst) {
  edit->getChan(0).cels[0] = {0, (StillsCache::capacity + 1) / edit->getFrameRate(), Cel::Kind::graph, card("bars")};
  auto frame = [&](int n) { return head(n / edit->getFrameRate()); };
  keep(frame(0));
  keep(frame(1));
  ASSERT_TRUE(kept(frame(0))); // now used more recently than frame 1
  for (int n = 2; n <= static_cast<int>(StillsCache::capacity); ++n) keep(frame(n));
  EXPECT_EQ(cache().size(), StillsCache::capacity);
  EXPECT_EQ(cache().bytes(), StillsCache::capacity * 4 * 4 * 4);
  EXPECT_TRUE(kept(frame(0)));
  EXPECT_FALSE(kept(frame(1)));
  EXPECT_TRUE(kept(frame(2)));
}

TEST_F(CachedStills, UnRenderForgetsTheStillsOfACelsGraph) {
  // V1: a mix over [0, 10) and [10, 20) whose input 1 names channel V2 (a
  // material cel); V3: a graph of its own.
  const IdStamp red = card("solid:1,0,0"), green = card("solid:0,1,0");
  auto mix = effect("mix", {card("solid:0,0,1"), IdStamp(1, 0, 2)});
  edit->getChan(0).cels = {{0, 10, Cel::Kind::graph, mix->getId()}, {10, 20, Cel::Kind::graph, mix->getId()}};
  EditChannel v2{IdStamp(1, 0, 2), TrackType::video, L"V2", L"V2", 0, {{0, 20, Cel::Kind::material, red}}};
  EditChannel v3{IdStamp(1, 0, 3), TrackType::video, L"V3", L"V3", 0, {{0, 20, Cel::Kind::graph, green}}};
  edit->addChannel(v2);
  edit->addChannel(v3);
  EditGraphIterator redThroughV2 = head(1);
  ASSERT_TRUE(redThroughV2.moveToInput(1));
  const EditGraphIterator late = head(15), v3Head = EditGraphIterator::atChannel(edit, 1, IdStamp(1, 0, 3));
  for (const EditGraphIterator& at : {head(1), late, redThroughV2, v3Head}) keep(at);

  VidRenderUtils::unRender(CelEventPair(edit, 0, 1), false);
  EXPECT_FALSE(kept(head(1)));
  EXPECT_FALSE(kept(redThroughV2)) << "reached through a channel";
  EXPECT_TRUE(kept(late)) << "a frame of another cel";
  EXPECT_TRUE(kept(v3Head)) << "another graph";

  VidRenderUtils::unRender(CelEventPair(edit, 0, 1), true);
  EXPECT_FALSE(kept(late));
  EXPECT_TRUE(kept(v3Head));
  keep(redThroughV2);
  VidRenderUtils::unRender(CelEventPair(edit, 1, 1), true);
  EXPECT_FALSE(kept(redThroughV2)) << "a material cel forgets its material";
}

// Picture files written for a test into a folder of their own.
class PictureFolder : public ::testing::Test {
protected:
  void SetUp() override { ImageCache::clear(); }
  void TearDown() override { ImageCache::clear(); }
  std::string write(const char* name, int w, int h, Colour c) {
    UxImage picture(w, h);
    picture.fill(c);
    EXPECT_TRUE(picture.savePNG(folder.path(name)));
    return folder.path(name);
  }
  testsupport::TempFolder folder;
};

TEST_F(PictureFolder, AFileIsReadOnceWhileItIsUnchanged) {
  const std::string logo = testsupport::sourcePath("examples/logo.png");
  const unsigned before = Render::counters().filesRead.load();
  Ux::Ptr<UxImage> small = ImageCache::loadImage(logo, nullptr, 40, 20);
  ASSERT_TRUE(small);
  EXPECT_EQ(std::pair(small->width(), small->height()), std::pair(40, 20));
  EXPECT_EQ(ImageCache::loadImage(logo, nullptr, 40, 20), small);
  EXPECT_EQ(ImageCache::loadImage(logo, nullptr, 0, 0)->width(), 160) << "the stored size";
  EXPECT_EQ(Render::counters().filesRead.load(), before + 1);

  // Rewritten (another size, so another length): read again.
  const std::string path = write("changing.png", 8, 8, Colour(1, 0, 0));
  EXPECT_NEAR(ImageCache::loadImage(path, nullptr, 0, 0)->pixel(1, 1).r, 1, 0.01);
  write("changing.png", 16, 16, Colour(0, 0, 1));
  Ux::Ptr<UxImage> changed = ImageCache::loadImage(path, nullptr, 0, 0);
  ASSERT_TRUE(changed);
  EXPECT_NEAR(changed->pixel(1, 1).b, 1, 0.01);
  EXPECT_EQ(Render::counters().filesRead.load(), before + 3);
}

TEST_F(PictureFolder, BadFilesGiveNullAndOneWarningUntilTheyChange) {
  LogChannel::Capture log(Log::channel());
  const std::string missing = folder.path("missing.png");
  EXPECT_FALSE(ImageCache::loadImage(missing, nullptr, 0, 0));
  EXPECT_FALSE(ImageCache::loadImage(missing, nullptr, 10, 10));
  ASSERT_EQ(log.messages().size(), 1u);
  EXPECT_NE(log.messages()[0].find("missing.png"), std::string::npos);
  write("missing.png", 4, 4, Colour(0, 1, 0));
  EXPECT_TRUE(ImageCache::loadImage(missing, nullptr, 0, 0)) << "read once it exists";

  EXPECT_FALSE(ImageCache::loadImage(testsupport::sourcePath("examples/promo.json"), nullptr, 10, 10));
  EXPECT_NE(log.joined().find("not a PNG"), std::string::npos);

  // A header that claims 100000 x 100000 pixels is refused before decoding.
  const unsigned char head[] = {0x89, 'P', 'N', 'G',  '\r', '\n', 0x1a, '\n', 0,    0, 0, 13, 'I', 'H', 'D',
                                'R',  0,   1,   0x86, 0xa0, 0,    1,    0x86, 0xa0, 8, 6, 0,  0,   0};
  const std::string huge = folder.write("huge.png", std::string(reinterpret_cast<const char*>(head), sizeof head));
  const unsigned reads = Render::counters().filesRead.load();
  EXPECT_FALSE(ImageCache::loadImage(huge, nullptr, 0, 0));
  EXPECT_EQ(Render::counters().filesRead.load(), reads);
  EXPECT_NE(log.joined().find("100000 x 100000"), std::string::npos);

  const std::string fine = write("fine.png", 4, 4, Colour(0, 1, 0));
  EXPECT_FALSE(ImageCache::loadImage(fine, nullptr, 100000, 10)) << "absurd sizes are refused";
  EXPECT_FALSE(ImageCache::loadImage(fine, nullptr, -1, -1));
}

} // namespace
