// Saving from the panel and the question before it closes, through real
// events: ctrl+S, the close box, and each answer with what it leaves on disk;
// the status line's time and its unsaved mark.
#include "graph_tool/UnsavedChanges.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "graph_tool/FXGraphTool.h"
#include "graph_tool/PanelStatus.h"
#include "host/config/EditorPreferences.h"
#include "host/draw/ScreenSurface.h"
#include "host/edit/EditFile.h"
#include "host/edit/EditSaving.h"
#include "host/edit/EffectInstance.h"
#include "host/ui/Checkbox.h"
#include "host/ui/GlobManager.h"
#include "host/ui/MessageBox.h"
#include "host/ui/PushButton.h"
#include "tests/support/Program.h"
#include "tests/support/UiScreen.h"

namespace unsavedtest {

const IdStamp pip(2, 0, 2);

std::string contents(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

class Unsaved : public ::testing::Test {
protected:
  void SetUp() override {
    setPreferencesFile(folder.path("prefs"));
    GlobManager::initialise(1280, 800);
    std::filesystem::copy_file(testsupport::sourcePath("examples/promo.json"), path);
    EditFile::LoadResult loaded = EditFile::load(path);
    ASSERT_TRUE(loaded.edit) << loaded.error;
    edit = loaded.edit;
    vob = std::make_unique<Vob>(edit, "main");
    FXGraphTool::createPanelFor(vob.get());
    panel = FXGraphTool::findPanelFor(vob.get());
    ASSERT_TRUE(panel);
    edit->setDirty(false);
    EditSaving::install([this](const EditPtr& e, std::string& why) {
      ++saves;
      if (refuse) {
        why = "the disk is full";
        return false;
      }
      return EditFile::save(e, path, why);
    });
    onDisk = contents(path);
  }
  void TearDown() override {
    EditSaving::install(nullptr);
    GlobManager::shutdown();
    vob.reset();
    if (edit) edit->close();
    setPreferencesFile({});
  }
  // A change of the user's: the picture in picture switched off.
  void change() {
    ASSERT_TRUE(panel->getView()->handleNodeClicked(panel->getView()->findViewRecForNode(pip)));
    ASSERT_TRUE(edit->isDirty());
  }
  void clickCloseBox() { testsupport::click(testsupport::centreOf(*panel->getTitleWidget(1))); }
  QuestionPanel* question() const {
    for (Glob* g : GlobManager::roots())
      if (auto* q = dynamic_cast<QuestionPanel*>(g)) return q;
    return nullptr;
  }
  void answer(const wchar_t* label) {
    QuestionPanel* q = question();
    ASSERT_TRUE(q);
    for (PushButton* b : q->buttons())
      if (b->getLabel().str() == label) {
        testsupport::click(testsupport::centreOf(*b));
        GlobManager::processDeletions();
        return;
      }
    FAIL() << "no such answer";
  }
  bool panelOpen() const { return FXGraphTool::findPanelFor(vob.get()) != nullptr; }
  bool savedPipActive() const {
    EditFile::LoadResult again = EditFile::load(path);
    const bool active = again.edit && again.edit->openObject<EffectInstance>(pip)->isActive();
    if (again.edit) again.edit->close();
    return active;
  }

  testsupport::TempFolder folder;
  const std::string path = folder.path("promo.json");
  EditPtr edit;
  std::unique_ptr<Vob> vob;
  FXGraphTool* panel = nullptr;
  std::string onDisk;
  int saves = 0;
  bool refuse = false;
};

TEST_F(Unsaved, ControlSSavesTheEditAndTheStatusSaysSo) {
  change();
  EXPECT_NE(panel->status()->text().str().find(L"Unsaved changes"), std::wstring::npos);
  Event e;
  e.type = Event::keyDown;
  e.key = 's';
  e.modifiers = Event::controlHeld;
  GlobManager::setKeyboardModifiers(Event::controlHeld);
  EXPECT_TRUE(GlobManager::dispatch(e));
  GlobManager::setKeyboardModifiers(0);
  EXPECT_EQ(saves, 1);
  EXPECT_FALSE(edit->isDirty());
  EXPECT_FALSE(savedPipActive()) << "the switch is on disk";
  EXPECT_EQ(panel->status()->text().str().find(L"Unsaved"), std::wstring::npos);
  // Now the close box closes at once.
  clickCloseBox();
  GlobManager::processDeletions();
  EXPECT_FALSE(question());
  EXPECT_FALSE(panelOpen());
}

TEST_F(Unsaved, TheCloseBoxAsksAndEachAnswerDoesWhatItSays) {
  change();
  // Cancel (and Escape): nothing happens, nothing is written.
  clickCloseBox();
  ASSERT_TRUE(question());
  EXPECT_TRUE(panelOpen());
  EXPECT_EQ(messagesShown().back().str(), L"Save the changes to \"Promo\" before closing?");
  // The rest of the screen waits for the answer.
  FXGraphView& view = *panel->getView();
  view.redraw();
  const auto box = view.findViewRecForNode(pip)->pixelBox();
  testsupport::click(view.screenPos() + XY<int>{(box.x0 + box.x1) / 2, (box.y0 + box.y1) / 2});
  EXPECT_FALSE(edit->openObject<EffectInstance>(pip)->isActive()) << "a click on a node while asked";
  answer(L"Cancel");
  EXPECT_FALSE(question());
  EXPECT_TRUE(panelOpen());
  clickCloseBox();
  ASSERT_TRUE(question());
  EXPECT_TRUE(testsupport::key(Event::keyEscape));
  GlobManager::processDeletions();
  EXPECT_FALSE(question());
  EXPECT_TRUE(panelOpen());
  EXPECT_EQ(contents(path), onDisk);
  EXPECT_TRUE(edit->isDirty());

  // Save, refused by the disk: told, and the panel stays.
  refuse = true;
  clickCloseBox();
  answer(L"Save");
  EXPECT_TRUE(panelOpen());
  EXPECT_EQ(messagesShown().back().str(), L"Could not save \"Promo\": the disk is full");
  EXPECT_EQ(contents(path), onDisk);

  // Save: written, then closed.
  refuse = false;
  clickCloseBox();
  answer(L"Save");
  EXPECT_FALSE(panelOpen());
  EXPECT_NE(contents(path), onDisk);
  EXPECT_FALSE(savedPipActive());
}

TEST_F(Unsaved, DiscardClosesAndLeavesTheFileAsItWas) {
  change();
  clickCloseBox();
  answer(L"Discard");
  EXPECT_FALSE(panelOpen());
  EXPECT_EQ(saves, 0);
  EXPECT_EQ(contents(path), onDisk);
}

TEST_F(Unsaved, APanelClosedUnderItsQuestionTakesTheQuestionAlong) {
  change();
  clickCloseBox();
  ASSERT_TRUE(question());
  GlobManager::requestDeletion(panel);
  GlobManager::processDeletions();
  EXPECT_FALSE(question());
  EXPECT_EQ(GlobManager::modal(), nullptr);
  EXPECT_EQ(contents(path), onDisk);
}

TEST_F(Unsaved, AHostThatCannotSaveClosesWithoutAsking) {
  EditSaving::install(nullptr);
  change();
  clickCloseBox();
  GlobManager::processDeletions();
  EXPECT_FALSE(question());
  EXPECT_FALSE(panelOpen());
}

TEST_F(Unsaved, AWireTakenAndPutBackLeavesNothingToSave) {
  FXGraphView& view = *panel->getView();
  view.handleInputClicked(view.findViewRecForNode(pip), 0);
  EXPECT_TRUE(edit->isDirty());
  EXPECT_TRUE(view.putBackHeldWire());
  EXPECT_FALSE(edit->isDirty());
}

TEST(PanelStatusTimecode, CountsFramesAtTheEditsRate) {
  EXPECT_EQ(PanelStatus::timecode(0, 25).str(), L"00:00:00:00");
  EXPECT_EQ(PanelStatus::timecode(3.2, 25).str(), L"00:00:03:05");
  EXPECT_EQ(PanelStatus::timecode(3661.5, 30).str(), L"01:01:01:15");
  EXPECT_EQ(PanelStatus::timecode(1.0 / 29.97 * 31, 29.97).str(), L"00:00:01:01") << "29.97 counts 30 a second";
  EXPECT_EQ(PanelStatus::timecode(-4, 25).str(), L"00:00:00:00");
  EXPECT_EQ(PanelStatus::timecode(std::nan(""), 0).str(), L"00:00:00:00");
  EXPECT_EQ(PanelStatus::timecode(1e300, 25).str(), L"9999:00:00:00");
}

} // namespace unsavedtest

namespace unsavedtest {

// Automatic positioning turned on lays out over the hand placings; one undo
// turns it off again and puts them back.
TEST_F(Unsaved, TurningAutomaticPositioningOnIsOneUndoStep) {
  FXGraphView& view = *panel->getView();
  ASSERT_TRUE(view.manualPositioning());
  Ux::Ptr<FXGraphViewNode> node = view.findViewRecForNode(pip);
  const XY<double> placed = node->getPosition() + XY<double>{0.3, -0.2};
  node->setPosition(placed.x, placed.y, true);
  EXPECT_TRUE(panel->handleMessageEvent("AutoPos On", nullptr));
  EXPECT_FALSE(view.manualPositioning());
  EXPECT_NE(view.findViewRecForNode(pip)->getPosition(), placed) << "laid out again";
  ASSERT_EQ(edit->undoDepth(), 1u);
  ASSERT_TRUE(vob->undo());
  EXPECT_TRUE(view.manualPositioning());
  EXPECT_FALSE(panel->autoPosCheckbox()->getState());
  EXPECT_EQ(view.findViewRecForNode(pip)->getPosition(), placed);
  // Turning it off changes no position: no step.
  ASSERT_TRUE(vob->redo());
  EXPECT_FALSE(view.manualPositioning());
  EXPECT_TRUE(panel->handleMessageEvent("AutoPos Off", nullptr));
  EXPECT_EQ(edit->undoDepth(), 1u);
}

// An undo tells the view of the positions it brought back and then of the
// graph it changed: from the panel (ctrl+Z, the undo button) the view is
// drawn once, after the step, and the screen is then what a whole frame draws.
TEST_F(Unsaved, AnUndoFromThePanelDrawsTheViewOnce) {
  FXGraphView& view = *panel->getView();
  ScreenSurface& surface = GlobManager::surface();
  const XY<int> o = view.screenPos();
  const auto w = view.getWindowPos();
  const Glib::PixelBox background(w.x0 + o.x, w.y0 + o.y, w.x1 + o.x, w.y1 + o.y);
  auto framesWhile = [&](auto&& step) {
    std::vector<ScreenSurface::Recorded> drawn;
    surface.setRecorder(&drawn);
    step();
    surface.setRecorder(nullptr);
    return std::count_if(drawn.begin(), drawn.end(), [&](const ScreenSurface::Recorded& r) {
      const auto* rect = std::get_if<Glib::RectDescription>(&r.primitive);
      return rect && rect->box == background;
    });
  };
  auto pixels = [&] {
    const Ux::Ptr<UxImage> shot = surface.snapshot();
    return std::vector<uint32_t>(shot->data(), shot->data() + shot->width() * shot->height());
  };
  Event z;
  z.type = Event::keyDown;
  z.key = 'z';
  z.modifiers = Event::controlHeld;
  for (int round = 0; round < 2; ++round) {
    change(); // a graph change and its positions: one undo step
    ASSERT_GE(edit->undoDepth(), 1u);
    const auto frames = framesWhile([&] {
      if (round == 0) {
        GlobManager::setKeyboardModifiers(Event::controlHeld);
        EXPECT_TRUE(GlobManager::dispatch(z));
        GlobManager::setKeyboardModifiers(0);
      } else {
        EXPECT_TRUE(panel->handleMessageEvent("anything", panel->undoButton()));
      }
    });
    EXPECT_EQ(frames, 1) << (round == 0 ? "ctrl+Z" : "the undo button");
    EXPECT_TRUE(view.findViewRecForNode(pip)->getNodeActive()) << "the switch is back on";
    const std::vector<uint32_t> afterUndo = pixels();
    view.redraw();
    EXPECT_TRUE(afterUndo == pixels()) << "the screen is what a whole frame draws";
  }
}

} // namespace unsavedtest
