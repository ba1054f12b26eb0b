#include "app/RenderCommand.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <ostream>

#include "app/ScriptRunner.h"
#include "app/Session.h"
#include "app/StateDump.h"
#include "app/UserFiles.h"
#include "host/config/EditorPreferences.h"
#include "host/edit/EditFile.h"
#include "host/edit/EditOpening.h"
#include "host/stream/AtomicFiles.h"
#include "host/ui/GlobManager.h"
#include "host/ui/HostClock.h"

namespace fxgraph {
namespace {

struct Options {
  std::string edit;
  XY<int> size{1024, 640};
  std::optional<double> time; // none: where the saved layout says, else 0
  std::string script, png, svg, dump, prefs, layout;
};

bool parse(const std::vector<std::string>& args, Options& o, std::string& why) {
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    auto value = [&](std::string& into) {
      if (i + 1 >= args.size()) {
        why = a + " wants a value";
        return false;
      }
      into = args[++i];
      return true;
    };
    std::string v;
    if (a == "--size") {
      if (!value(v)) return false;
      char* end = nullptr;
      const long w = std::strtol(v.c_str(), &end, 10);
      const long h = *end == 'x' ? std::strtol(end + 1, &end, 10) : 0;
      const int most = GlobManager::largestScreenSide;
      if (*end || w < 64 || h < 64 || w > most || h > most) {
        why = "--size wants WxH, each 64 to " + std::to_string(most) + " pixels (got \"" + v + "\")";
        return false;
      }
      o.size = {static_cast<int>(w), static_cast<int>(h)};
    } else if (a == "--time") {
      if (!value(v)) return false;
      char* end = nullptr;
      const double t = std::strtod(v.c_str(), &end);
      o.time = t;
      if (v.empty() || *end || !(t >= 0) || !std::isfinite(t)) {
        why = "--time wants seconds, 0 or more (got \"" + v + "\")";
        return false;
      }
    } else if (a == "--script") {
      if (!value(o.script)) return false;
    } else if (a == "--png") {
      if (!value(o.png)) return false;
    } else if (a == "--svg") {
      if (!value(o.svg)) return false;
    } else if (a == "--dump") {
      if (!value(o.dump)) return false;
    } else if (a == "--prefs") {
      if (!value(o.prefs)) return false;
    } else if (a == "--layout") {
      if (!value(o.layout)) return false;
    } else if (a.starts_with("-")) {
      why = "unknown option " + a;
      return false;
    } else if (o.edit.empty()) {
      o.edit = a;
    } else {
      why = "one edit at a time (\"" + a + "\" is one too many)";
      return false;
    }
  }
  if (o.edit.empty())
    why = "usage: fxgraph render EDIT [--size WxH] [--time T] [--script FILE] [--png FILE] "
          "[--svg FILE] [--dump FILE] [--prefs FILE] [--layout FILE]";
  return !o.edit.empty();
}

// False, with the reason, when an output names a file the run reads and
// keeps, or the same file as another output.
bool checkOutputs(const Options& o, std::string& why) {
  UserFiles inputs;
  inputs.add(o.edit, "the edit");
  // A timeline's edit is read from, and saved to, the file beside it.
  const std::string saved = EditOpening::savePath(o.edit);
  inputs.add(saved, "the edit");
  inputs.add(EditFile::sidecarPath(saved), "the edit's objects");
  inputs.add(o.script, "the script");
  inputs.add(prefs().path(), "the preferences");
  inputs.add(o.layout.empty() ? defaultLayoutPath() : o.layout, "the screen layout");
  if (!o.layout.empty() && sameFile(o.layout, prefs().path())) {
    why = "--layout and --prefs name the same file (" + o.layout + ")";
    return false;
  }
  UserFiles outputs;
  for (const auto& [option, file] : {std::pair{"--png", &o.png}, {"--svg", &o.svg}, {"--dump", &o.dump}}) {
    if (file->empty()) continue;
    std::string what = inputs.clash(*file);
    if (what.empty()) what = outputs.clash(*file);
    if (!what.empty()) {
      why = std::string(option) + " " + *file + " is " + what + "; it is not written over";
      return false;
    }
    outputs.add(*file, std::string("the file of ") + option);
  }
  return true;
}

} // namespace

int runRenderCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  Options o;
  std::string why;
  if (!parse(args, o, why)) {
    err << "fxgraph render: " << why << "\n";
    return 2;
  }
  if (!o.prefs.empty()) setPreferencesFile(o.prefs);
  // A preferences file named here that is not one is the user's: the run
  // stops before anything could be written to it.
  if (const std::string refusal = prefs().refusal(); !o.prefs.empty() && !refusal.empty()) {
    err << "fxgraph: " << refusal << "; nothing is written to it\n";
    return 1;
  }
  if (!checkOutputs(o, why)) {
    err << "fxgraph: " << why << "\n";
    return 1;
  }
  // Timers follow the script's ticks, not the wall clock.
  HostClock::driveByHand(0);
  GlobManager::initialise(o.size.x, o.size.y);
  int status = 0;
  {
    Session session;
    if (!session.open(o.edit, o.time, o.layout, why)) {
      err << "fxgraph: " << why << "\n";
      status = 1;
    } else {
      for (const std::string& w : session.warnings()) err << "fxgraph: warning: " << w << "\n";
      GlobManager::update();
      ScriptRunner runner(session);
      if (!o.script.empty() && !runner.runFile(o.script, why)) {
        err << "fxgraph: " << why << "\n";
        status = 1;
      }
      // The picture and the dump show every still.
      session.finishStills();
      // Each output is written whole or not at all, with the system's reason when it cannot be.
      std::string failure;
      if (status == 0 && !o.png.empty() && !GlobManager::writePNG(o.png, &failure)) {
        err << "fxgraph: " << (failure.empty() ? "cannot write " + o.png : failure) << "\n";
        status = 1;
      }
      if (status == 0 && !o.svg.empty() && !GlobManager::writeSVG(o.svg, &failure)) {
        err << "fxgraph: " << (failure.empty() ? "cannot write " + o.svg : failure) << "\n";
        status = 1;
      }
      if (status == 0 && !o.dump.empty() && !writeFileAtomically(o.dump, dumpStateText(session), failure)) {
        err << "fxgraph: " << failure << "\n";
        status = 1;
      }
      if (status == 0 && o.png.empty() && o.svg.empty() && o.dump.empty())
        out << "rendered " << o.edit << " (give --png, --svg or --dump to keep the result)\n";
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
