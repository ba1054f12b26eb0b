#pragma once
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include <nlohmann/json.hpp>

#include "tests/support/Bytes.h"

namespace testsupport {

// A fresh folder for one test's files, removed when it goes.
class TempFolder {
public:
  TempFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "fxgraph-test-XXXXXX").string();
    folder_ = mkdtemp(pattern.data()) ? pattern : std::string();
  }
  ~TempFolder() {
    std::error_code ignored;
    if (!folder_.empty()) std::filesystem::remove_all(folder_, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  std::string path(const std::string& name) const { return folder_ + "/" + name; }
  // Hidden files in the folder (where a save keeps its temporaries).
  std::vector<std::string> leftovers() const {
    std::vector<std::string> names;
    std::error_code ec;
    for (const auto& e : std::filesystem::directory_iterator(folder_, ec))
      if (e.path().filename().string().front() == '.') names.push_back(e.path().filename().string());
    return names;
  }
  // Copies a file of the source tree in; returns its new path.
  std::string copyIn(const std::string& sourceRelative) {
    const std::filesystem::path from = sourcePath(sourceRelative);
    const std::string to = path(from.filename().string());
    std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing);
    return to;
  }
  std::string write(const std::string& name, const std::string& text) {
    std::ofstream(path(name), std::ios::binary) << text;
    return path(name);
  }

private:
  std::string folder_;
};

inline std::string readText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

inline nlohmann::json readJson(const std::string& path) {
  return nlohmann::json::parse(readText(path), nullptr, false);
}

// Runs the built fxgraph program (FXGRAPH_BIN) with arguments.
struct ProgramRun {
  int status = -1;
  std::string out;
  std::string err;
};
// `env`: "NAME=value" settings for the run (XDG_CONFIG_HOME, say); `shell`:
// a shell command run first in the same shell (a ulimit, say).
inline ProgramRun runProgram(const std::vector<std::string>& args, const std::vector<std::string>& env = {},
                             const std::string& shell = {}) {
  auto quoted = [](const std::string& s) {
    std::string q = "'";
    for (char c : s) q += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return q + "'";
  };
  ProgramRun run;
  const char* bin = std::getenv("FXGRAPH_BIN");
  if (!bin) {
    run.err = "FXGRAPH_BIN is not set";
    return run;
  }
  TempFolder streams;
  std::string command = shell.empty() ? "env" : shell + "; env";
  for (const auto& e : env) command += " " + quoted(e);
  command += " " + quoted(bin);
  for (const auto& a : args) command += " " + quoted(a);
  command += " >" + quoted(streams.path("out")) + " 2>" + quoted(streams.path("err"));
  const int raw = std::system(command.c_str());
  run.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  run.out = readText(streams.path("out"));
  run.err = readText(streams.path("err"));
  return run;
}

} // namespace testsupport
