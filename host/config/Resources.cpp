#include "host/config/Resources.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

#include "host/notify/Log.h"

#ifndef FXHOST_ICON_DIR
#error "FXHOST_ICON_DIR names the folder of the bundled icons; the build defines it"
#endif

namespace {

struct Entry {
  int id;
  const wchar_t* text;
};

// Sorted by id.
constexpr Entry table[] = {
    {10007, L"missing"},       {10052, L"Video"},        {10869, L"Auto position"},
    {11111, L"Redo"},          {11129, L"Undo"},         {11285, L"This can only be done on the record machine"},
    {11402, L"Tidy"},          {11587, L"Effect graph"}, {11779, L"Left to right"},
    {11780, L"Bottom to top"},
};
static_assert(std::is_sorted(std::begin(table), std::end(table),
                             [](const Entry& a, const Entry& b) { return a.id < b.id; }));

const Entry* find(int id) {
  const Entry* it =
      std::lower_bound(std::begin(table), std::end(table), id, [](const Entry& e, int want) { return e.id < want; });
  return it != std::end(table) && it->id == id ? it : nullptr;
}

} // namespace

bool hasResource(int id) { return id == noResource || find(id) != nullptr; }

LightweightString<wchar_t> resourceStrW(int id) {
  if (id == noResource) return LightweightString<wchar_t>(L"");
  if (const Entry* e = find(id)) return e->text;
  debugPrintf("resource %d is not in the string table", id);
  return toWide(formatText("[resource %d]", id));
}

LightweightString<char> resourceStr(int id) { return toUTF8(resourceStrW(id)); }

LightweightString<wchar_t> paddedResourceStrW(int id, const LightweightString<wchar_t>& before,
                                              const LightweightString<wchar_t>& after) {
  return before + resourceStrW(id) + after;
}

LightweightString<char> getIconPath(const LightweightString<char>& name) {
  if (name.startsWith("/")) return name;
  const char* folder = std::getenv("FXGRAPH_ICON_DIR");
  std::string path = folder && folder[0] ? folder : FXHOST_ICON_DIR;
  if (!path.empty() && path.back() != '/') path += '/';
  return LightweightString<char>(path + name.str());
}
