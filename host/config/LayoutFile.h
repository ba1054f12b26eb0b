#pragma once
#include <string>
#include <vector>

#include "host/FxHostApi.h"
#include "host/config/configb.h"

// A saved screen layout: one configb record per root glob that asked to be
// kept, in screen order, stored as JSON ({"globs": [{key: text, ...}, ...]}).
namespace LayoutFile {

// One glob of a layout file.
struct FXHOST_API SavedGlob {
  configb record;
  // The glob exactly as the file held it (its JSON text), so that a glob
  // the host does not restore goes back into the file as it was; empty for
  // a record made in this run, which is written from `record`.
  std::string asRead;
};

// The globs of a layout file, in its order; a missing or empty file is an
// empty layout. False, with the reason ("PATH: not a layout file (...)"), for
// a file that cannot be read or is not a layout: such a file is the user's
// and must not be saved over.
FXHOST_API bool load(const std::string& path, std::vector<SavedGlob>& out, std::string& why);
// Writes the globs atomically. False, with the reason, when it cannot.
FXHOST_API bool save(const std::string& path, const std::vector<SavedGlob>& globs, std::string& why);

} // namespace LayoutFile
