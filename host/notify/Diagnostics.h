#pragma once
#include "host/FxHostApi.h"
#include "host/core/LightweightString.h"
#include "host/core/Palette.h"

// What host model code has to tell the user (a refused change, an import
// that failed) goes to one handler that the host's user interface installs,
// which shows it; with none installed it goes to the log. Model code never
// opens a window of its own.
namespace Diagnostics {

using Handler = void (*)(const LightweightString<wchar_t>& text, const Palette& palette);

// The handler for what follows; null goes back to the log.
FXHOST_API void setUserMessageHandler(Handler handler);
// Tells the user, in the colours of the panel the message is about.
FXHOST_API void tellUser(const LightweightString<wchar_t>& text, const Palette& palette = Palette());

} // namespace Diagnostics
