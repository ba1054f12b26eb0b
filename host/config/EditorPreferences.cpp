#include "host/config/EditorPreferences.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>

namespace {

template <class Number>
std::optional<Number> parseNumber(std::string_view s) {
  Number v{};
  const auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
  if (ec != std::errc() || end != s.data() + s.size()) return std::nullopt;
  return v;
}

std::string_view withoutBlanks(std::string_view s) {
  while (!s.empty() && s.front() == ' ') s.remove_prefix(1);
  while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
  return s;
}

std::optional<XY<int>> parsePoint(std::string_view s) {
  s = withoutBlanks(s);
  if (s.size() < 5 || s.front() != '(' || s.back() != ')') return std::nullopt;
  s = s.substr(1, s.size() - 2);
  const std::size_t comma = s.find(',');
  if (comma == std::string_view::npos) return std::nullopt;
  const auto x = parseNumber<int>(withoutBlanks(s.substr(0, comma)));
  const auto y = parseNumber<int>(withoutBlanks(s.substr(comma + 1)));
  if (!x || !y) return std::nullopt;
  return XY<int>{*x, *y};
}

} // namespace

void EditorPreferences::open(const std::string& path, bool makeFolder) {
  std::lock_guard lock(mutex_);
  file_.load(path, "preferences", makeFolder);
}

std::string EditorPreferences::path() const {
  std::lock_guard lock(mutex_);
  return file_.path();
}

std::string EditorPreferences::refusal() const {
  std::lock_guard lock(mutex_);
  return file_.refusal();
}

std::string EditorPreferences::unsaved() const {
  std::lock_guard lock(mutex_);
  return file_.unsaved();
}

void EditorPreferences::setWriteFailureHandler(std::function<void(const std::string&)> handler) {
  std::lock_guard lock(mutex_);
  onWriteFailure_ = std::move(handler);
}

std::optional<std::string> EditorPreferences::text(const LightweightString<char>& key) const {
  std::lock_guard lock(mutex_);
  return file_.get(key.view());
}

bool EditorPreferences::store(const LightweightString<char>& key, const std::string& value) {
  std::function<void(const std::string&)> tell;
  std::string why;
  bool ok = false;
  {
    std::lock_guard lock(mutex_);
    const bool wasSaved = file_.unsaved().empty();
    ok = file_.set(key.view(), value);
    if (wasSaved && !file_.unsaved().empty()) {
      tell = onWriteFailure_;
      why = file_.unsaved();
    }
  }
  // Outside the lock: the handler may read preferences as it shows the problem.
  if (tell) tell(why);
  return ok;
}

bool EditorPreferences::getPreference(const LightweightString<char>& key, bool fallback) const {
  const auto t = text(key);
  if (t == "true" || t == "1") return true;
  if (t == "false" || t == "0") return false;
  return fallback;
}

int EditorPreferences::getPreference(const LightweightString<char>& key, int fallback) const {
  const auto t = text(key);
  return t ? parseNumber<int>(*t).value_or(fallback) : fallback;
}

double EditorPreferences::getPreference(const LightweightString<char>& key, double fallback) const {
  const auto t = text(key);
  return t ? parseNumber<double>(*t).value_or(fallback) : fallback;
}

XY<int> EditorPreferences::getPreference(const LightweightString<char>& key, XY<int> fallback) const {
  const auto t = text(key);
  return t ? parsePoint(*t).value_or(fallback) : fallback;
}

LightweightString<char> EditorPreferences::getPreference(const LightweightString<char>& key,
                                                         const LightweightString<char>& fallback) const {
  const auto t = text(key);
  return t ? LightweightString<char>(*t) : fallback;
}

LightweightString<wchar_t> EditorPreferences::getPreference(const LightweightString<char>& key,
                                                            const LightweightString<wchar_t>& fallback) const {
  const auto t = text(key);
  return t ? toWide(*t) : fallback;
}

bool EditorPreferences::setPreference(const LightweightString<char>& key, bool value) {
  return store(key, value ? "true" : "false");
}

bool EditorPreferences::setPreference(const LightweightString<char>& key, int value) {
  return store(key, std::to_string(value));
}

bool EditorPreferences::setPreference(const LightweightString<char>& key, double value) {
  char buffer[32];
  const auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value);
  return store(key, std::string(buffer, ec == std::errc() ? end : buffer));
}

bool EditorPreferences::setPreference(const LightweightString<char>& key, XY<int> value) {
  // Formatted in one go: "(x,y)".
  char text[32];
  std::snprintf(text, sizeof text, "(%d,%d)", value.x, value.y);
  return store(key, text);
}

bool EditorPreferences::setPreference(const LightweightString<char>& key, const LightweightString<char>& value) {
  return store(key, value.str());
}

bool EditorPreferences::setPreference(const LightweightString<char>& key, const LightweightString<wchar_t>& value) {
  return store(key, toUTF8(value).str());
}

bool EditorPreferences::hasPreference(const LightweightString<char>& key) const {
  std::lock_guard lock(mutex_);
  return file_.has(key.view());
}

bool EditorPreferences::removePreference(const LightweightString<char>& key) {
  std::lock_guard lock(mutex_);
  return file_.remove(key.view());
}

std::string userConfigFolder() {
  const char* xdg = std::getenv("XDG_CONFIG_HOME");
  // The base directory rules ignore a relative XDG_CONFIG_HOME.
  if (xdg && xdg[0] == '/') return std::string(xdg) + "/fxgraph";
  const char* home = std::getenv("HOME");
  return std::string(home && home[0] ? home : ".") + "/.config/fxgraph";
}

namespace {

struct Store {
  EditorPreferences preferences;
  std::once_flag opened;
};

Store& store() {
  static Store s;
  return s;
}

} // namespace

std::string defaultPreferencesFile() { return userConfigFolder() + "/preferences"; }

EditorPreferences& prefs() {
  Store& s = store();
  std::call_once(s.opened, [&] { s.preferences.open(defaultPreferencesFile(), true); });
  return s.preferences;
}

void setPreferencesFile(const std::string& path) {
  Store& s = store();
  // Counts as the first use, so that prefs() keeps this file.
  std::call_once(s.opened, [] {});
  s.preferences.open(path.empty() ? defaultPreferencesFile() : path, path.empty());
}
