#include "app/SettingsCheck.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

#include "host/core/EchoedText.h"
#include "host/ui/GlobManager.h"

namespace fxgraph {
namespace {

constexpr int most = GlobManager::largestScreenSide;

std::optional<long long> wholeNumber(std::string_view s) {
  long long v = 0;
  const auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
  if (ec != std::errc() || end != s.data() + s.size()) return std::nullopt;
  return v;
}

std::optional<double> realNumber(std::string_view s) {
  double v = 0;
  const auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
  if (ec != std::errc() || end != s.data() + s.size() || !std::isfinite(v)) return std::nullopt;
  return v;
}

std::string_view withoutBlanks(std::string_view s) {
  while (!s.empty() && s.front() == ' ') s.remove_prefix(1);
  while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
  return s;
}

// "(x,y)" as the store writes points, each whole number as it stands.
std::optional<std::pair<long long, long long>> point(std::string_view s) {
  s = withoutBlanks(s);
  if (s.size() < 5 || s.front() != '(' || s.back() != ')') return std::nullopt;
  s = s.substr(1, s.size() - 2);
  const std::size_t comma = s.find(',');
  if (comma == std::string_view::npos) return std::nullopt;
  const auto x = wholeNumber(withoutBlanks(s.substr(0, comma)));
  const auto y = wholeNumber(withoutBlanks(s.substr(comma + 1)));
  if (!x || !y) return std::nullopt;
  return std::pair{*x, *y};
}

std::string pointText(long long x, long long y) { return "(" + std::to_string(x) + "," + std::to_string(y) + ")"; }

std::string numberText(double v) {
  char text[32];
  const auto [end, ec] = std::to_chars(text, text + sizeof text, v);
  return std::string(text, ec == std::errc() ? end : text);
}

} // namespace

std::vector<std::string> SettingsCheck::mendPreferences(EditorPreferences& preferences) {
  std::vector<std::string> lines;
  // A file that is not one was left alone, and nothing was read from it.
  if (!preferences.refusal().empty()) return lines;
  const std::string file = preferences.path();
  auto textOf = [&](const char* key) { return preferences.getPreference(key, "").str(); };
  auto leaveOut = [&](const char* key, const std::string& why) {
    lines.push_back(file + ": \"" + key + "\" = " + echoedText(textOf(key)) + " " + why + "; the default is used");
    preferences.removePreference(key);
  };
  auto mendPoint = [&](const char* key, long long loX, long long hiX, long long loY, long long hiY, const char* what) {
    if (!preferences.hasPreference(key)) return;
    const auto p = point(textOf(key));
    if (!p) return leaveOut(key, std::string("is not ") + what + " (\"(x,y)\" in whole pixels)");
    const long long x = std::clamp(p->first, loX, hiX), y = std::clamp(p->second, loY, hiY);
    if (x == p->first && y == p->second) return;
    lines.push_back(file + ": \"" + key + "\" = " + echoedText(textOf(key)) + " is out of range (" +
                    pointText(loX, loY) + " to " + pointText(hiX, hiY) + "); taken as " + pointText(x, y));
    preferences.setPreference(key, XY<int>{static_cast<int>(x), static_cast<int>(y)});
  };
  mendPoint("Effect graph tool size", 1, most, 1, most, "a size");
  mendPoint("Video Routing : Position", -most, most, -most, most, "a place");

  if (const char* key = "Video Routing : Zoom"; preferences.hasPreference(key)) {
    const auto zoom = realNumber(textOf(key));
    if (!zoom) {
      leaveOut(key, "is not a zoom (a number from 0 to 1)");
    } else if (*zoom < 0 || *zoom > 1) {
      const double mended = std::clamp(*zoom, 0.0, 1.0);
      lines.push_back(file + ": \"" + key + "\" = " + echoedText(textOf(key)) + " is out of range (0 to 1); taken as " +
                      numberText(mended));
      preferences.setPreference(key, mended);
    }
  }
  for (const char* key : {"Video Routing : Templates", "Automatic FX positioning"})
    if (preferences.hasPreference(key)) {
      const std::string v = textOf(key);
      if (v != "true" && v != "false" && v != "1" && v != "0") leaveOut(key, "is not true or false");
    }
  if (const char* key = "Video Routing : Orientation"; preferences.hasPreference(key)) {
    const std::string v = textOf(key);
    if (v != "LeftToRight" && v != "BottomToTop") leaveOut(key, "is not LeftToRight or BottomToTop");
  }
  return lines;
}

std::vector<std::string> SettingsCheck::mendRecord(configb& record, const std::string& where) {
  std::vector<std::string> lines;
  auto say = [&](const char* key, const std::string& why, const std::string& outcome) {
    lines.push_back(where + ": " + key + " = " + echoedText(record.getText(key).str()) + " " + why + "; " + outcome);
  };
  auto mendWhole = [&](const char* key, long long lo, long long hi, const char* what) {
    if (!record.has(key)) return;
    const auto v = wholeNumber(record.getText(key).view());
    if (!v) {
      say(key, std::string("is not ") + what, "left out");
      record.remove(key);
    } else if (*v < lo || *v > hi) {
      const long long mended = std::clamp(*v, lo, hi);
      say(key, "is out of range (" + std::to_string(lo) + " to " + std::to_string(hi) + ")",
          "taken as " + std::to_string(mended));
      record.set(key, static_cast<int>(mended));
    }
  };
  // 0 by 0: no size, the preference's then.
  mendWhole("W", 0, most, "a width (whole pixels)");
  mendWhole("H", 0, most, "a height (whole pixels)");
  mendWhole("X", -most, most, "a place (whole pixels)");
  mendWhole("Y", -most, most, "a place (whole pixels)");
  auto mendReal = [&](const char* key, double lo, double hi, const char* what) {
    if (!record.has(key)) return;
    const auto v = realNumber(record.getText(key).view());
    if (!v) {
      say(key, std::string("is not ") + what, "left out");
      record.remove(key);
    } else if (*v < lo || *v > hi) {
      const double mended = std::clamp(*v, lo, hi);
      say(key, "is out of range (" + numberText(lo) + " to " + numberText(hi) + ")", "taken as " + numberText(mended));
      record.set(key, mended);
    }
  };
  mendReal("VIEW_ZOOM", 0, 1, "a zoom (a number from 0 to 1)");
  mendReal("VIEW_CX", -1e9, 1e9, "a place in the graph");
  mendReal("VIEW_CY", -1e9, 1e9, "a place in the graph");
  mendReal("CURRENT_TIME", 0, 1e9, "a time (seconds, 0 or more)");
  return lines;
}

} // namespace fxgraph
