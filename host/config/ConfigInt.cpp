#include "host/config/ConfigInt.h"

#include <charconv>
#include <mutex>

#include "host/config/EditorPreferences.h"
#include "host/config/KeyFile.h"
#include "host/notify/Log.h"

namespace {

struct Config {
  std::mutex mutex;
  KeyFile file;
  bool loaded = false;
};

Config& config() {
  static Config c;
  return c;
}

} // namespace

int config_int(const LightweightString<char>& name, int fallback) {
  Config& c = config();
  std::lock_guard lock(c.mutex);
  if (!c.loaded) {
    c.file.load(userConfigFolder() + "/config", "configuration");
    c.loaded = true;
  }
  const auto text = c.file.get(name.view());
  if (!text) return fallback;
  int v = 0;
  const auto [end, ec] = std::from_chars(text->data(), text->data() + text->size(), v);
  if (ec == std::errc() && end == text->data() + text->size()) return v;
  Log::printf("configuration: %s = %s is not an integer; using %d", name.c_str(), text->c_str(), fallback);
  return fallback;
}

void setConfigFile(const std::string& path) {
  Config& c = config();
  std::lock_guard lock(c.mutex);
  c.file.load(path.empty() ? userConfigFolder() + "/config" : path, "configuration");
  c.loaded = true;
}
