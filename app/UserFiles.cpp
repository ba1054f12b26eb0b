#include "app/UserFiles.h"

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

void UserFiles::add(const std::string& path, std::string what) {
  if (!path.empty()) files_.emplace_back(path, std::move(what));
}

std::string UserFiles::clash(const std::string& output) const {
  for (const auto& [path, what] : files_)
    if (sameFile(output, path)) return what;
  return {};
}

} // namespace fxgraph
