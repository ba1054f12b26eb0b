#pragma once
#include <string>

#include "host/FxHostApi.h"
#include "host/edit/EditFile.h"

// Opens what the user names: an edit file, or a timeline read as an edit.
// A timeline's own file is never written: its edit is saved beside it as
// TIMELINE.json (with that file's objects). When that file is there and
// not older than the timeline, it is what opens, since it holds the
// arrangement saved from the timeline; a timeline exported again since is
// read afresh.
struct FXHOST_API EditOpening {
  struct Opened {
    EditFile::LoadResult loaded;
    std::string saveTo; // where saving the edit writes
  };
  static Opened open(const std::string& path);
  // Where an edit opened from `path` is saved.
  static std::string savePath(const std::string& path);
};
