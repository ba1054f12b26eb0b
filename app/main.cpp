#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <malloc.h>
#include <new>
#include <string>
#include <vector>

#include "app/EditGenerator.h"
#include "app/ImportCommand.h"
#include "app/NodeUICommand.h"
#include "app/OpenCommand.h"
#include "app/OutOfMemory.h"
#include "app/RenderCommand.h"
#include "app/ScriptRunner.h"
#include "graph_tool/Version.h"

namespace {

const char* usage =
    "usage:\n"
    "  fxgraph [EDIT]                         open the edit (default: examples/promo.json) in a window;\n"
    "                                         EDIT may be an OpenTimelineIO timeline (.otio)\n"
    "  fxgraph render EDIT [options]          the same, headless: --size WxH, --time T, --script FILE,\n"
    "                                         --png FILE, --svg FILE, --dump FILE, --prefs FILE, --layout FILE\n"
    "  fxgraph import TIMELINE.otio OUT.json  write an OpenTimelineIO timeline as an edit file\n"
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
    std::cout << usage << "\nscript commands (render --script FILE, one a line):\n" << fxgraph::ScriptRunner::usage();
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
  if (args[0] == "import") return fxgraph::runImportCommand({args.begin() + 1, args.end()}, std::cout, std::cerr);
  if (args[0] == "nodeui") return fxgraph::runNodeUICommand({args.begin() + 1, args.end()}, std::cout, std::cerr);
  if (args.size() == 1 && !args[0].starts_with("-")) return fxgraph::runOpenCommand(args[0], std::cout, std::cerr);
  std::cerr << "fxgraph: unknown command \"" << args[0] << "\"; try fxgraph --help\n";
  return 2;
}

} // namespace

int main(int argc, char** argv) {
  // One heap for every thread: the stills workers would each grow one of
  // their own, in small mapped steps, beside the heap the graph lives in.
  mallopt(M_ARENA_MAX, 1);
  fxgraph::OutOfMemory::install();
  try {
    return run(argc, argv);
  } catch (const std::bad_alloc&) {
    // Out of memory is an answer about the input, not a crash. The files
    // the program writes are written whole or not at all, so leaving now
    // loses nothing saved; tearing down what was half built would only ask
    // for memory again.
    std::fputs(fxgraph::OutOfMemory::message(), stderr);
    std::fflush(stderr);
    std::_Exit(1);
  }
}
