#pragma once
#include <vector>

#include <gtest/gtest.h>

#include "host/edit/GraphNodeKinds.h"
#include "host/render/RenderContext.h"
#include "host/render/VidRenderUtils.h"
#include "tests/support/Bytes.h"

namespace rendertest {

// Checks a pixel's colour (x from the left, y from the top) within rounding;
// colour channels are not compared where the pixel is clear.
inline void expectColour(const UxImage& image, int x, int y, Colour want, double alpha = 1) {
  const Colour got = image.pixel(x, y);
  EXPECT_NEAR(got.a, alpha, 0.02) << "alpha at " << x << "," << y;
  if (alpha == 0) return;
  EXPECT_NEAR(got.r, want.r, 0.02) << "red at " << x << "," << y;
  EXPECT_NEAR(got.g, want.g, 0.02) << "green at " << x << "," << y;
  EXPECT_NEAR(got.b, want.b, 0.02) << "blue at " << x << "," << y;
}

// An edit with one video channel (V1, a graph cel over [0, 10)) whose head
// each test sets, nodes made in code, and files resolved in examples/.
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

  IdStamp material(MaterialUsageNode::Media media, const char* source) {
    const IdStamp id(3, 0, ++next);
    edit->addNode(Ux::Ptr<FXGraphNodeBase>(new MaterialUsageNode(id, L"material", media, source)));
    return id;
  }
  IdStamp card(const char* pattern) { return material(MaterialUsageNode::Media::testCard, pattern); }
  Ux::Ptr<EffectInstance> effect(const char* tag, std::vector<IdStamp> inputs) {
    Ux::Ptr<EffectInstance> e(new EffectInstance(IdStamp(2, 0, ++next), L"fx", tag));
    e->setNumInputs(static_cast<unsigned>(inputs.size()));
    for (unsigned i = 0; i < inputs.size(); ++i) e->setInputTrackId(i, inputs[i], false);
    edit->addNode(e);
    return e;
  }
  // The position of V1's head at a time.
  EditGraphIterator head(double time = 1) { return EditGraphIterator(edit, time, EditGraphIterator::startAtFirstRoot); }
  Render::RenderContext context(const VideoFormat& format = {"test", 64, 36, 16.0 / 9.0}, double time = 1) {
    return Render::RenderContext(head(time), format);
  }
  // The still of a node made V1's head, at 64 x 36 unless told.
  Ux::Ptr<UxImage> still(const IdStamp& node, const VideoFormat& format = {"test", 64, 36, 16.0 / 9.0}) {
    edit->getChan(0).cels[0].ref = node;
    return Render::VidRenderUtils::renderStill(context(format));
  }
  EditPtr edit;
  unsigned next = 0;
};

} // namespace rendertest
