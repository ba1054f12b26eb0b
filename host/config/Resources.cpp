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

// Sorted by id. 10000 to 12999 are the texts the effect graph tool asks
// for; 13000 to 13099 are the host's own panels, graph item menus and
// pop-out explanations.
constexpr Entry table[] = {
    {10007, L"missing"},
    {10052, L"Video"},
    {10869, L"Auto position"},
    {11111, L"Redo"},
    {11129, L"Undo"},
    {11285, L"This can only be done on the record machine"},
    {11402, L"Tidy"},
    {11587, L"Effect graph"},
    {11779, L"Left to right"},
    {11780, L"Bottom to top"},
    // Graph item menu.
    {13000, L"Parameters..."},
    {13001, L"Remove transition"},
    {13002, L"Show effect"},
    {13003, L"Remove effect"},
    {13004, L"Cycle inputs"},
    {13005, L"Import render"},
    {13006, L"Discard render"},
    {13007, L"Pop out viewer"},
    {13008, L"Pop out log"},
    // Panels.
    {13020, L"OK"},
    {13021, L"Effect"},
    {13022, L"Template"},
    {13023, L"Inputs"},
    {13024, L"Parameters"},
    {13025, L"free"},
    {13026, L"No parameters"},
    {13027, L"Shot record"},
    {13028, L"Viewer"},
    {13029, L"This edit is read-only"},
    // Why a position cannot be popped out or imported.
    {13040, L"Black has no shot to pop out"},
    {13041, L"An imported image is not a shot"},
    {13042, L"A generated background is not a shot"},
    {13043, L"Nothing feeds this position"},
    {13044, L"There is no such channel"},
    {13045, L"The render could not be imported: "},
    {13050, L"Zoom in"},
    {13051, L"Zoom out"},
    {13052, L"Routing"},
    {13053, L"Routing..."},
    {13054, L"Navigator"},
    {13055, L"Arrange"},
    {13056, L"Preview"},
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
