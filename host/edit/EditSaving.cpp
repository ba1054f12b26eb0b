#include "host/edit/EditSaving.h"

#include <mutex>

namespace {
std::mutex saverMutex;
EditSaving::Saver& theSaver() {
  static EditSaving::Saver saver;
  return saver;
}
} // namespace

void EditSaving::install(Saver saver) {
  std::lock_guard lock(saverMutex);
  theSaver() = std::move(saver);
}

bool EditSaving::available() {
  std::lock_guard lock(saverMutex);
  return static_cast<bool>(theSaver());
}

bool EditSaving::save(const EditPtr& edit, std::string& why) {
  Saver saver;
  {
    std::lock_guard lock(saverMutex);
    saver = theSaver();
  }
  if (!saver) {
    why = "this editor cannot save from here";
    return false;
  }
  if (!edit) {
    why = "no edit is open";
    return false;
  }
  return saver(edit, why);
}
