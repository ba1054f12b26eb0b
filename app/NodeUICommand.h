#pragma once
#include <iosfwd>
#include <string>
#include <vector>

namespace fxgraph {

// `fxgraph nodeui pack|dump|inspect`: position records between JSON and the
// objects file of an edit. Returns the process exit status; output goes to
// `out`, one-line errors to `err`.
int runNodeUICommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

} // namespace fxgraph
