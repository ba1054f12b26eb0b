// Fuzzes the script runner with arbitrary lines on a copy of the example
// edit open in the tool: each line either runs or is refused with one line
// of reason, and nothing crashes. Lines that write files the script names
// (png, dump), save, close or reopen the edit are left out; the session starts again from
// the file now and then, so that undo history and stills do not pile up.
// Drawing the screen was nine tenths of a line's cost, so the screen is
// drawn, after every line, for one input in 128 only: drawing stays covered
// and the lines run at the fuzzer's pace.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <sstream>
#include <string>

#include "app/OpenCommand.h"
#include "app/ScriptRunner.h"
#include "app/Session.h"
#include "host/config/EditorPreferences.h"
#include "host/edit/Edit.h"
#include "host/render/StillsCache.h"
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
    // In memory where the machine has such a folder: saves sync their files.
    const std::filesystem::path shm = "/dev/shm";
    const std::filesystem::path base =
        std::filesystem::is_directory(shm) ? shm : std::filesystem::temp_directory_path();
    folder = (base / "fxgraph-script-fuzz").string();
    std::filesystem::create_directories(folder);
    edit = folder + "/promo.json";
    std::filesystem::copy_file(fxgraph::examplesFolder() + "/promo.json", edit,
                               std::filesystem::copy_options::overwrite_existing);
    setPreferencesFile(folder + "/prefs");
    HostClock::driveByHand(0);
    // A small screen: each line redraws it, and the fuzzer wants many lines a second.
    GlobManager::initialise(480, 320);
    GlobManager::beginDeferral();
    open();
  }
  void open() {
    // The stills of the edit read last time are stale for good: the cache
    // would keep them until it is full (a quarter of a gigabyte), so that
    // the fuzzer would hold far more than one session's memory.
    Render::StillsCache::instance().clear();
    std::string why;
    check(session.open(edit, 5, folder + "/layout", why));
    // Pictures a tenth of the size each way: "import render" made a full
    // picture, and at full size that one rare line took half the time.
    VideoMetadata small = session.edit()->getVideoMetadata();
    small.width /= 10;
    small.height /= 10;
    session.edit()->setVideoMetadata(small);
  }
};

World& world() {
  static World* w = new World; // kept to the end: the process ends with it
  return *w;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  World& w = world();
  if (++w.runs % 1000 == 0 || !w.session.view()) w.open();
  const bool draws = w.runs % 128 == 0;
  if (draws) GlobManager::endDeferral();
  fxgraph::ScriptRunner runner(w.session);
  std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
  int lines = 0;
  for (std::string line; std::getline(in, line) && lines < 16; ++lines) {
    // The command word as the runner reads it: before any '#', after any space.
    std::string first;
    std::istringstream(line.substr(0, line.find('#'))) >> first;
    // Closing or reopening the edit costs a hundred lines (the edit is read
    // again); the world reopens it every thousand inputs instead.
    if (first == "png" || first == "dump" || first == "save" || first == "reopen" || first == "close") continue;
    std::string why;
    if (!runner.runLine(line, why)) {
      check(!why.empty() && why.find('\n') == std::string::npos && why.size() < 1000);
      break;
    }
  }
  GlobManager::update();
  if (draws) GlobManager::beginDeferral();
  return 0;
}
