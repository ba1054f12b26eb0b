#pragma once
#include <map>
#include <string>

#include "host/FxHostApi.h"
#include "host/core/Cookie.h"
#include "host/core/LightweightString.h"
#include "host/core/XY.h"

// A keyed record of a saved screen layout: one per glob, values kept as text.
class FXHOST_API configb {
public:
  bool has(const std::string& key) const { return values_.count(key) != 0; }
  void remove(const std::string& key) { values_.erase(key); }

  void set(const std::string& key, const LightweightString<char>& text) { values_[key] = text.str(); }
  void set(const std::string& key, const char* text) { values_[key] = text ? text : ""; }
  void set(const std::string& key, int v) { values_[key] = std::to_string(v); }
  void set(const std::string& key, unsigned v) { values_[key] = std::to_string(v); }
  void set(const std::string& key, double v);
  void set(const std::string& key, bool v) { values_[key] = v ? "true" : "false"; }
  void set(const std::string& key, const Cookie& c) { values_[key] = c.asString().str(); }

  // Each returns the fallback when the key is absent or its text is not of the type.
  LightweightString<char> getText(const std::string& key, const LightweightString<char>& fallback = {}) const;
  int getInt(const std::string& key, int fallback = 0) const;
  unsigned getUnsigned(const std::string& key, unsigned fallback = 0) const;
  double getDouble(const std::string& key, double fallback = 0) const;
  bool getBool(const std::string& key, bool fallback = false) const;
  Cookie getCookie(const std::string& key) const;

  const std::map<std::string, std::string>& values() const noexcept { return values_; }

private:
  std::map<std::string, std::string> values_;
};
