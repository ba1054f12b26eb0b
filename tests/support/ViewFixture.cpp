#include "tests/support/ViewFixture.h"

#include <filesystem>
#include <unistd.h>

#include <gtest/gtest.h>

#include "host/config/EditorPreferences.h"
#include "host/edit/EditFile.h"
#include "host/ui/GlobManager.h"

namespace testsupport {

EditBuilder::EditBuilder() : edit_(new Edit(Cookie::generate(Cookie::editKind), L"Built")) {}

Ux::Ptr<EffectInstance> EditBuilder::effect(const IdStamp& id, const char* tag, std::vector<IdStamp> inputs,
                                            const wchar_t* name) {
  Ux::Ptr<EffectInstance> e(new EffectInstance(id, name, tag));
  e->setNumInputs(static_cast<unsigned>(inputs.size()));
  for (unsigned i = 0; i < inputs.size(); ++i) {
    e->setInputTrackId(i, inputs[i], false);
    e->setInputName(i, toWide("in " + std::to_string(i)));
  }
  edit_->addNode(e);
  return e;
}

Ux::Ptr<MaterialUsageNode> EditBuilder::material(const IdStamp& id, const wchar_t* name) {
  Ux::Ptr<MaterialUsageNode> m(new MaterialUsageNode(id, name, MaterialUsageNode::Media::testCard, "bars"));
  m->setMaterialCookie(Cookie::generate());
  edit_->addNode(m);
  return m;
}

Ux::Ptr<ImageImportEffect> EditBuilder::image(const IdStamp& id, const char* file) {
  Ux::Ptr<ImageImportEffect> i(new ImageImportEffect(id, L"image", file));
  edit_->addNode(i);
  return i;
}

Ux::Ptr<AliasedInputEffect> EditBuilder::alias(const IdStamp& id, const IdStamp& input) {
  Ux::Ptr<AliasedInputEffect> a(new AliasedInputEffect(id, L"alias"));
  a->setInputTrackId(0, input, false);
  edit_->addNode(a);
  return a;
}

Ux::Ptr<ComplexBackgroundEffect> EditBuilder::matte(const IdStamp& id, ComplexBackgroundEffect::Mode mode) {
  Ux::Ptr<ComplexBackgroundEffect> m(new ComplexBackgroundEffect(id, L"matte", mode, Colour(0.1, 0.2, 0.9)));
  edit_->addNode(m);
  return m;
}

void EditBuilder::channel(const IdStamp& id, const wchar_t* name, const IdStamp& head) {
  EditChannel c;
  c.id = id;
  c.name = name;
  c.group = name;
  c.cels = {{0, 10, Cel::Kind::graph, head}};
  edit_->addChannel(c);
}

namespace {
// One file a process, so that tests run side by side keep their own orientation.
const std::string& scratchPreferences() {
  static const std::string path =
      (std::filesystem::temp_directory_path() / ("fxgraph-view-tests-" + std::to_string(::getpid()) + ".prefs"))
          .string();
  return path;
}
} // namespace

ViewFixture::ViewFixture(EditPtr edit, XY<int> size) : edit_(std::move(edit)) {
  setPreferencesFile(scratchPreferences());
  prefs().setPreference("Video Routing : Orientation", LightweightString<char>("LeftToRight"));
  GlobManager::initialise(size.x + 100, size.y + 100);
  vob_ = std::make_unique<Vob>(edit_);
  view_ = new FXGraphView(vob_.get(), size, Palette(), FXGraphView::wholeEdit);
  GlobManager::realize(view_);
}

ViewFixture::~ViewFixture() {
  GlobManager::shutdown();
  vob_.reset();
  if (edit_) edit_->close();
  std::error_code ignored;
  std::filesystem::remove(scratchPreferences(), ignored);
}

EditPtr ViewFixture::loadExample(const std::string& name) {
  EditFile::LoadResult loaded = EditFile::load(std::string(FXGRAPH_SOURCE_DIR) + "/examples/" + name);
  EXPECT_TRUE(loaded.edit) << loaded.error;
  return loaded.edit;
}

XY<double> ViewFixture::middle() const {
  const auto w = view_->getWindowPos();
  return {(w.x0 + w.x1) / 2.0, (w.y0 + w.y1) / 2.0};
}

void ViewFixture::frame(const FXGraphViewNode& node, int maxNodeSize) {
  view_->setMaxNodeSize(maxNodeSize);
  view_->setViewZoom(1);
  const XY<double> p = node.getPosition();
  view_->setViewCentre(p.x, p.y);
  EXPECT_EQ(view_->getViewCentre(), p) << "the node lies inside the canvas";
  view_->redraw();
}

} // namespace testsupport
