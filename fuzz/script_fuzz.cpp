// Fuzzes the script runner with arbitrary lines on a copy of the example
// edit open in the tool: each line either runs or is refused with one line
// of reason, and nothing crashes. Lines that write files the script names
// (png, dump) or save the edit are left out; the session starts again from
// the file now and then, so that undo history and stills do not pile up.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <sstream>
#include <string>

#include "app/OpenCommand.h"
#include "app/ScriptRunner.h"
#include "app/Session.h"
#include "host/config/EditorPreferences.h"
#include "host/ui/GlobManager.h"
#include "host/ui/HostClock.h"

namespace {

void check(bool ok) {
  if (!ok) __builtin_trap();
}

struct World {
  std::string folder, edit;
  fxgraph::Session session;
  int runs = 0;

  World() {
    folder = (std::filesystem::temp_directory_path() / "fxgraph-script-fuzz").string();
    std::filesystem::create_directories(folder);
    edit = folder + "/promo.json";
    std::filesystem::copy_file(fxgraph::examplesFolder() + "/promo.json", edit,
                               std::filesystem::copy_options::overwrite_existing);
    setPreferencesFile(folder + "/prefs");
    HostClock::driveByHand(0);
    // A small screen: each line redraws it, and the fuzzer wants many lines a second.
    GlobManager::initialise(480, 320);
    open();
  }
  void open() {
    std::string why;
    check(session.open(edit, 5, folder + "/layout", why));
  }
};

World& world() {
  static World* w = new World; // kept to the end: the process ends with it
  return *w;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  World& w = world();
  if (++w.runs % 200 == 0 || !w.session.view()) w.open();
  fxgraph::ScriptRunner runner(w.session);
  std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
  int lines = 0;
  for (std::string line; std::getline(in, line) && lines < 16; ++lines) {
    const std::string first = line.substr(0, line.find_first_of(" \t"));
    if (first == "png" || first == "dump" || first == "save") continue;
    std::string why;
    if (!runner.runLine(line, why)) {
      check(!why.empty() && why.find('\n') == std::string::npos && why.size() < 1000);
      break;
    }
  }
  GlobManager::update();
  return 0;
}
