#pragma once
#include "graph_tool/GrphToolApi.h"

// The library's version text, read by the host after loading the library.
extern "C" GRPHTOOL_API const char grphtoolDllVersionStr[];
