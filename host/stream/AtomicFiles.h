#pragma once
#include <cstddef>
#include <string>
#include <vector>

#include "host/FxHostApi.h"

// Writes files so that a failure never leaves one half-written: each is
// written beside its place under a fresh temporary name (made exclusively,
// never through a link someone planted), synced to disk, and only when all
// are whole are they renamed into place and their folders synced.
//
// A target that is a symbolic link is written through to the file it names
// (the link stays a link); a target that exists keeps its permissions; a
// target that exists and is not a regular file (a folder, a device, a pipe)
// is refused.
struct FileToWrite {
  std::string path;
  const void* data = nullptr;
  std::size_t size = 0;
  // The file it replaces stays reachable as path + ".prev" until every file
  // of the save is in place: a reader that finds the files of a save only
  // partly in place can go back to the whole of the previous one. A file
  // already at that name is never removed: the save fails instead, so the
  // caller clears a backup of its own first and keeps none where the name
  // holds somebody else's file.
  bool keepPrevious = false;
};

// False, with the reason (the system's own words where it refused), when a
// file could not be written. A failed save leaves no temporary behind and
// puts back what it had already replaced (from its ".prev"), and removes
// what it had already added, so that the files are as it found them.
FXHOST_API bool writeFilesAtomically(const std::vector<FileToWrite>& files, std::string& why);
// One file, the same way.
FXHOST_API bool writeFileAtomically(const std::string& path, const std::string& bytes, std::string& why);

// Whether a save to `path` could put its file in place now, without writing
// it: a temporary can be made beside the file the path finally names (the
// folder is there, takes new files, and the name is not too long), and the
// file there, if any, is a regular file that a rename may replace (neither
// immutable nor append-only, nor a mount point). False, with the reason,
// otherwise. For telling the user early; a save reports its own failure.
FXHOST_API bool probeReplace(const std::string& path, std::string& why);

// The file a path finally names, following symbolic links (up to 40): the
// path itself when it is no link or does not exist.
FXHOST_API std::string finalTargetOf(const std::string& path);

// For tests of what a save leaves when it is cut short: called before each
// step a save takes ("write", "sync", "link", "rename", "sync folder",
// "unlink"), numbered from 0. Returning false stops the save there, as a
// kill would: nothing after it happens and nothing is cleaned up.
using SaveStepHook = bool (*)(const char* step, int number, void* context);
FXHOST_API void setSaveStepHook(SaveStepHook hook, void* context);
