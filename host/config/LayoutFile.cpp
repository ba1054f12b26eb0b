#include "host/config/LayoutFile.h"

#include <filesystem>

#include <nlohmann/json.hpp>

#include "host/core/JsonNesting.h"
#include "host/stream/AtomicFiles.h"
#include "host/stream/BoundedRead.h"

namespace LayoutFile {
namespace {
// A layout is a few small records; anything bigger is not one.
constexpr std::size_t largestLayout = 1 << 20;

bool onlyBlanks(const std::string& text) { return text.find_first_not_of(" \t\r\n") == std::string::npos; }
} // namespace

bool load(const std::string& path, std::vector<SavedGlob>& out, std::string& why) {
  out.clear();
  std::error_code ec;
  if (!std::filesystem::exists(path, ec)) return true;
  std::string text, failure;
  if (!readBoundedFile(path, largestLayout, text, failure)) {
    why = path + ": not a layout file (" + failure + ")";
    return false;
  }
  // An empty file holds nothing that a save could lose.
  if (onlyBlanks(text)) return true;
  if (jsonTooDeepAt(text) != std::string::npos) {
    why = path + ": not a layout file (values nested deeper than " + std::to_string(maxJsonNesting) + " levels)";
    return false;
  }
  const nlohmann::ordered_json doc = nlohmann::ordered_json::parse(text, nullptr, false);
  if (doc.is_discarded() || !doc.is_object() || !doc.contains("globs") || !doc["globs"].is_array()) {
    why = path + ": not a layout file (wants {\"globs\": [...]})";
    return false;
  }
  for (const nlohmann::ordered_json& glob : doc["globs"]) {
    SavedGlob saved;
    saved.asRead = glob.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    if (glob.is_object())
      for (const auto& [key, value] : glob.items())
        if (value.is_string()) saved.record.set(key, value.get<std::string>().c_str());
    out.push_back(std::move(saved));
  }
  return true;
}

bool save(const std::string& path, const std::vector<SavedGlob>& globs, std::string& why) {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const SavedGlob& saved : globs) {
    if (!saved.asRead.empty()) {
      nlohmann::ordered_json kept = nlohmann::ordered_json::parse(saved.asRead, nullptr, false);
      if (!kept.is_discarded()) {
        list.push_back(std::move(kept));
        continue;
      }
    }
    nlohmann::ordered_json glob = nlohmann::ordered_json::object();
    for (const auto& [key, value] : saved.record.values()) glob[key] = value;
    list.push_back(std::move(glob));
  }
  const std::string text =
      nlohmann::ordered_json{{"globs", list}}.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) +
      "\n";
  return writeFilesAtomically({{path, text.data(), text.size()}}, why);
}

} // namespace LayoutFile
