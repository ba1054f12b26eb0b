#include "app/OpenCommand.h"

#include <cstdlib>
#include <fstream>
#include <ostream>

#include "app/Session.h"
#include "app/StateDump.h"
#include "app/WindowLoop.h"
#include "host/stream/AtomicFiles.h"
#include "host/ui/GlobManager.h"

namespace fxgraph {

std::string examplesFolder() {
  if (const char* dir = std::getenv("FXGRAPH_EXAMPLES")) return dir;
  return FXGRAPH_EXAMPLES_DIR;
}

int runOpenCommand(const std::string& editPath, std::ostream& out, std::ostream& err) {
  const XY<int> screen{1280, 800};
  GlobManager::initialise(screen.x, screen.y);
  int status = 0;
  {
    Session session;
    std::string why;
    if (!session.open(editPath, 0, {}, why)) {
      err << "fxgraph: " << why << "\n";
      status = 1;
    } else {
      for (const std::string& w : session.warnings()) err << "fxgraph: warning: " << w << "\n";
      const bool windowed = runWindowLoop(why);
      // Stills still under way are waited for: what is written shows them.
      session.finishStills();
      // For automation: the state as the window left it.
      if (const char* dumpPath = std::getenv("FXGRAPH_STATE_DUMP"); windowed && dumpPath && *dumpPath) {
        std::string failure;
        if (!writeFileAtomically(dumpPath, dumpState(session).dump(2) + "\n", failure))
          err << "fxgraph: " << failure << "\n";
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
  }
  GlobManager::shutdown();
  return status;
}

} // namespace fxgraph
