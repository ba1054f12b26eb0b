#pragma once
// The program's session and script runner in process, on a screen of its
// own, with the preferences in a temporary folder: for tests that drive the
// tool as a script does.
#include <string>

#include <gtest/gtest.h>

#include "app/ScriptRunner.h"
#include "app/Session.h"
#include "host/config/EditorPreferences.h"
#include "host/ui/GlobManager.h"
#include "host/ui/HostClock.h"
#include "tests/support/Program.h"

namespace testsupport {

class ScriptSession : public ::testing::Test {
protected:
  // Opens the edit at the time; `drawn` false keeps the screen from being
  // drawn, for tests that look at positions only.
  void openSession(const std::string& edit, double time, bool drawn = true) {
    setPreferencesFile(folder.path("prefs"));
    HostClock::driveByHand(0);
    GlobManager::initialise(1280, 800);
    if (!drawn) GlobManager::beginDeferral();
    std::string why;
    ASSERT_TRUE(session.open(edit, time, {}, why)) << why;
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

  TempFolder folder;
  fxgraph::Session session;
  fxgraph::ScriptRunner runner{session};
};

} // namespace testsupport
