#include <gtest/gtest.h>

#include "tests/render/StillsFixture.h"
#include "tests/support/Program.h"

namespace {

using rendertest::expectColour;
using rendertest::Stills;

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

TEST_F(Stills, TestCardsAndTonesShowTheirPatterns) {
  // Seven bars across 64 pixels, white first and blue last.
  Ux::Ptr<UxImage> bars = still(card("bars"));
  expectColour(*bars, 64 / 14, 18, Colour(1, 1, 1));
  expectColour(*bars, 13 * 64 / 14, 18, Colour(0, 0, 1));
  Ux::Ptr<UxImage> ramp = still(card("ramp"));
  expectColour(*ramp, 0, 5, Colour(0, 0, 0));
  expectColour(*ramp, 63, 5, Colour(1, 1, 1));
  for (int x = 1; x < 64; ++x) ASSERT_GT(ramp->pixel(x, 30).r, ramp->pixel(x - 1, 30).r) << "rises at " << x;
  expectColour(*still(material(MaterialUsageNode::Media::tone, "440")), 32, 18, Colour(0, 0, 0));
}

TEST_F(Stills, MattesCorrectionAndPassThrough) {
  const IdStamp grey = card("solid:0.5,0.5,0.5");
  Ux::Ptr<ComplexBackgroundEffect> gradient(new ComplexBackgroundEffect(
      IdStamp(4, 0, 1), L"sky", ComplexBackgroundEffect::Mode::gradient, Colour(1, 0, 0), Colour(0, 0, 1)));
  edit->addNode(gradient);
  Ux::Ptr<UxImage> g = still(gradient->getId());
  expectColour(*g, 5, 35, Colour(1, 0, 0)); // bottom row
  expectColour(*g, 5, 0, Colour(0, 0, 1));  // top row
  Ux::Ptr<ComplexBackgroundEffect> flat(new ComplexBackgroundEffect(
      IdStamp(4, 0, 2), L"flat", ComplexBackgroundEffect::Mode::flat, Colour(0.1, 0.25, 0.75)));
  edit->addNode(flat);
  expectColour(*still(flat->getId()), 40, 30, Colour(0.1, 0.25, 0.75));

  auto correct = effect("colourcorrect", {grey});
  correct->setParam("gain", {2, 1, 0});
  expectColour(*still(correct->getId()), 3, 3, Colour(1, 0.5, 0));

  // Unknown effects, aliases and bypassed effects show input 0; a free input is black.
  expectColour(*still(effect("PixShader:Unknown", {grey})->getId()), 3, 3, Colour(0.5, 0.5, 0.5));
  Ux::Ptr<AliasedInputEffect> alias(new AliasedInputEffect(IdStamp(4, 0, 3), L"alias"));
  alias->setInputTrackId(0, correct->getId(), false);
  edit->addNode(alias);
  expectColour(*still(alias->getId()), 3, 3, Colour(1, 0.5, 0));
  correct->setActive(false);
  expectColour(*still(correct->getId()), 3, 3, Colour(0.5, 0.5, 0.5));
  expectColour(*still(effect("mix", {IdStamp(), IdStamp()})->getId()), 3, 3, Colour(0, 0, 0));
}

TEST_F(Stills, ImportedImagesCyclesAndDeepChains) {
  Ux::Ptr<ImageImportEffect> logo(new ImageImportEffect(IdStamp(5, 0, 1), L"logo", "logo.png"));
  edit->addNode(logo);
  // The logo (160 x 90) fills the frame; its orange bar runs from 82 to 150
  // across and from 35 to 55 down.
  Ux::Ptr<UxImage> l = still(logo->getId());
  expectColour(*l, 115 * 64 / 160, 45 * 36 / 90, Colour(240 / 255.0, 140 / 255.0, 40 / 255.0));
  expectColour(*l, 2, 2, Colour(), 0); // clear where the picture is

  auto a = effect("mix", {IdStamp(), IdStamp()});
  auto b = effect("", {a->getId()});
  a->setInputTrackId(0, b->getId(), false);
  a->setInputTrackId(1, card("solid:0,1,0"), false);
  a->setParam("amount", {1.0});
  expectColour(*still(a->getId()), 3, 3, Colour(0, 1, 0));

  // A chain of pass-through effects: followed when short, cut (black) when
  // longer than the renderer follows.
  auto chain = [&](int length) {
    IdStamp below = card("solid:0,1,0");
    for (int i = 0; i < length; ++i) below = effect("", {below})->getId();
    return below;
  };
  expectColour(*still(chain(10)), 3, 3, Colour(0, 1, 0));
  expectColour(*still(chain(200)), 3, 3, Colour(0, 0, 0));
}

TEST_F(Stills, AViewLookUpTableMapsEachChannel) {
  edit->getChan(0).cels[0].ref = card("solid:0.2,0.4,0.6");
  ViewLUT lut = ViewLUT::identity();
  for (int i = 0; i < 256; ++i) lut.table[0][static_cast<std::size_t>(i)] = static_cast<uint8_t>(255 - i);
  Render::RenderContext c = context();
  c.setViewLUT(lut);
  expectColour(*Render::VidRenderUtils::renderStill(c), 10, 10, Colour(0.8, 0.4, 0.6));
}

// A picture file of a known shape: 32 x 18 (16:9), its six left columns red,
// the rest white.
class PictureFiles : public Stills {
protected:
  void SetUp() override {
    Stills::SetUp();
    UxImage picture(32, 18);
    picture.fill(Colour(1, 1, 1));
    for (int y = 0; y < 18; ++y)
      for (int x = 0; x < 6; ++x) picture.setPixel(x, y, Colour(1, 0, 0));
    file = folder.path("shape.png");
    ASSERT_TRUE(picture.savePNG(file));
  }
  void TearDown() override {
    setARCSettings(ARCSettings());
    Stills::TearDown();
  }
  Ux::Ptr<UxImage> fitted(int fit, const VideoFormat& format) {
    ARCSettings arc;
    arc.fit = fit;
    setARCSettings(arc);
    return still(material(MaterialUsageNode::Media::file, file.c_str()), format);
  }

  testsupport::TempFolder folder;
  std::string file;
};

TEST_F(PictureFiles, AreFittedAsThePictureShapeSettingsSay) {
  const VideoFormat square{"square", 48, 48, 1.0};
  // Letterbox: 48 x 27 from row 10.5, black above and below.
  Ux::Ptr<UxImage> letterbox = fitted(ARCSettings::letterbox, square);
  expectColour(*letterbox, 24, 5, Colour(0, 0, 0));
  expectColour(*letterbox, 24, 24, Colour(1, 1, 1));
  expectColour(*letterbox, 2, 24, Colour(1, 0, 0));
  // Centre cut: 85 x 48, the red columns cut off at the left.
  Ux::Ptr<UxImage> cut = fitted(ARCSettings::centreCut, square);
  expectColour(*cut, 24, 5, Colour(1, 1, 1));
  expectColour(*cut, 2, 24, Colour(1, 1, 1));

  // Shapes are compared on screen: 64 x 36 pixels shown at 4:3 letterbox the
  // 16:9 picture into rows 4.5 to 31.5.
  Ux::Ptr<UxImage> wide = fitted(ARCSettings::letterbox, VideoFormat{"anamorphic", 64, 36, 4.0 / 3.0});
  expectColour(*wide, 32, 1, Colour(0, 0, 0));
  expectColour(*wide, 32, 18, Colour(1, 1, 1));
}

} // namespace
