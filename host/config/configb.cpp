#include "host/config/configb.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>

void configb::set(const std::string& key, double v) {
  char text[40];
  std::snprintf(text, sizeof text, "%.17g", v);
  values_[key] = text;
}

LightweightString<char> configb::getText(const std::string& key, const LightweightString<char>& fallback) const {
  auto it = values_.find(key);
  return it == values_.end() ? fallback : LightweightString<char>(it->second);
}

int configb::getInt(const std::string& key, int fallback) const {
  auto it = values_.find(key);
  if (it == values_.end()) return fallback;
  int v = 0;
  const auto& s = it->second;
  auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
  return ec == std::errc() && end == s.data() + s.size() ? v : fallback;
}

unsigned configb::getUnsigned(const std::string& key, unsigned fallback) const {
  auto it = values_.find(key);
  if (it == values_.end()) return fallback;
  unsigned v = 0;
  const auto& s = it->second;
  auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
  return ec == std::errc() && end == s.data() + s.size() ? v : fallback;
}

double configb::getDouble(const std::string& key, double fallback) const {
  auto it = values_.find(key);
  if (it == values_.end() || it->second.empty()) return fallback;
  char* end = nullptr;
  const double v = std::strtod(it->second.c_str(), &end);
  return end == it->second.c_str() + it->second.size() ? v : fallback;
}

bool configb::getBool(const std::string& key, bool fallback) const {
  auto it = values_.find(key);
  if (it == values_.end()) return fallback;
  if (it->second == "true" || it->second == "1") return true;
  if (it->second == "false" || it->second == "0") return false;
  return fallback;
}

Cookie configb::getCookie(const std::string& key) const {
  Cookie c;
  auto it = values_.find(key);
  if (it == values_.end() || !Cookie::fromString(it->second, c)) return Cookie();
  return c;
}
