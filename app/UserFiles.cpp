#include "app/UserFiles.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>

#include "host/stream/AtomicFiles.h"

namespace fxgraph {

bool sameFile(const std::string& a, const std::string& b) {
  if (a.empty() || b.empty()) return false;
  namespace fs = std::filesystem;
  std::error_code ec;
  if (fs::exists(a, ec) && fs::exists(b, ec)) return fs::equivalent(a, b, ec);
  // One is not there yet: the places the writes would go to.
  const fs::path x = fs::weakly_canonical(fs::absolute(finalTargetOf(a), ec), ec);
  const fs::path y = fs::weakly_canonical(fs::absolute(finalTargetOf(b), ec), ec);
  return !x.empty() && x == y;
}

bool keepAside(const std::string& path, std::string& asideAs, std::string& why) {
  const std::string from = finalTargetOf(path);
  for (int n = 1; n <= 100; ++n) {
    const std::string to = from + ".bad" + (n == 1 ? std::string() : "." + std::to_string(n));
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
      asideAs = to;
      return true;
    }
    if (errno != EEXIST) {
      why = std::strerror(errno);
      return false;
    }
  }
  why = "a hundred files beside it have the names it would take";
  return false;
}

void UserFiles::add(const std::string& path, std::string what) {
  if (!path.empty()) files_.emplace_back(path, std::move(what));
}

std::string UserFiles::clash(const std::string& output) const {
  for (const auto& [path, what] : files_)
    if (sameFile(output, path)) return what;
  return {};
}

} // namespace fxgraph
