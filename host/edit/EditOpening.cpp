#include "host/edit/EditOpening.h"

#include <sys/stat.h>

#include "host/edit/OtioReader.h"

namespace {
bool modifiedAt(const std::string& path, struct timespec& when) {
  struct stat st {};
  if (::stat(path.c_str(), &st) != 0) return false;
  when = st.st_mtim;
  return true;
}
} // namespace

std::string EditOpening::savePath(const std::string& path) {
  return OtioReader::isTimelinePath(path) ? path + ".json" : path;
}

EditOpening::Opened EditOpening::open(const std::string& path) {
  Opened o;
  o.saveTo = savePath(path);
  if (o.saveTo == path) {
    o.loaded = EditFile::load(path);
    return o;
  }
  struct timespec timeline {
  }, saved{};
  const bool timelineThere = modifiedAt(path, timeline);
  if (modifiedAt(o.saveTo, saved) && (!timelineThere || saved.tv_sec > timeline.tv_sec ||
                                      (saved.tv_sec == timeline.tv_sec && saved.tv_nsec >= timeline.tv_nsec))) {
    o.loaded = EditFile::load(o.saveTo);
    if (o.loaded.edit)
      o.loaded.warnings.insert(o.loaded.warnings.begin(), path + ": the arrangement saved from it is opened (" +
                                                              o.saveTo +
                                                              "); remove that file to read the timeline afresh");
    return o;
  }
  o.loaded = OtioReader::load(path);
  return o;
}
