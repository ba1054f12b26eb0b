#pragma once
#include <cstddef>
#include <string>
#include <vector>

#include "host/FxHostApi.h"

// Writes files so that a failure never leaves one half-written: each is
// written beside its place under a temporary name and flushed to disk, and
// only when all are whole are they renamed into place.
struct FileToWrite {
  std::string path;
  const void* data = nullptr;
  std::size_t size = 0;
};

// False, with the reason, when a file could not be written; the files
// already in place are then left as they were.
FXHOST_API bool writeFilesAtomically(const std::vector<FileToWrite>& files, std::string& why);
