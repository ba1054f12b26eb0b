// Node kinds as the view makes them, their titles, and what drawing a node
// costs: stills come from the stills cache, image files are read once.
#include <typeinfo>

#include <gtest/gtest.h>

#include "graph_nodes/FXGraphViewNodeKinds.h"
#include "graph_view/ViewStills.h"
#include "host/edit/EditFile.h"
#include "host/render/ImageCache.h"
#include "host/render/RenderCounters.h"
#include "host/render/StillsCache.h"
#include "host/render/VidRenderUtils.h"
#include "tests/support/Bytes.h"
#include "tests/support/ViewFixture.h"

namespace {

using testsupport::EditBuilder;
using testsupport::ViewFixture;

const IdStamp root(2, 0, 1), flat(3, 0, 1), gradient(3, 0, 2), stripes(3, 0, 3), untagged(3, 0, 4), material(3, 0, 5),
    image(3, 0, 6), aliasId(3, 0, 7), flatByTag(3, 0, 8), nearlyFlat(3, 0, 9);

EditPtr kindsEdit() {
  EditBuilder b;
  b.matte(flat, ComplexBackgroundEffect::Mode::flat);
  b.matte(gradient, ComplexBackgroundEffect::Mode::gradient);
  b.effect(stripes, "PixShader:Mattes:stripes.fx");
  b.effect(untagged, "");
  b.material(material, L"Interview");
  b.image(image, "logo.png");
  b.alias(aliasId, material);
  b.effect(flatByTag, "PixShader:Mattes:flatcol.fx");
  b.effect(nearlyFlat, "PixShader:Mattes:flatcol.fxx");
  b.effect(root, "mix", {flat, gradient, stripes, untagged, material, image, aliasId, flatByTag, nearlyFlat});
  b.channel(IdStamp(1, 0, 1), L"V1", root);
  return b.edit();
}

TEST(NodeKinds, TheViewChoosesTheKindByGraphNodeAndTag) {
  ViewFixture fx(kindsEdit());
  struct Expect {
    IdStamp id;
    const std::type_info& kind;
    bool thumbnail;
  };
  for (const Expect& e :
       {Expect{root, typeid(FXGraphViewNode), false}, Expect{flat, typeid(FXGraphViewColourMatteNode), true},
        Expect{flatByTag, typeid(FXGraphViewColourMatteNode), true},
        Expect{nearlyFlat, typeid(FXGraphViewThumbNode), true}, Expect{gradient, typeid(FXGraphViewThumbNode), true},
        Expect{stripes, typeid(FXGraphViewThumbNode), true}, Expect{untagged, typeid(FXGraphViewNode), false},
        Expect{material, typeid(FXGraphViewMatNode), true}, Expect{image, typeid(FXGraphViewImageNode), true},
        Expect{aliasId, typeid(FXGraphViewAliasNode), false}}) {
    Ux::Ptr<FXGraphViewNode> n = fx.node(e.id);
    ASSERT_TRUE(n) << e.id.asString().str();
    const FXGraphViewNode& made = *n;
    EXPECT_EQ(typeid(made), e.kind) << e.id.asString().str();
    EXPECT_EQ(n->hasThumbnail(), e.thumbnail) << e.id.asString().str();
  }
  EXPECT_EQ(fx.node(aliasId)->getMainCol(), Palette().window(0)) << "an alias reads as a placeholder";
  EXPECT_EQ(fx.node(root)->getTitleStr().str(), L"V1 : fx") << "titles name the channel";
  EXPECT_EQ(fx.node(material)->getTitleStr().str(), L"Interview : V1");

  const EditPtr& edit = fx.view().getEdit();
  EXPECT_TRUE(isFlatBackgroundColourEffect(Tag<FXGraphNodeBase>(edit->openNode(flat))));
  EXPECT_FALSE(isFlatBackgroundColourEffect(Tag<FXGraphNodeBase>(edit->openNode(gradient))));
  EXPECT_FALSE(isFlatBackgroundColourEffect(Tag<FXGraphNodeBase>(edit->openNode(flatByTag)))) << "not a background";
  EXPECT_FALSE(isFlatBackgroundColourEffect(Tag<FXGraphNodeBase>()));
}

class DrawnPromo : public ::testing::Test {
protected:
  ViewFixture fx{EditFile::load(testsupport::sourcePath("examples/promo.json")).edit};
};

TEST_F(DrawnPromo, ThumbnailsComeFromTheStillsCacheAndTellTheColourAtTheirMiddle) {
  Ux::Ptr<FXGraphViewNode> sky = fx.node(IdStamp(3, 0, 6)); // a gradient matte
  ASSERT_TRUE(sky && dynamic_cast<FXGraphViewThumbNode*>(sky.get()));
  ASSERT_TRUE(sky->drawnLast());
  ASSERT_EQ(sky->lastThumbnailTime(), 0) << "its thumbnail was drawn";
  Colour c; // orange at the bottom, blue at the top (the flat matte's is checked in the program's picture)
  ASSERT_TRUE(sky->thumbnailColour(c));
  EXPECT_NEAR(c.r, (0.95 + 0.2) / 2, 0.05);
  EXPECT_NEAR(c.b, (0.3 + 0.9) / 2, 0.05);
  EXPECT_FALSE(fx.node(IdStamp(2, 0, 1))->thumbnailColour(c)) << "a plain node shows no picture";

  const unsigned rendered = Render::counters().stillsRendered.load();
  fx.view().redraw();
  EXPECT_EQ(Render::counters().stillsRendered.load(), rendered);
  Render::StillsCache::instance().clear();
  fx.view().redraw();
  EXPECT_GT(Render::counters().stillsRendered.load(), rendered);
}

TEST_F(DrawnPromo, AnUnchangedImageFileIsNotReadAgainAndANodeOutsideTheViewDrawsNothing) {
  auto* logo = dynamic_cast<FXGraphViewImageNode*>(fx.node(IdStamp(3, 0, 3)).get());
  ASSERT_TRUE(logo);
  // The node asks the image cache for its picture only when its file changes.
  const unsigned asked = Render::counters().picturesAsked.load();
  fx.view().redraw();
  EXPECT_EQ(Render::counters().picturesAsked.load(), asked);
  Ux::dynamicCast<ImageImportEffect>(logo->graphNode())->setFile("elsewhere.png");
  fx.view().redraw();
  EXPECT_EQ(Render::counters().picturesAsked.load(), asked + 1);

  Ux::Ptr<FXGraphViewNode> node = fx.node(IdStamp(2, 0, 1));
  ASSERT_TRUE(node && node->drawnLast());
  node->setPosition(100, 100, false);
  node->draw();
  EXPECT_FALSE(node->drawnLast());
}

// Stills made in the background, as in the window: a change of the edit
// (a click that bypasses an effect, say) makes every node afresh and every
// still stale, yet each picture stays on screen until its new still is made.
TEST(BackgroundPictures, AThumbnailIsNeverBlankAfterAChange) {
  ViewFixture fx{EditFile::load(testsupport::sourcePath("examples/promo.json")).edit, {400, 300}, true};
  FXGraphView& view = fx.view();
  view.redraw();
  view.stills().finish();
  view.redraw();
  const IdStamp sky(3, 0, 6);
  Colour before;
  ASSERT_TRUE(fx.node(sky)->thumbnailColour(before)) << "the picture is up";
  for (const IdStamp& effect : {IdStamp(2, 0, 1), IdStamp(2, 0, 3)}) {
    const FXGraphViewNode* old = fx.node(sky).get();
    ASSERT_TRUE(view.handleNodeClicked(fx.node(effect)));
    ASSERT_NE(fx.node(sky).get(), old) << "the node was made afresh";
    view.redraw();
    Colour now;
    ASSERT_TRUE(fx.node(sky)->thumbnailColour(now)) << "blank before its still is made";
    EXPECT_EQ(now, before);
  }
  // Zoomed, the old picture is drawn to the new size meanwhile.
  view.setViewZoom(0.8);
  view.redraw();
  Colour zoomed;
  EXPECT_TRUE(fx.node(sky)->thumbnailColour(zoomed));
}

} // namespace
