#pragma once
#include <string>

namespace fxgraph {

// Shows the host screen in a window and feeds it mouse, key, wheel and timer
// events until the window is closed or the screen has no panels left.
// Returns false (with the reason) when no window can be opened, e.g. without
// a display; the caller then runs headless.
bool runWindowLoop(std::string& why);

} // namespace fxgraph
