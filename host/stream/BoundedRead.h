#pragma once
#include <cstddef>
#include <string>

#include "host/FxHostApi.h"

// Reads a whole file that must be a regular file no larger than `maxBytes`:
// a pipe, a device or a folder given by mistake is refused at once instead
// of hanging the reader or filling memory. False, with the reason (the
// system's own words where it refused), otherwise.
FXHOST_API bool readBoundedFile(const std::string& path, std::size_t maxBytes, std::string& text, std::string& why);
