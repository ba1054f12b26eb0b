#pragma once
#include <string>

#include "host/FxHostApi.h"
#include "host/core/LightweightString.h"

// Integer configuration of the installation, apart from the user's
// preferences: "key = value" lines (the KeyFile format) in the file "config"
// of the user's settings folder, $XDG_CONFIG_HOME/fxgraph/config (or
// ~/.config/fxgraph/config). The file is read on first use and only read.
// It may be asked for while libraries load, before main() runs.

// The value of `name`, or `fallback` when it is absent or not an integer
// (the latter also noted in the host log).
FXHOST_API int config_int(const LightweightString<char>& name, int fallback);
// Reads the configuration from another file; an empty path goes back to the default.
FXHOST_API void setConfigFile(const std::string& path);
