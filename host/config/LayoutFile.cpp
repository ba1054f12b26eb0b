#include "host/config/LayoutFile.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include <nlohmann/json.hpp>

#include "host/core/JsonNesting.h"
#include "host/stream/AtomicFiles.h"

namespace LayoutFile {
namespace {
// A layout is a few small records; anything bigger is not one.
constexpr std::uintmax_t largestLayout = 1 << 20;
} // namespace

bool load(const std::string& path, std::vector<configb>& out, std::string& why) {
  out.clear();
  std::error_code ec;
  if (!std::filesystem::exists(path, ec)) return true;
  if (!std::filesystem::is_regular_file(path, ec)) {
    why = path + ": not a layout file (not a regular file)";
    return false;
  }
  if (std::filesystem::file_size(path, ec) > largestLayout) {
    why = path + ": not a layout file (over 1 MB)";
    return false;
  }
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  if (jsonTooDeepAt(text.str()) != std::string::npos) {
    why = path + ": not a layout file (values nested deeper than " + std::to_string(maxJsonNesting) + " levels)";
    return false;
  }
  const nlohmann::json doc = nlohmann::json::parse(text.str(), nullptr, false);
  if (doc.is_discarded() || !doc.is_object() || !doc.contains("globs") || !doc["globs"].is_array()) {
    why = path + ": not a layout file (wants {\"globs\": [...]})";
    return false;
  }
  for (const nlohmann::json& glob : doc["globs"]) {
    if (!glob.is_object()) continue;
    configb record;
    for (const auto& [key, value] : glob.items())
      if (value.is_string()) record.set(key, value.get<std::string>().c_str());
    out.push_back(std::move(record));
  }
  return true;
}

bool save(const std::string& path, const std::vector<configb>& records, std::string& why) {
  nlohmann::json globs = nlohmann::json::array();
  for (const configb& record : records) {
    nlohmann::json glob = nlohmann::json::object();
    for (const auto& [key, value] : record.values()) glob[key] = value;
    globs.push_back(glob);
  }
  const std::string text =
      nlohmann::json{{"globs", globs}}.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
  return writeFilesAtomically({{path, text.data(), text.size()}}, why);
}

} // namespace LayoutFile
