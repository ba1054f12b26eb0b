#include <iostream>
#include <malloc.h>
#include <pthread.h>
#include <string>
#include <vector>

#include "app/EditGenerator.h"
#include "app/NodeUICommand.h"
#include "app/OpenCommand.h"
#include "app/RenderCommand.h"
#include "graph_tool/Version.h"

namespace {

const char* usage =
    "usage:\n"
    "  fxgraph [EDIT]                         open the edit (default: examples/promo.json) in a window\n"
    "  fxgraph render EDIT [options]          the same, headless: --size WxH, --time T, --script FILE,\n"
    "                                         --png FILE, --svg FILE, --dump FILE, --prefs FILE, --layout FILE\n"
    "  fxgraph nodeui pack RECORDS.json OUT   write a position manager from JSON records\n"
    "  fxgraph nodeui dump IN                 print the records of an objects file as JSON\n"
    "  fxgraph nodeui inspect IN              print the chunk tree of an objects file\n"
    "  fxgraph gen-edit --nodes N --seed S [--tree-size K] [--shape deep|forest] OUT\n"
    "                                         write a generated edit of about N graph nodes\n"
    "  fxgraph --version | --help\n";

int run(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  if (args.empty()) return fxgraph::runOpenCommand(fxgraph::examplesFolder() + "/promo.json", std::cout, std::cerr);
  if (args[0] == "--help" || args[0] == "-h") {
    std::cout << usage;
    return 0;
  }
  if (args[0] == "--version") {
    std::cout << "fxgraph " << grphtoolDllVersionStr << "\n";
    return 0;
  }
  if (args[0] == "gen-edit") {
    std::string message;
    const int status = fxgraph::runGenEditCommand(argc - 2, argv + 2, message);
    (status == 0 ? std::cout : std::cerr) << message << "\n";
    return status;
  }
  if (args[0] == "render") return fxgraph::runRenderCommand({args.begin() + 1, args.end()}, std::cout, std::cerr);
  if (args[0] == "nodeui") return fxgraph::runNodeUICommand({args.begin() + 1, args.end()}, std::cout, std::cerr);
  if (args.size() == 1 && !args[0].starts_with("-")) return fxgraph::runOpenCommand(args[0], std::cout, std::cerr);
  std::cerr << "fxgraph: unknown command \"" << args[0] << "\"; try fxgraph --help\n";
  return 2;
}

// Graphs can be deep (a chain of a hundred thousand effects), and walks down
// them go as deep: the program runs on a thread with room for that. The
// room is only address space until a walk uses it.
struct Run {
  int argc;
  char** argv;
  int status = 0;
};

void* runThread(void* arg) {
  Run& r = *static_cast<Run*>(arg);
  r.status = run(r.argc, r.argv);
  return nullptr;
}

} // namespace

int main(int argc, char** argv) {
  // One heap for every thread: a thread's own heap grows in small mapped
  // steps, and the program's thread builds the whole graph.
  mallopt(M_ARENA_MAX, 1);
  constexpr std::size_t stackBytes = std::size_t(1) << 30;
  Run r{argc, argv};
  pthread_attr_t attr;
  pthread_t thread;
  if (pthread_attr_init(&attr) == 0 && pthread_attr_setstacksize(&attr, stackBytes) == 0 &&
      pthread_create(&thread, &attr, runThread, &r) == 0) {
    pthread_attr_destroy(&attr);
    pthread_join(thread, nullptr);
    return r.status;
  }
  // No such thread to be had: run here, with the stack there is.
  return run(argc, argv);
}
