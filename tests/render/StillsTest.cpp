#include <gtest/gtest.h>

#include "host/edit/GraphNodeKinds.h"
#include "host/render/ImageCache.h"
#include "host/render/StillsCache.h"
#include "host/render/VidRenderUtils.h"
#include "tests/support/Bytes.h"

namespace {

// One video channel whose graph head is set per test; nodes made in code.
class Stills : public ::testing::Test {
protected:
  void SetUp() override {
    edit = EditPtr(new Edit(Cookie::generate(Cookie::editKind), L"Stills"));
    edit->setFolder(testsupport::sourcePath("examples"));
    EditChannel v1;
    v1.id = IdStamp(1, 0, 1);
    v1.cels = {{0, 10, Cel::Kind::graph, IdStamp()}};
    edit->addChannel(v1);
  }
  void TearDown() override { edit->close(); }

  IdStamp card(const char* pattern) {
    const IdStamp id(3, 0, ++next);
    edit->addNode(
        Ux::Ptr<FXGraphNodeBase>(new MaterialUsageNode(id, L"card", MaterialUsageNode::Media::testCard, pattern)));
    return id;
  }
  Ux::Ptr<EffectInstance> effect(const char* tag, std::vector<IdStamp> inputs) {
    Ux::Ptr<EffectInstance> e(new EffectInstance(IdStamp(2, 0, ++next), L"fx", tag));
    e->setNumInputs(static_cast<unsigned>(inputs.size()));
    for (unsigned i = 0; i < inputs.size(); ++i) e->setInputTrackId(i, inputs[i], false);
    edit->addNode(e);
    return e;
  }
  // The still of a node (as the channel's head) at 64 x 36.
  Ux::Ptr<UxImage> still(const IdStamp& head) {
    edit->getChan(0).cels[0].ref = head;
    return Render::VidRenderUtils::renderStill(context());
  }
  Render::RenderContext context() {
    return Render::RenderContext(EditGraphIterator(edit, 1, EditGraphIterator::startAtFirstRoot),
                                 VideoFormat{"test", 64, 36, 16.0 / 9.0});
  }
  static void expectColour(const UxImage& image, int x, int y, Colour want) {
    const Colour got = image.pixel(x, y);
    EXPECT_NEAR(got.r, want.r, 0.02) << x << "," << y;
    EXPECT_NEAR(got.g, want.g, 0.02) << x << "," << y;
    EXPECT_NEAR(got.b, want.b, 0.02) << x << "," << y;
  }

  EditPtr edit;
  unsigned next = 0;
};

TEST_F(Stills, MixWipeAndPictureInPictureCombineTheirInputs) {
  const IdStamp red = card("solid:1,0,0"), blue = card("solid:0,0,1");
  auto mix = effect("mix", {red, blue});
  mix->setParam("amount", {0.25});
  expectColour(*still(mix->getId()), 32, 18, Colour(0.75, 0, 0.25));

  auto wipe = effect("wipe", {red, blue});
  wipe->setParam("position", {0.5});
  Ux::Ptr<UxImage> w = still(wipe->getId());
  expectColour(*w, 10, 18, Colour(1, 0, 0));
  expectColour(*w, 54, 18, Colour(0, 0, 1));

  // Half size, centred three quarters across and a quarter up (y runs up).
  auto pip = effect("pip", {red, blue});
  pip->setParam("x", {0.75});
  pip->setParam("y", {0.25});
  pip->setParam("scale", {0.5});
  Ux::Ptr<UxImage> p = still(pip->getId());
  expectColour(*p, 48, 27, Colour(1, 0, 0)); // rows run top first
  expectColour(*p, 16, 9, Colour(0, 0, 1));
}

TEST_F(Stills, MattesCorrectionAndPassThrough) {
  const IdStamp grey = card("solid:0.5,0.5,0.5");
  Ux::Ptr<ComplexBackgroundEffect> gradient(new ComplexBackgroundEffect(
      IdStamp(4, 0, 1), L"sky", ComplexBackgroundEffect::Mode::gradient, Colour(1, 0, 0), Colour(0, 0, 1)));
  edit->addNode(gradient);
  Ux::Ptr<UxImage> g = still(gradient->getId());
  expectColour(*g, 5, 35, Colour(1, 0, 0)); // bottom row
  expectColour(*g, 5, 0, Colour(0, 0, 1));  // top row

  auto correct = effect("colourcorrect", {grey});
  correct->setParam("gain", {2, 1, 0});
  expectColour(*still(correct->getId()), 3, 3, Colour(1, 0.5, 0));

  // Unknown effects and bypassed ones show input 0; a free input is black.
  expectColour(*still(effect("PixShader:Unknown", {grey})->getId()), 3, 3, Colour(0.5, 0.5, 0.5));
  correct->setActive(false);
  expectColour(*still(correct->getId()), 3, 3, Colour(0.5, 0.5, 0.5));
  expectColour(*still(effect("mix", {IdStamp(), IdStamp()})->getId()), 3, 3, Colour(0, 0, 0));
}

TEST_F(Stills, ImportedImagesAndCyclesRender) {
  Ux::Ptr<ImageImportEffect> logo(new ImageImportEffect(IdStamp(5, 0, 1), L"logo", "logo.png"));
  edit->addNode(logo);
  // The logo (160 x 90) fills the frame; its orange bar runs from 80 to 150
  // across and from 35 to 55 down.
  Ux::Ptr<UxImage> l = still(logo->getId());
  expectColour(*l, 115 * 64 / 160, 45 * 36 / 90, Colour(240 / 255.0, 140 / 255.0, 40 / 255.0));
  EXPECT_EQ(l->pixel(2, 2).a, 0.0) << "clear where the picture is";

  auto a = effect("mix", {IdStamp(), IdStamp()});
  auto b = effect("", {a->getId()});
  a->setInputTrackId(0, b->getId(), false);
  a->setInputTrackId(1, card("solid:0,1,0"), false);
  a->setParam("amount", {1.0});
  expectColour(*still(a->getId()), 3, 3, Colour(0, 1, 0));
}

TEST_F(Stills, CacheServesStillsUntilTheEditChanges) {
  Render::StillsCache& cache = Render::StillsCache::instance();
  cache.clear();
  edit->getChan(0).cels[0].ref = card("bars");
  const Render::RenderContext c = context();
  EXPECT_FALSE(cache.getStillImage(c));
  cache.add(c, Render::VidRenderUtils::renderStill(c));
  EXPECT_TRUE(cache.getStillImage(context())) << "the same node, frame and size";
  EXPECT_FALSE(cache.getStillImage(Render::RenderContext(c.iterator(), VideoFormat{"x", 32, 18, 16.0 / 9.0})));

  edit->addModification({EditModification(EditModification::effectParams)}, true);
  EXPECT_FALSE(cache.getStillImage(context())) << "stale after a change";

  cache.add(c, Render::VidRenderUtils::renderStill(c));
  Render::VidRenderUtils::unRender(CelEventPair(edit, 0, 1), true);
  EXPECT_FALSE(cache.getStillImage(context()));
  EXPECT_EQ(cache.size(), 0u);
}

TEST(ImageCacheTest, ReadsAFileOnceAndRefusesBadOnes) {
  ImageCache::clear();
  const std::string logo = testsupport::sourcePath("examples/logo.png");
  const unsigned before = ImageCache::filesRead();
  Ux::Ptr<UxImage> small = ImageCache::loadImage(logo, nullptr, 40, 20);
  ASSERT_TRUE(small);
  EXPECT_EQ(small->width(), 40);
  EXPECT_TRUE(ImageCache::loadImage(logo, nullptr, 80, 45));
  EXPECT_EQ(ImageCache::filesRead(), before + 1);
  EXPECT_FALSE(ImageCache::loadImage(testsupport::sourcePath("examples/promo.json"), nullptr, 10, 10));
  EXPECT_FALSE(ImageCache::loadImage(logo, nullptr, 100000, 10)) << "absurd sizes are refused";
}

} // namespace
