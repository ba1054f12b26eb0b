#pragma once
// Symbols of the host platform are hidden unless marked; this mark exports them.
#define FXHOST_API __attribute__((visibility("default")))
