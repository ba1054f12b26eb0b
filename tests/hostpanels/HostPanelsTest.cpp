#include <algorithm>
#include <filesystem>
#include <memory>

#include <gtest/gtest.h>

#include "host/config/Resources.h"
#include "host/edit/EditFile.h"
#include "host/edit/GraphNodeKinds.h"
#include "host/edit/PopOutInfo.h"
#include "host/edit/ProjectDatabase.h"
#include "host/render/UtrImporter.h"
#include "host/render/VidRenderUtils.h"
#include "host/ui/CompoundEffectPanel.h"
#include "host/ui/EditViewer.h"
#include "host/ui/EffectMenuItems.h"
#include "host/ui/EffectTemplatePanel.h"
#include "host/ui/FloatingLogMetadataPanel.h"
#include "host/ui/MessageBox.h"
#include "host/ui/PushButton.h"
#include "host/ui/Slider.h"
#include "host/ui/TextField.h"
#include "tests/support/Program.h"
#include "tests/support/UiScreen.h"

using namespace testsupport;
namespace fs = std::filesystem;

namespace {

// V1: mix(grade(Street), Crowd) for [0, 10), Crowd for [10, 20), black for
// [20, 22). V2: a blur over an imported image for [0, 10). Street is solid red.
constexpr const char* editJson = R"({"name": "Panels", "channels": [
  {"id": "1.0.1", "type": "video", "name": "V1", "cels": [{"start": 0, "end": 10, "graph": "2.0.1"},
    {"start": 10, "end": 20, "material": "3.0.2"}, {"start": 20, "end": 22, "black": true}]},
  {"id": "1.0.2", "type": "video", "name": "V2", "cels": [{"start": 0, "end": 10, "graph": "2.0.2"}]}],
 "nodes": [
  {"id": "2.0.1", "kind": "effect", "name": "Dissolve", "tag": "mix", "inputs": ["2.0.3", "3.0.2"],
   "inputNames": ["A", "B"], "params": {"amount": 0.5}},
  {"id": "2.0.3", "kind": "effect", "name": "Grade", "tag": "colourcorrect", "inputs": ["3.0.1"]},
  {"id": "3.0.1", "kind": "material", "name": "Street", "media": {"testcard": "solid:1,0,0"}},
  {"id": "3.0.2", "kind": "material", "name": "Crowd", "media": {"testcard": "bars"}},
  {"id": "2.0.2", "kind": "effect", "name": "Blur", "tag": "blur", "inputs": ["3.0.3"]},
  {"id": "3.0.3", "kind": "image", "name": "Logo", "file": "logo.png"}]})";

const IdStamp mixId(2, 0, 1), gradeId(2, 0, 3), streetId(3, 0, 1), crowdId(3, 0, 2);

// Hears what a vob tells.
struct Listener : VobClient {
  using VobClient::VobClient;
  void handleModifications(const EditModifications& mods, const VobModification&) override {
    for (const auto& m : mods.items) heard.push_back(m);
  }
  std::vector<EditModification> heard;
};

bool isRed(const Colour& c) { return c.r > 0.9 && c.g < 0.1 && c.b < 0.1; }

template <class T>
T* findRoot() {
  for (Glob* g : GlobManager::roots())
    if (auto* t = dynamic_cast<T*>(g)) return t;
  return nullptr;
}

class HostPanels : public ::testing::Test {
protected:
  void SetUp() override {
    EditFile::LoadResult loaded = EditFile::parse(editJson, "panels.json", folder.path(""));
    ASSERT_TRUE(loaded.edit) << loaded.error;
    edit = loaded.edit;
    vob = std::make_unique<Vob>(edit);
    vob->storeCurrentTime(5);
  }
  void TearDown() override {
    vob.reset();
    if (edit) edit->close();
  }
  EditGraphIterator at(const IdStamp& node, double t = 5) {
    return EditGraphIterator(edit, t, node, EditGraphIterator::positionAtNode);
  }
  Ux::Ptr<EffectInstance> effect(const IdStamp& id) { return edit->openObject<EffectInstance>(id); }

  ScopedScreen screen{800, 600};
  TempFolder folder;
  EditPtr edit;
  std::unique_ptr<Vob> vob;
};

} // namespace

TEST_F(HostPanels, ParameterButtonsChangeTheEffectAsOneUndoStep) {
  Listener listener(vob.get());
  EditGraphIterator mix = at(mixId);
  CompoundEffectPanel* panel = CompoundEffectPanel::create(vob.get(), mix, "params");
  ASSERT_NE(panel, nullptr);
  ASSERT_EQ(panel->controls().size(), 1u);
  EXPECT_EQ(panel->controls()[0].key, "amount");

  EXPECT_TRUE(click(centreOf(*panel->controls()[0].up)));
  EXPECT_DOUBLE_EQ(effect(mixId)->param("amount", 0), 0.55);
  EXPECT_EQ(panel->controls()[0].field->text(), L"0.55");
  ASSERT_FALSE(listener.heard.empty());
  EXPECT_EQ(listener.heard.back().kind, EditModification::effectParams);
  EXPECT_EQ(listener.heard.back().nodeId, mixId);

  click(centreOf(*panel->controls()[0].down));
  click(centreOf(*panel->controls()[0].down));
  EXPECT_DOUBLE_EQ(effect(mixId)->param("amount", 0), 0.45);
  EXPECT_EQ(edit->undoDepth(), 3u);
  ASSERT_TRUE(vob->undo());
  EXPECT_DOUBLE_EQ(effect(mixId)->param("amount", 0), 0.5) << "one click, one undo step";
  EXPECT_EQ(panel->controls()[0].field->text(), L"0.5") << "the panel follows the undo";
  EXPECT_DOUBLE_EQ(panel->controls()[0].slider->value(), 0.5);

  EXPECT_EQ(CompoundEffectPanel::create(vob.get(), mix, "params"), panel) << "one panel per effect";
  EditGraphIterator street = at(streetId);
  EXPECT_EQ(CompoundEffectPanel::create(vob.get(), street, "params"), nullptr) << "a material has no parameters";
  EXPECT_EQ(CompoundEffectPanel::create(vob.get(), mix, "keyframes"), nullptr);

  // Read only: the user hears why, in a box centred on the screen that OK closes.
  vob->setReadOnly(true);
  EXPECT_FALSE(panel->stepParam("amount", 0, 1));
  MessagePanel* box = findRoot<MessagePanel>();
  ASSERT_NE(box, nullptr);
  EXPECT_NEAR(box->getX() + box->width() / 2, 400, 1);
  EXPECT_NEAR(box->getY() + box->height() / 2, 300, 1);
  click(centreOf(*box->okButton()));
  EXPECT_EQ(findRoot<MessagePanel>(), nullptr);
}

TEST_F(HostPanels, ParametersTakeASliderDragAndATypedValueEachAsOneUndoStep) {
  EditGraphIterator mix = at(mixId);
  CompoundEffectPanel* panel = CompoundEffectPanel::create(vob.get(), mix, "params");
  ASSERT_NE(panel, nullptr);
  const CompoundEffectPanel::Control& c = panel->controls()[0];
  // Dragged to three quarters of the bar and let go: one step.
  const XY<int> from = c.slider->screenPos() + XY<int>{c.slider->pixelOf(0.5), c.slider->height() / 2};
  const XY<int> to = c.slider->screenPos() + XY<int>{c.slider->pixelOf(0.75), c.slider->height() / 2};
  press(from);
  moveTo(to);
  EXPECT_DOUBLE_EQ(effect(mixId)->param("amount", 0), 0.5) << "nothing changes until the release";
  release(to);
  EXPECT_NEAR(effect(mixId)->param("amount", 0), 0.75, 0.01);
  EXPECT_EQ(edit->undoDepth(), 1u);
  // Typed: a press gives the field the keys, Return sets the value.
  click(centreOf(*panel->controls()[0].field));
  for (int i = 0; i < 8; ++i) key(Event::keyBackspace);
  for (const char ch : std::string("1.25")) key(ch);
  key(Event::keyReturn);
  EXPECT_DOUBLE_EQ(effect(mixId)->param("amount", 0), 1.25);
  EXPECT_EQ(edit->undoDepth(), 2u);
  EXPECT_EQ(panel->controls()[0].slider->hi(), 2.0) << "the bar reaches past a value above 1";
  // Not a number: refused and said, the value as it was.
  click(centreOf(*panel->controls()[0].field));
  key('x');
  key(Event::keyReturn);
  EXPECT_DOUBLE_EQ(effect(mixId)->param("amount", 0), 1.25);
  EXPECT_EQ(messagesShown().back(), L"\"1.25x\" is not a number");
  EXPECT_EQ(panel->controls()[0].field->text(), L"1.25");
  // Escape puts back what was there.
  click(centreOf(*panel->controls()[0].field));
  key('9');
  key(Event::keyEscape);
  EXPECT_EQ(panel->controls()[0].field->text(), L"1.25");
  EXPECT_EQ(edit->undoDepth(), 2u);
}

TEST(MatteColours, AGradientsTwoColoursAreParametersKeptInRange) {
  ScopedScreen screen{800, 600};
  TempFolder folder;
  EditFile::LoadResult loaded = EditFile::parse(R"({"name": "Sky", "channels": [
    {"id": "1.0.1", "type": "video", "name": "V1", "cels": [{"start": 0, "end": 10, "graph": "3.0.6"}]}],
   "nodes": [{"id": "3.0.6", "kind": "background", "name": "Sky", "mode": "gradient",
              "colour": [0.9, 0.5, 0.2], "colour2": [0.2, 0.4, 0.9]}]})",
                                                "sky.json", folder.path(""));
  ASSERT_TRUE(loaded.edit) << loaded.error;
  Vob vob(loaded.edit);
  EditGraphIterator at(loaded.edit, 5, IdStamp(3, 0, 6), EditGraphIterator::positionAtNode);
  CompoundEffectPanel* panel = CompoundEffectPanel::create(&vob, at, "params");
  ASSERT_NE(panel, nullptr);
  ASSERT_EQ(panel->controls().size(), 6u) << "red, green and blue of each colour";
  EXPECT_EQ(panel->rows()[0].label, L"colour red");
  EXPECT_EQ(panel->rows()[5].label, L"colour 2 blue");
  EXPECT_TRUE(panel->setParam("colour 2", 2, 0.6));
  auto* sky = dynamic_cast<ComplexBackgroundEffect*>(loaded.edit->openNode(IdStamp(3, 0, 6)).get());
  ASSERT_TRUE(sky);
  EXPECT_DOUBLE_EQ(sky->getColour(0, 1).b, 0.6);
  EXPECT_TRUE(panel->setParam("colour", 0, 7));
  EXPECT_DOUBLE_EQ(sky->getColour(0, 0).r, 1.0) << "a colour's part stops at 1";
  ASSERT_TRUE(vob.undo());
  sky = dynamic_cast<ComplexBackgroundEffect*>(loaded.edit->openNode(IdStamp(3, 0, 6)).get());
  ASSERT_TRUE(sky) << "the undone edit's own node";
  EXPECT_DOUBLE_EQ(sky->getColour(0, 0).r, 0.9);
  // What is saved loads again.
  std::string why;
  ASSERT_TRUE(EditFile::save(loaded.edit, folder.path("sky.json"), why)) << why;
  EditFile::LoadResult again = EditFile::load(folder.path("sky.json"));
  ASSERT_TRUE(again.edit) << again.error;
  again.edit->close();
  GlobManager::requestDeletion(panel);
  GlobManager::processDeletions();
  loaded.edit->close();
}

TEST_F(HostPanels, ImportedRenderIsAMaterialWhoseFileExistsAndRenders) {
  EditGraphIterator grade = at(gradeId);
  Ux::Ptr<MaterialUsageNode> first = UtrImporter::createImporter(vob.get(), grade, Palette());
  ASSERT_TRUE(first);
  EXPECT_EQ(first->getMedia(), MaterialUsageNode::Media::file);
  EXPECT_TRUE(fs::exists(folder.path(first->getSource().str())));
  EXPECT_EQ(edit->openNode(first->getId()).get(), first.get());

  const Render::RenderContext context(at(first->getId()), VideoFormat{"t", 64, 36, 16.0 / 9.0});
  const Ux::Ptr<UxImage> picture = Render::VidRenderUtils::renderStill(context);
  EXPECT_TRUE(isRed(picture->pixel(32, 18))) << "the file shows what the effect rendered";

  Ux::Ptr<MaterialUsageNode> second = UtrImporter::createImporter(vob.get(), grade, Palette());
  ASSERT_TRUE(second);
  EXPECT_NE(second->getSource(), first->getSource());
  EXPECT_NE(second->getId(), first->getId());
  ASSERT_TRUE(vob->undo());
  EXPECT_FALSE(edit->openNode(second->getId()));
  EXPECT_TRUE(edit->openNode(first->getId()));

  edit->setFolder("");
  EXPECT_FALSE(UtrImporter::createImporter(vob.get(), grade, Palette()));
  EXPECT_NE(findRoot<MessagePanel>(), nullptr);
  EditGraphIterator nowhere;
  EXPECT_FALSE(UtrImporter::createImporter(vob.get(), nowhere, Palette()));
}

TEST_F(HostPanels, PopOutInfoNamesTheShotUnderAPosition) {
  const PopOutInfo graph = getPopOutShotInfo(edit, 0, 5);
  EXPECT_EQ(graph.kind, 'M');
  EXPECT_EQ(graph.cookie, edit->openObject<MaterialUsageNode>(streetId)->getMaterialCookie()) << "down input 0";
  EXPECT_DOUBLE_EQ(graph.time, 5);
  const PopOutInfo material = getPopOutShotInfo(edit, 0, 12);
  EXPECT_EQ(material.kind, 'M');
  EXPECT_DOUBLE_EQ(material.time, 2) << "from the start of its cel";
  for (const auto& [channel, t] : {std::pair{0, 21.0}, std::pair{1, 5.0}, std::pair{7, 5.0}}) {
    const PopOutInfo none = getPopOutShotInfo(edit, channel, t);
    EXPECT_EQ(none.kind, 'I');
    EXPECT_FALSE(none.cookie.valid());
    EXPECT_FALSE(none.message.empty());
  }
  EXPECT_EQ(getPopOutShotInfo(edit, 1, 5).message, resourceStr(13041));
}

TEST_F(HostPanels, MenuMessagesParseBackToTheirPosition) {
  auto messages = [](const EditGraphIterator& it) {
    std::vector<std::string> out;
    for (const MenuItem& item : EffectMenuItems::getItemsForComponent(it)) {
      EXPECT_FALSE(item.label.startsWith(L"[resource")) << item.message.str();
      const std::size_t blank = item.message.find(' ');
      const EditGraphIterator back{EditGraphIteratorState(item.message.substr(blank + 1))};
      EXPECT_TRUE(back.isValid()) << item.message.str();
      if (back.isValid()) {
        EXPECT_EQ(back.getState().asString(), it.getState().asString());
      }
      out.push_back(item.message.substr(0, blank).str());
    }
    return out;
  };
  using V = std::vector<std::string>;
  EXPECT_EQ(messages(EditGraphIterator::atChannel(edit, 5, IdStamp(1, 0, 1))),
            (V{"fxutrparams", "fxutrremove_xfade", "fxutrtile", "fxutrremove_utr", "fxutrcycle_inputs",
               "fxutrimport_render", "render_effect", "popOuttile", "popOutlog"}));
  EXPECT_EQ(messages(at(gradeId)), (V{"fxutrparams", "fxutrtile", "fxutrremove_utr", "fxutrimport_render",
                                      "render_effect", "popOuttile", "popOutlog"}));
  EXPECT_EQ(messages(at(streetId)), (V{"render_effect", "popOuttile", "popOutlog"}));
  EXPECT_TRUE(EffectMenuItems::getItemsForComponent(EditGraphIterator()).empty());
}

TEST_F(HostPanels, TemplatePanelDescribesTheEffectAndFollowsChanges) {
  auto* panel = new EffectTemplatePanel(EffectTemplatePanel::InitArgs({}, at(mixId), Cookie()));
  EXPECT_EQ(panel->width(), EffectTemplatePanel::calcSize(Cookie()).x);
  auto value = [&](const wchar_t* label) {
    for (const auto& row : panel->rows())
      if (row.label == label) return row.value.str();
    return std::wstring(L"(no row)");
  };
  EXPECT_EQ(value(L"Effect"), L"Dissolve");
  EXPECT_TRUE(value(L"Template").starts_with(L"mix"));
  EXPECT_EQ(value(L"A"), L"Grade");
  EXPECT_EQ(value(L"B"), L"Crowd");
  EXPECT_EQ(value(L"amount"), L"0.5");

  effect(mixId)->setInputTrackId(1, IdStamp(), false);
  effect(mixId)->setParam("amount", {0.25});
  edit->addModification({EditModification(EditModification::effectParams, mixId)}, true);
  EXPECT_EQ(value(L"B"), resourceStrW(13025).str());
  EXPECT_EQ(value(L"amount"), L"0.25");
  delete panel;
}

TEST_F(HostPanels, ViewerAndLogPanelPopOutAShot) {
  const PopOutInfo street = getPopOutShotInfo(edit, 0, 5);
  EditViewer* viewer = makeEditViewer("tilev", street.cookie, {10, 10}, street.time, {});
  ASSERT_NE(viewer, nullptr);
  EXPECT_TRUE(set_it(viewer));
  EXPECT_EQ(Vob::getPlayMachine(), viewer->getVob());
  EXPECT_EQ(viewer->getVob()->getEdit()->getCookie(), street.cookie);
  const XY<int> centre = viewer->screenPos() + XY<int>{(viewer->pictureBox().x0 + viewer->pictureBox().x1) / 2,
                                                       (viewer->pictureBox().y0 + viewer->pictureBox().y1) / 2};
  EXPECT_TRUE(isRed(GlobManager::surface().snapshot()->pixel(centre.x, 600 - 1 - centre.y)));

  FloatingLogMetadataPanel* log = FloatingLogMetadataPanel::create(street.cookie, {300, 300});
  ASSERT_NE(log, nullptr);
  EXPECT_EQ(log->getVob(), viewer->getVob()) << "follows the vob showing the shot";
  ASSERT_FALSE(log->rows().empty());
  EXPECT_EQ(log->rows()[0].value, L"Street");

  GlobManager::requestDeletion(viewer);
  GlobManager::processDeletions();
  EXPECT_EQ(Vob::getPlayMachine(), nullptr);
  EXPECT_EQ(log->getVob(), nullptr) << "the panel outlives the viewer's vob";

  EXPECT_EQ(makeEditViewer("cinema", edit->getCookie(), {0, 0}, 0, {}), nullptr) << "no such kind";
  EXPECT_EQ(makeEditViewer("tilev", Cookie::generate(), {0, 0}, 0, {}), nullptr) << "no such shot";
  EXPECT_EQ(FloatingLogMetadataPanel::create(Cookie::generate(), {0, 0}), nullptr);
}
