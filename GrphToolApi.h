#pragma once
// Symbols of the effect graph tool library are hidden unless marked; this mark
// exports them to the host that loads the library.
#define GRPHTOOL_API __attribute__((visibility("default")))
