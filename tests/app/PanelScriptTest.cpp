// The program's script against the real tool, in process: commands from a
// graph item's context menu, the buttons, a parameter changed in the
// parameters panel, each one undo step; the layout kept across a restart.
#include <filesystem>

#include <gtest/gtest.h>

#include "app/ScriptRunner.h"
#include "app/Session.h"
#include "app/StateDump.h"
#include "host/config/EditorPreferences.h"
#include "host/edit/EffectInstance.h"
#include "host/ui/CompoundEffectPanel.h"
#include "host/ui/GlobManager.h"
#include "host/ui/HostClock.h"
#include "host/ui/PushButton.h"
#include "tests/support/Program.h"

namespace {

using json = nlohmann::ordered_json;

class PanelScript : public ::testing::Test {
protected:
  void SetUp() override {
    edit = folder.copyIn("examples/promo.json");
    folder.copyIn("examples/logo.png");
    setPreferencesFile(folder.path("prefs"));
    HostClock::driveByHand(0);
    GlobManager::initialise(1280, 800);
    std::string why;
    ASSERT_TRUE(session.open(edit, 5, {}, why)) << why;
  }
  void TearDown() override {
    session.close();
    GlobManager::shutdown();
    setPreferencesFile({});
  }
  void run(const std::string& line) {
    std::string why;
    ASSERT_TRUE(runner.runLine(line, why)) << line << ": " << why;
  }
  json dump() const { return dumpState(session); }
  double amount() const { return session.edit()->openObject<EffectInstance>(IdStamp(2, 0, 1))->param("amount", -1); }

  testsupport::TempFolder folder;
  std::string edit;
  fxgraph::Session session;
  fxgraph::ScriptRunner runner{session};
};

TEST_F(PanelScript, AGraphItemCommandFromTheMenuIsOneStepThatTheUndoButtonTakesBack) {
  const IdStamp dissolve(2, 0, 1);
  run("menu 2.0.1 Cycle inputs");
  EXPECT_EQ(session.edit()->openNode(dissolve)->getInputTrackId(0), IdStamp(3, 0, 2));
  EXPECT_EQ(session.edit()->undoDepth(), 1u);
  const json after = dump();
  EXPECT_TRUE(after["lastMessage"]["text"].get<std::string>().starts_with("fxutrcycle_inputs "));
  run("button undoBtn");
  EXPECT_EQ(session.edit()->openNode(dissolve)->getInputTrackId(0), IdStamp(3, 0, 1));
  EXPECT_EQ(dump()["lastMessage"], (json{{"text", "undoBtn"}, {"handled", true}}));

  // A command only the record machine may run says so when it is not one.
  Vob::setRecordMachine(nullptr);
  run("menu 2.0.1 Remove effect");
  EXPECT_TRUE(session.edit()->openNode(dissolve));
  EXPECT_EQ(dump()["messages"].back(), "This can only be done on the record machine");
}

TEST_F(PanelScript, AParameterChangedInItsPanelIsUndone) {
  run("menu 2.0.1 Parameters...");
  CompoundEffectPanel* params = nullptr;
  for (Glob* root : GlobManager::roots())
    if (auto* p = dynamic_cast<CompoundEffectPanel*>(root)) params = p;
  ASSERT_TRUE(params);
  EXPECT_EQ(dump()["popups"].back()["type"], "CompoundEffectPanel");
  ASSERT_FALSE(params->controls().empty());
  const CompoundEffectPanel::Control& control = params->controls().front();
  ASSERT_EQ(control.key, "amount");
  // A click on its + button, given in the view's pixels as the script has them.
  const XY<int> at = control.up->screenPos() + XY<int>{control.up->width() / 2, control.up->height() / 2} -
                     session.view()->screenPos();
  run("click " + std::to_string(at.x) + " " + std::to_string(at.y));
  EXPECT_DOUBLE_EQ(amount(), 0.55);
  run("undo");
  EXPECT_DOUBLE_EQ(amount(), 0.5);
}

TEST_F(PanelScript, ARestartBringsBackZoomAndTemplates) {
  run("message ToggleTemplates");
  run("wheel -2");
  const json before = dump();
  EXPECT_FALSE(before["panel"]["templatesVisible"]);
  EXPECT_EQ(before["panel"]["templates"], nullptr);
  run("reopen");
  const json after = dump();
  EXPECT_FALSE(after["panel"]["templatesVisible"]);
  EXPECT_EQ(after["view"]["zoom"], before["view"]["zoom"]);
  EXPECT_EQ(after["panels"].size(), 1u);

  // Closed, the tool is not restored: a restart opens it afresh.
  run("close");
  EXPECT_EQ(dump()["panel"], nullptr);
  std::string why;
  EXPECT_FALSE(runner.runLine("button TidyNodes", why));
  EXPECT_NE(why.find("the tool is closed"), std::string::npos) << why;
  run("reopen");
  EXPECT_NE(dump()["panel"], nullptr);

  // The view's context menu zooms by the panel's step.
  const double zoom = session.view()->getZoom();
  run("choose view Zoom out");
  EXPECT_DOUBLE_EQ(session.view()->getZoom(), zoom * 0.75);
}

} // namespace
