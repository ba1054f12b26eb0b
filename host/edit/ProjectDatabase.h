#pragma once
#include <map>
#include <mutex>
#include <string>

#include "host/FxHostApi.h"
#include "host/core/Cookie.h"
#include "host/core/LightweightString.h"

// One record of the project database: named text fields.
class FXHOST_API dbrecord {
public:
  LightweightString<char> get_field(const LightweightString<char>& name) const;
  void set_field(const std::string& name, const std::string& value) { fields_[name] = value; }
  const std::map<std::string, std::string>& fields() const noexcept { return fields_; }

private:
  std::map<std::string, std::string> fields_;
};

// The project's records of shots (materials), by cookie. Loading an edit
// enters its materials here.
class FXHOST_API ProjectDatabase {
public:
  // The record of a shot, or null.
  const dbrecord* record(const Cookie& shot) const;
  dbrecord& recordFor(const Cookie& shot);
  void forget(const Cookie& shot);

private:
  mutable std::mutex mutex_;
  std::map<Cookie, dbrecord> records_;
};

struct FXHOST_API EditManager {
  static ProjectDatabase& getProjdb();
};
