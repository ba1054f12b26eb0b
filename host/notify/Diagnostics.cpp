#include "host/notify/Diagnostics.h"

#include <atomic>

#include "host/notify/Log.h"

namespace Diagnostics {
namespace {
std::atomic<Handler> handler{nullptr};
} // namespace

void setUserMessageHandler(Handler h) { handler = h; }

void tellUser(const LightweightString<wchar_t>& text, const Palette& palette) {
  if (const Handler h = handler) {
    h(text, palette);
    return;
  }
  Log::printf("%s", toUTF8(text).c_str());
}

} // namespace Diagnostics
