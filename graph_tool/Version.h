#pragma once
#include "GrphToolApi.h"

// The library's version text, read by the host after loading the library.
extern "C" GRPHTOOL_API const char grphtoolDllVersionStr[];
