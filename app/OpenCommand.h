#pragma once
#include <iosfwd>
#include <string>

namespace fxgraph {

// The examples folder the program opens by default.
std::string examplesFolder();

// `fxgraph [EDIT]`: opens the edit in a window; without a display, renders
// the screen headless into a PNG and says where it went. Returns the exit status.
int runOpenCommand(const std::string& editPath, std::ostream& out, std::ostream& err);

} // namespace fxgraph
