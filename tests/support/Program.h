#pragma once
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace testsupport {

// Runs the built fxgraph program (FXGRAPH_BIN) with arguments.
struct ProgramRun {
  int status = -1;
  std::string out;
  std::string err;
};
ProgramRun runProgram(const std::vector<std::string>& args);

// A fresh folder for one test's files, removed when it goes.
class TempFolder {
public:
  TempFolder();
  ~TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  std::string path(const std::string& name) const { return folder_ + "/" + name; }
  // Copies a file of the source tree in; returns its new path.
  std::string copyIn(const std::string& sourceRelative);
  std::string write(const std::string& name, const std::string& text);

private:
  std::string folder_;
};

nlohmann::json readJson(const std::string& path);

} // namespace testsupport
