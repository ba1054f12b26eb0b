#include "tests/support/Program.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/Bytes.h"

namespace testsupport {
namespace {
std::string quoted(const std::string& s) {
  std::string q = "'";
  for (char c : s) q += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return q + "'";
}
std::string slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}
} // namespace

ProgramRun runProgram(const std::vector<std::string>& args) {
  const char* bin = std::getenv("FXGRAPH_BIN");
  ProgramRun run;
  if (!bin) {
    run.err = "FXGRAPH_BIN is not set";
    return run;
  }
  TempFolder streams;
  std::string command = quoted(bin);
  for (const auto& a : args) command += " " + quoted(a);
  command += " >" + quoted(streams.path("out")) + " 2>" + quoted(streams.path("err"));
  const int raw = std::system(command.c_str());
  run.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  run.out = slurp(streams.path("out"));
  run.err = slurp(streams.path("err"));
  return run;
}

TempFolder::TempFolder() {
  std::string pattern = (std::filesystem::temp_directory_path() / "fxgraph-test-XXXXXX").string();
  folder_ = mkdtemp(pattern.data()) ? pattern : std::string();
}

TempFolder::~TempFolder() {
  std::error_code ignored;
  if (!folder_.empty()) std::filesystem::remove_all(folder_, ignored);
}

std::string TempFolder::copyIn(const std::string& sourceRelative) {
  const std::filesystem::path from = sourcePath(sourceRelative);
  const std::string to = path(from.filename().string());
  std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing);
  return to;
}

std::string TempFolder::write(const std::string& name, const std::string& text) {
  std::ofstream(path(name), std::ios::binary) << text;
  return path(name);
}

nlohmann::json readJson(const std::string& path) {
  std::ifstream in(path);
  return nlohmann::json::parse(in, nullptr, false);
}

} // namespace testsupport
