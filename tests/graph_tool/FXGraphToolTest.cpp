// The effect graph tool panel: creation and the registry, the message
// dispatch with its return values, zoom steps, automatic positioning, the
// templates list, saved layout state and the preferences it keeps.
#include "graph_tool/FXGraphTool.h"

#include <gtest/gtest.h>

#include "host/config/EditorPreferences.h"
#include "host/edit/EditFile.h"
#include "host/ui/Checkbox.h"
#include "host/ui/DropDownMenuButton.h"
#include "host/ui/GlobManager.h"
#include "host/ui/ImageButton.h"
#include "host/ui/PushButton.h"
#include "host/ui/UifStd.h"
#include "tests/support/Program.h"
#include "tests/support/UiScreen.h"

namespace {

const IdStamp dissolve(2, 0, 1), colourCorrection(2, 0, 4);

// The example edit on two vobs, a screen, and preferences of its own.
class GraphTool : public ::testing::Test {
protected:
  void SetUp() override {
    setPreferencesFile(folder.path("prefs"));
    GlobManager::initialise(1280, 800);
    EditFile::LoadResult loaded = EditFile::load(testsupport::sourcePath("examples/promo.json"));
    ASSERT_TRUE(loaded.edit) << loaded.error;
    edit = loaded.edit;
    vob = std::make_unique<Vob>(edit, "main");
    other = std::make_unique<Vob>(edit, "second");
  }
  void TearDown() override {
    GlobManager::shutdown();
    other.reset();
    vob.reset();
    if (edit) edit->close();
    setPreferencesFile({});
  }
  FXGraphTool* open(Vob* v) {
    FXGraphTool::createPanelFor(v);
    return FXGraphTool::findPanelFor(v);
  }
  void closeAll() {
    for (FXGraphTool* p : FXGraphTool::allPanels_.as<FXGraphTool>()) GlobManager::requestDeletion(p);
    GlobManager::processDeletions();
  }

  testsupport::TempFolder folder;
  EditPtr edit;
  std::unique_ptr<Vob> vob, other;
};

TEST_F(GraphTool, TogglesOnePanelPerVobAndRaisesForAPosition) {
  EXPECT_EQ(FXGraphTool::findPanelFor(vob.get()), nullptr);
  FXGraphTool* first = open(vob.get());
  ASSERT_TRUE(first);
  FXGraphTool* second = open(other.get());
  ASSERT_TRUE(second);
  EXPECT_NE(first, second);
  EXPECT_EQ(FXGraphTool::allPanels_.size(), 2u);
  EXPECT_EQ(first->idstring(), "FXGraphTool");
  EXPECT_EQ(first->getTitle(), L"Effect graph : Promo");

  // Asked for a position, an open panel is raised, not toggled.
  EditGraphIterator at(edit, 5, dissolve, 1);
  FXGraphTool::createPanelFor(vob.get(), at);
  EXPECT_EQ(FXGraphTool::findPanelFor(vob.get()), first);
  EXPECT_EQ(GlobManager::roots().back(), first);

  // The plain toggle closes the vob's own panel and leaves the other.
  FXGraphTool::createPanelFor(vob.get());
  GlobManager::processDeletions();
  EXPECT_EQ(FXGraphTool::findPanelFor(vob.get()), nullptr);
  EXPECT_EQ(FXGraphTool::findPanelFor(other.get()), second);
  EXPECT_EQ(FXGraphTool::allPanels_.size(), 1u);
}

TEST_F(GraphTool, APositionOutsideTheVobsSegmentMovesItsTime) {
  // The colour correction heads V1 from 10 to 20.
  for (double now : {5.0, 10.0, 15.0, 20.0, 21.0}) {
    SCOPED_TRACE(now);
    vob->setCurrentTime(now);
    EditGraphIterator at(edit, 15, colourCorrection, 1);
    ASSERT_TRUE(at.isValid());
    FXGraphTool::createPanelFor(vob.get(), at);
    EXPECT_EQ(vob->getCurrentTime(), now < 10 || now > 20 ? 10.0 : now);
    closeAll();
  }
  // An invalid position moves nothing and still opens the panel.
  vob->setCurrentTime(3);
  EditGraphIterator none;
  FXGraphTool::createPanelFor(vob.get(), none);
  EXPECT_EQ(vob->getCurrentTime(), 3.0);
  EXPECT_TRUE(FXGraphTool::findPanelFor(vob.get()));
}

TEST_F(GraphTool, ChildrenSizesAndTheStoredPlace) {
  const int row = UifStd::getRowHeight();
  const XY<int> size = FXGraphTool::calcSize();
  FXGraphTool* panel = open(vob.get());
  ASSERT_TRUE(panel);
  // Never stored: centred on the screen.
  EXPECT_EQ(XY<int>(panel->getX(), panel->getY()), XY<int>((1280 - size.x) / 2, (800 - size.y) / 2));
  ASSERT_TRUE(panel->getTemplatesList() && panel->getView());
  const Glob::PixelBox user = panel->getUserArea();
  EXPECT_EQ(user.y0, panel->borderSize() + row + UifStd::getWidgetGap()) << "the strip of controls lies below";
  // A 792 x 550 panel: its 784 x 490 user area less the 286-pixel templates
  // list and a border.
  EXPECT_EQ(size, XY<int>(792, 550));
  EXPECT_EQ(panel->getTemplatesList()->width(), 286);
  EXPECT_EQ(panel->calcMainViewSize(), XY<int>(494, 490));
  EXPECT_EQ(XY<int>(panel->getView()->width(), panel->getView()->height()), panel->calcMainViewSize());
  // At the default zoom (0.75; the first view frames the graph) a node is
  // an eighth of a unit (129 pixels) high and a quarter wider.
  panel->getView()->setViewZoom(0.75);
  EXPECT_EQ(FXGraphTool::getNodeSize(panel), XY<int>(161, 129));
  EXPECT_EQ(FXGraphTool::getNodeSize(panel->getView()), XY<int>(0, 0));

  // Every resize stores the place; a panel opened later starts there.
  panel->setPos(40, 60);
  panel->resize(800, 560);
  EXPECT_EQ(prefs().getPreference("Video Routing : Position", XY<int>()), XY<int>(40, 60));
  closeAll();
  EXPECT_EQ(prefs().getPreference("Effect graph tool size", XY<int>()), XY<int>(800, 560));
  FXGraphTool* again = open(vob.get());
  EXPECT_EQ(XY<int>(again->getX(), again->getY()), XY<int>(40, 60));
  EXPECT_EQ(XY<int>(again->width(), again->height()), XY<int>(800, 560));
}

TEST_F(GraphTool, MessagesInTheirOrderWithTheirAnswers) {
  FXGraphTool* panel = open(vob.get());
  FXGraphView* view = panel->getView();
  ASSERT_TRUE(view);

  // Automatic positioning: "On" exactly; anything else is off.
  EXPECT_TRUE(panel->handleMessageEvent("AutoPos On", nullptr));
  EXPECT_FALSE(view->manualPositioning());
  EXPECT_FALSE(panel->tidyButton()->isActive());
  EXPECT_TRUE(prefs().getPreference("Automatic FX positioning", false));
  for (const char* off : {"AutoPos Off", "AutoPos on", "AutoPos "}) {
    ASSERT_TRUE(panel->handleMessageEvent("AutoPos On", nullptr));
    EXPECT_TRUE(panel->handleMessageEvent(off, nullptr)) << off;
    EXPECT_TRUE(view->manualPositioning()) << off;
    EXPECT_TRUE(panel->tidyButton()->isActive()) << off;
  }
  // The check box says what it holds.
  panel->autoPosCheckbox()->setState(true, false);
  EXPECT_TRUE(panel->handleMessageEvent("Checkbox On", panel->autoPosCheckbox()));
  EXPECT_FALSE(view->manualPositioning());
  panel->autoPosCheckbox()->setState(false, false);
  EXPECT_TRUE(panel->handleMessageEvent("Checkbox Off", panel->autoPosCheckbox()));

  // Tidy is an exact match; the graph-item commands are prefixes, handled
  // even when their position names nothing.
  EXPECT_TRUE(panel->handleMessageEvent("TidyNodes", nullptr));
  EXPECT_FALSE(panel->handleMessageEvent("TidyNodes now", nullptr));
  for (const char* msg : {"fxutrparams nonsense", "render_effect nonsense", "popOuttile nonsense", "fxutr"})
    EXPECT_TRUE(panel->handleMessageEvent(msg, nullptr)) << msg;

  // The orientation drop-down, read from its selection.
  panel->orientationMenu()->setSelectedIndex(1, false);
  EXPECT_TRUE(panel->handleMessageEvent(DropDownMenuButton::dropDownMenuButtonMsg, panel->orientationMenu()));
  EXPECT_EQ(view->getOrientation(), VidRouting::Orientations::BottomToTop);

  // Undo and redo are told by their sender, whatever the text.
  ASSERT_TRUE(panel->handleMessageEvent(
      "fxutrcycle_inputs " + view->getIteratorFor(dissolve, EditGraphIterator::atNode).getState().asString(), nullptr));
  EXPECT_EQ(edit->openNode(dissolve)->getInputTrackId(0), IdStamp(3, 0, 2)) << "inputs cycled";
  EXPECT_TRUE(panel->handleMessageEvent("anything", panel->undoButton()));
  EXPECT_EQ(edit->openNode(dissolve)->getInputTrackId(0), IdStamp(3, 0, 1));
  EXPECT_TRUE(panel->handleMessageEvent("anything", panel->redoButton()));
  EXPECT_EQ(edit->openNode(dissolve)->getInputTrackId(0), IdStamp(3, 0, 2));
  EXPECT_FALSE(panel->handleMessageEvent("anything", nullptr));

  // The templates toggle acts, and says it did not.
  const int width = panel->width(), listWidth = panel->getTemplatesList()->width();
  GlobManager::update();
  EXPECT_FALSE(panel->handleMessageEvent("ToggleTemplates", nullptr));
  EXPECT_FALSE(panel->getTemplatesList());
  EXPECT_EQ(panel->width(), width - listWidth - panel->borderSize());
  // What the panel no longer covers shows the screen behind it again.
  GlobManager::update();
  const Ux::Ptr<UxImage> screen = GlobManager::surface().snapshot();
  auto at = [&](int x, int y) { return screen->pixel(x, screen->height() - 1 - y); };
  const int uncoveredX = panel->getX() + width - 10, midY = panel->getY() + panel->height() / 2;
  EXPECT_EQ(at(uncoveredX, midY), at(2, 2)) << "no ghost of the old panel";
  EXPECT_FALSE(prefs().getPreference("Video Routing : Templates", true));
  EXPECT_EQ(view->width(), panel->calcMainViewSize().x);
  EXPECT_FALSE(panel->handleMessageEvent("ToggleTemplates", nullptr));
  EXPECT_TRUE(panel->getTemplatesList());
  EXPECT_EQ(panel->width(), width);
}

TEST_F(GraphTool, ZoomStepsMultiplyAndTheViewClamps) {
  FXGraphTool* panel = open(vob.get());
  FXGraphView* view = panel->getView();
  const struct {
    double from;
    int direction;
    double to;
  } steps[] = {{0.75, 1, 1.0}, {1.0, -1, 0.75}, {0.9, 1, 1.0}, {0.0, 1, 0.0}, {0.0, -1, 0.0}, {0.5, 0, 0.5 * 4 / 3}};
  for (const auto& s : steps) {
    view->setViewZoom(s.from);
    EXPECT_TRUE(panel->handleZoom(s.direction));
    EXPECT_DOUBLE_EQ(view->getZoom(), s.to) << s.from << " by " << s.direction;
  }
  // Keys "+" and "=" zoom in, "-" out.
  view->setViewZoom(0.75);
  testsupport::moveTo(testsupport::centreOf(*panel->autoPosCheckbox()));
  testsupport::key('-');
  EXPECT_DOUBLE_EQ(view->getZoom(), 0.5625);
}

TEST_F(GraphTool, VideoTemplatesOnlyAndNoListWhenHidden) {
  FXGraphTool* panel = open(vob.get());
  for (const EffectCategory& c : panel->getTemplatesList()->categories())
    for (const EffectTemplateSummary& t : c.templates) EXPECT_EQ(t.trackType, 1) << toUTF8(t.name).str();
  closeAll();

  prefs().setPreference("Video Routing : Templates", false);
  FXGraphTool* bare = open(vob.get());
  EXPECT_FALSE(bare->getTemplatesList());
  const Glob::PixelBox user = bare->getUserArea();
  EXPECT_EQ(bare->getView()->width(), user.x1 - user.x0);
}

TEST_F(GraphTool, LayoutRecordsAndPreferences) {
  FXGraphTool* panel = open(vob.get());
  panel->getView()->setViewZoom(0.5);
  configb saved;
  panel->dump(saved);
  for (const char* key : {"EDIT_COOKIE", "GROUPID", "CURRENT_TIME", "VIEW_CX", "VIEW_CY", "VIEW_ZOOM", "AUTO_POSITION"})
    EXPECT_TRUE(saved.has(key)) << key;
  EXPECT_FALSE(saved.has("VOB_GROUP_ID"));
  EXPECT_EQ(saved.getText("GROUPID"), "main");
  EXPECT_EQ(saved.getDouble("VIEW_ZOOM"), 0.5);
  EXPECT_EQ(saved.getText("TYPE"), "FXGraphTool");
  closeAll();
  EXPECT_EQ(prefs().getPreference("Video Routing : Zoom", 0.0), 0.5);

  // Restored: the zoom comes back, the centre is kept but not applied, and a
  // number names the vob before a name does.
  configb record = saved;
  record.set("VIEW_CX", 7.5);
  GlobCreationInfo info;
  info.size = {700, 500};
  info.config = &record;
  FXGraphTool* restored = FXGraphTool::make(&info);
  GlobManager::realize(restored);
  EXPECT_EQ(restored->getVob(), vob.get());
  EXPECT_EQ(restored->getView()->getZoom(), 0.5);
  EXPECT_EQ(FXGraphTool::restoredCentre().x, 7.5);
  EXPECT_NE(restored->getView()->getViewCentre().x, 7.5);
  closeAll();

  // Without a zoom, the last one stays; with a number, the name is ignored.
  record = configb();
  record.set("GROUPID", "second");
  Vob numbered(edit, "", 7);
  record.set("VOB_GROUP_ID", 7u);
  FXGraphTool* byNumber = FXGraphTool::make(&info);
  GlobManager::realize(byNumber);
  EXPECT_EQ(byNumber->getVob(), &numbered);
  EXPECT_EQ(byNumber->getView()->getZoom(), 0.5);
  closeAll();

  // Docked inside another glob, nothing is written to the preferences.
  prefs().setPreference("Video Routing : Zoom", 0.25);
  auto* host = new Glob({900, 700});
  GlobManager::realize(host);
  configb docked;
  docked.set("GROUPID", "main");
  FXGraphTool* child = FXGraphTool::make(&info);
  host->addChild(child, Glob::BottomLeft(0, 0));
  child->getView()->setViewZoom(0.9);
  EXPECT_TRUE(child->isDocked());
  GlobManager::requestDeletion(host);
  GlobManager::processDeletions();
  EXPECT_EQ(prefs().getPreference("Video Routing : Zoom", 0.0), 0.25);
}

} // namespace
