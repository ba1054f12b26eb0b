#pragma once
#include "host/FxHostApi.h"
#include "host/core/LightweightString.h"

// The host's resources: user-visible texts by number, and icon files.

// The id that stands for no text at all.
inline constexpr int noResource = 999999;

// The English text of a resource; the empty text for noResource, and a
// visible placeholder ("[resource 1234]") for an id the table does not have.
FXHOST_API LightweightString<wchar_t> resourceStrW(int id);
// The same as UTF-8.
FXHOST_API LightweightString<char> resourceStr(int id);
// The text of a resource with `before` put in front and `after` behind it.
FXHOST_API LightweightString<wchar_t> paddedResourceStrW(int id, const LightweightString<wchar_t>& before,
                                                         const LightweightString<wchar_t>& after);
inline LightweightString<wchar_t> paddedResourceStrW(int id, const char* before, const char* after) {
  return paddedResourceStrW(id, toWide(before), toWide(after));
}
// Whether the table has a text for the id.
FXHOST_API bool hasResource(int id);

// The file of a named icon ("undo.png"): in the folder named by the
// environment variable FXGRAPH_ICON_DIR when it is set, else in the source
// tree's resources/icons. An absolute name is returned as it is.
FXHOST_API LightweightString<char> getIconPath(const LightweightString<char>& name);
