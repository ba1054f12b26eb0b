#include "host/edit/ProjectDatabase.h"

LightweightString<char> dbrecord::get_field(const LightweightString<char>& name) const {
  auto it = fields_.find(name.str());
  return it == fields_.end() ? LightweightString<char>(std::string()) : LightweightString<char>(it->second);
}

const dbrecord* ProjectDatabase::record(const Cookie& shot) const {
  std::lock_guard lock(mutex_);
  auto it = records_.find(shot.stripped());
  return it == records_.end() ? nullptr : &it->second;
}

dbrecord& ProjectDatabase::recordFor(const Cookie& shot) {
  std::lock_guard lock(mutex_);
  return records_[shot.stripped()];
}

void ProjectDatabase::forget(const Cookie& shot) {
  std::lock_guard lock(mutex_);
  records_.erase(shot.stripped());
}

ProjectDatabase& EditManager::getProjdb() {
  static ProjectDatabase db;
  return db;
}
