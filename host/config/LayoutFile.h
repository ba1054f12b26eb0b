#pragma once
#include <string>
#include <vector>

#include "host/FxHostApi.h"
#include "host/config/configb.h"

// A saved screen layout: one configb record per root glob that asked to be
// kept, in screen order, stored as JSON ({"globs": [{key: text, ...}, ...]}).
namespace LayoutFile {

// The records of a layout file; a missing file is an empty layout. False,
// with the reason, for a file that cannot be read or is not a layout.
FXHOST_API bool load(const std::string& path, std::vector<configb>& out, std::string& why);
// Writes the records atomically. False, with the reason, when it cannot.
FXHOST_API bool save(const std::string& path, const std::vector<configb>& records, std::string& why);

} // namespace LayoutFile
