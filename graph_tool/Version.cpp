#include "graph_tool/Version.h"

extern "C" const char grphtoolDllVersionStr[] = "15.0.1.132926";
