#include "host/stream/StreamClassRegistrar.h"

#include <map>
#include <mutex>

namespace {
struct Registry {
  std::mutex mutex;
  std::map<LightweightString<char>, std::pair<StreamClassRegistrar::Builder, const StreamClassRegistrar*>> builders;
};
// Never destroyed: registrars of libraries unloaded last still find it.
Registry& registry() {
  static Registry* r = new Registry;
  return *r;
}
} // namespace

StreamClassRegistrar::StreamClassRegistrar(const LightweightString<char>& fullName,
                                           const LightweightString<char>& shortName, Builder builder)
    : fullName_(fullName), shortName_(shortName) {
  Registry& r = registry();
  std::lock_guard lock(r.mutex);
  r.builders[fullName_] = {builder, this};
  r.builders[shortName_] = {builder, this};
}

StreamClassRegistrar::~StreamClassRegistrar() {
  Registry& r = registry();
  std::lock_guard lock(r.mutex);
  for (const auto& name : {fullName_, shortName_}) {
    auto it = r.builders.find(name);
    if (it != r.builders.end() && it->second.second == this) r.builders.erase(it);
  }
}

StreamClassRegistrar::Builder StreamClassRegistrar::findBuilder(const LightweightString<char>& name) {
  Registry& r = registry();
  std::lock_guard lock(r.mutex);
  auto it = r.builders.find(name);
  return it == r.builders.end() ? nullptr : it->second.first;
}

std::vector<LightweightString<char>> StreamClassRegistrar::registeredNames() {
  Registry& r = registry();
  std::lock_guard lock(r.mutex);
  std::vector<LightweightString<char>> names;
  for (const auto& [name, entry] : r.builders) names.push_back(name);
  return names;
}
