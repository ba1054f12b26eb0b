#include "host/ui/TextMetrics.h"

#include <memory>
#include <mutex>

#include "host/ui/GlobManager.h"

XY<int> measureText(const LightweightString<wchar_t>& text, const LightweightString<char>& font, int pointSize) {
  if (GlobManager::initialised()) return GlobManager::surface().textSize(text, font, pointSize);
  // Without a screen, a one-pixel surface of its own lays the text out.
  static std::mutex mutex;
  static std::unique_ptr<ScreenSurface> scratch;
  std::lock_guard lock(mutex);
  if (!scratch) scratch = std::make_unique<ScreenSurface>(1, 1);
  return scratch->textSize(text, font, pointSize);
}
