#pragma once
#include <iosfwd>
#include <string>
#include <vector>

namespace fxgraph {

// `fxgraph render EDIT [--size WxH] [--time T] [--script FILE] [--png FILE]
// [--svg FILE] [--dump FILE] [--prefs FILE]`: the tool on an edit, headless,
// with the host clock driven by hand. Returns the exit status.
int runRenderCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

} // namespace fxgraph
