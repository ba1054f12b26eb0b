#include "app/OpenCommand.h"

#include <cstdlib>
#include <filesystem>
#include <ostream>

#include "app/Session.h"
#include "app/StateDump.h"
#include "app/WindowLoop.h"
#include "host/config/EditorPreferences.h"
#include "host/stream/AtomicFiles.h"
#include "host/ui/GlobManager.h"
#include "host/ui/MessageBox.h"

namespace fxgraph {
namespace {

// What the user should know before working in the window: what was wrong
// with the files as they opened, and which settings could not be saved.
std::string startupProblems(const Session& session) {
  std::string text;
  auto add = [&text](const std::string& line) { text += (text.empty() ? "" : "\n") + line; };
  for (const std::string& w : session.warnings()) add(w);
  std::string why;
  if (prefs().refusal().empty() && !probeReplace(prefs().path(), why)) add("The preferences cannot be saved: " + why);
  if (session.keepsLayout() && !probeReplace(session.layoutPath(), why))
    add("The screen layout cannot be saved: " + why);
  return text;
}

} // namespace

std::string examplesFolder() {
  if (const char* dir = std::getenv("FXGRAPH_EXAMPLES")) return dir;
  return FXGRAPH_EXAMPLES_DIR;
}

int runOpenCommand(const std::string& editPath, std::ostream& out, std::ostream& err) {
  const XY<int> screen{1280, 800};
  GlobManager::initialise(screen.x, screen.y);
  // The user's configuration folder is made as the program starts, as
  // desktop programs do, so that saving into it can be checked at once.
  std::error_code ignored;
  std::filesystem::create_directories(std::filesystem::path(prefs().path()).parent_path(), ignored);
  int status = 0;
  {
    Session session;
    std::string why;
    if (!session.open(editPath, std::nullopt, {}, why)) {
      err << "fxgraph: " << why << "\n";
      status = 1;
    } else {
      for (const std::string& w : session.warnings()) err << "fxgraph: warning: " << w << "\n";
      if (const std::string problems = startupProblems(session); !problems.empty()) makeMessage(toWide(problems));
      // A preference that cannot be written is told once, in the window.
      prefs().setWriteFailureHandler([](const std::string& reason) {
        makeMessage(
            toWide("The preferences could not be saved: " + reason + "\nChanges are kept until the program ends."));
      });
      const bool windowed = runWindowLoop(why);
      prefs().setWriteFailureHandler(nullptr);
      // Stills still under way are waited for: what is written shows them.
      session.finishStills();
      // For automation: the state as the window left it.
      if (const char* dumpPath = std::getenv("FXGRAPH_STATE_DUMP"); windowed && dumpPath && *dumpPath) {
        std::string failure;
        if (!writeFileAtomically(dumpPath, dumpStateText(session), failure)) err << "fxgraph: " << failure << "\n";
      }
      if (!windowed) {
        const std::string picture = "fxgraph-screen.png";
        if (GlobManager::writePNG(picture)) {
          out << "fxgraph: no window (" << why << "); the screen is in " << picture << "\n";
        } else {
          err << "fxgraph: no window (" << why << ") and cannot write " << picture << "\n";
          status = 1;
        }
      }
    }
    session.close();
    // What the run could not keep of the screen layout and the preferences.
    for (const std::string& failure : session.unsavedSettings()) {
      err << "fxgraph: " << failure << "\n";
      status = 1;
    }
  }
  GlobManager::shutdown();
  return status;
}

} // namespace fxgraph
