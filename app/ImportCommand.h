#pragma once
#include <iosfwd>
#include <string>
#include <vector>

namespace fxgraph {

// `fxgraph import TIMELINE.otio OUT.json`: writes the timeline as an edit
// file (with its objects file), its media found from wherever OUT lies.
// Returns the exit status.
int runImportCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

} // namespace fxgraph
