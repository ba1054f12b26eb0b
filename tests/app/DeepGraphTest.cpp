// The tool as an editor runs it: on the editor's own thread, with an
// ordinary stack. A chain of 200,000 effects is opened, rebuilt, tidied,
// arranged, drawn, saved and opened again on a thread of 512 KB: no walk
// may go as deep as the graph on the stack.
#include <fstream>
#include <pthread.h>

#include <gtest/gtest.h>

#include "app/ScriptRunner.h"
#include "app/Session.h"
#include "host/config/EditorPreferences.h"
#include "host/ui/GlobManager.h"
#include "host/ui/HostClock.h"
#include "tests/support/Program.h"

namespace {

constexpr int chainLength = 200000;

// Effect i feeds effect i - 1; the last one takes a material.
std::string writeChain(testsupport::TempFolder& folder) {
  const std::string path = folder.path("chain.json");
  std::ofstream out(path);
  out << "{\"name\": \"Chain\", \"channels\": [{\"id\": \"1.0.1\", \"type\": \"video\", \"name\": \"V1\", "
         "\"cels\": [{\"start\": 0, \"end\": 10, \"graph\": \"2.0.1\"}]}], \"nodes\": [\n";
  for (int i = 1; i <= chainLength; ++i) {
    const std::string input = i < chainLength ? "2.0." + std::to_string(i + 1) : std::string("3.0.1");
    out << "{\"id\": \"2.0." << i << "\", \"kind\": \"effect\", \"tag\": \"colourcorrect\", \"name\": \"FX\", "
        << "\"inputs\": [\"" << input << "\"]},\n";
  }
  out << "{\"id\": \"3.0.1\", \"kind\": \"material\", \"name\": \"Source\", \"media\": {\"testcard\": \"bars\"}}]}\n";
  return path;
}

struct Work {
  std::string edit, prefs;
  std::vector<std::string> failures;
  std::size_t nodesShown = 0, nodesAfterReopen = 0;
};

void* runOnSmallStack(void* arg) {
  Work& w = *static_cast<Work*>(arg);
  setPreferencesFile(w.prefs);
  HostClock::driveByHand(0);
  GlobManager::initialise(1280, 800);
  {
    fxgraph::Session session;
    std::string why;
    if (!session.open(w.edit, 0, {}, why)) {
      w.failures.push_back("open: " + why);
    } else {
      fxgraph::ScriptRunner runner(session);
      // Tidy, Arrange, a hand placement, a fit, a save; then a frame.
      for (const char* line : {"button TidyNodes", "key l", "node-drag 2.0.1 30 20", "key f", "save"})
        if (!runner.runLine(line, why)) w.failures.push_back(std::string(line) + ": " + why);
      GlobManager::drawAll();
      session.finishStills();
      w.nodesShown = session.view() ? session.view()->nodes().size() : 0;
      if (!session.reopen(why)) w.failures.push_back("reopen: " + why);
      w.nodesAfterReopen = session.view() ? session.view()->nodes().size() : 0;
    }
    session.close();
  }
  GlobManager::shutdown();
  setPreferencesFile({});
  return nullptr;
}

TEST(DeepGraph, AChainOf200000EffectsOnA512KBStack) {
  testsupport::TempFolder folder;
  Work work{writeChain(folder), folder.path("prefs"), {}, 0, 0};
  pthread_attr_t attr;
  ASSERT_EQ(pthread_attr_init(&attr), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attr, 512 * 1024), 0);
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attr, runOnSmallStack, &work), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attr);
  EXPECT_EQ(work.failures, std::vector<std::string>());
  EXPECT_EQ(work.nodesShown, static_cast<std::size_t>(chainLength + 1));
  EXPECT_EQ(work.nodesAfterReopen, static_cast<std::size_t>(chainLength + 1));
}

} // namespace
