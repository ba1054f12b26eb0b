#include "app/OpenCommand.h"

#include <cstdlib>
#include <ostream>

#include "app/EditOverviewPanel.h"
#include "app/WindowLoop.h"
#include "host/edit/EditFile.h"
#include "host/ui/GlobManager.h"

namespace fxgraph {

std::string examplesFolder() {
  if (const char* dir = std::getenv("FXGRAPH_EXAMPLES")) return dir;
  return FXGRAPH_EXAMPLES_DIR;
}

int runOpenCommand(const std::string& editPath, std::ostream& out, std::ostream& err) {
  EditFile::LoadResult loaded = EditFile::load(editPath);
  if (!loaded.edit) {
    err << "fxgraph: " << loaded.error << "\n";
    return 1;
  }
  for (const std::string& w : loaded.warnings) err << "fxgraph: warning: " << w << "\n";

  GlobManager::initialise(1280, 800);
  int status = 0;
  {
    Vob vob(loaded.edit, "main");
    Vob::setPlayMachine(&vob);
    auto* panel = new EditOverviewPanel(&vob, {1000, 560});
    panel->setPos(140, 120);
    GlobManager::realize(panel);

    std::string why;
    if (!runWindowLoop(why)) {
      const std::string picture = "fxgraph-screen.png";
      if (GlobManager::writePNG(picture)) {
        out << "fxgraph: no window (" << why << "); the screen is in " << picture << "\n";
      } else {
        err << "fxgraph: no window (" << why << ") and cannot write " << picture << "\n";
        status = 1;
      }
    }
    // Panels go before the vob they follow.
    GlobManager::shutdown();
    Vob::setPlayMachine(nullptr);
  }
  loaded.edit->close();
  return status;
}

} // namespace fxgraph
