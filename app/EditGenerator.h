#pragma once
#include <cstdint>
#include <string>

#include "host/edit/Edit.h"

namespace fxgraph {

// Makes a large edit for benchmarks: video channels whose graphs are random
// trees of effects (one to three inputs) over materials and mattes, about
// `nodes` graph nodes in all, the same for the same seed.
EditPtr generateEdit(unsigned nodes, uint64_t seed);

// `fxgraph gen-edit --nodes N --seed S OUT`. Returns the exit status.
int runGenEditCommand(int argc, const char* const* argv, std::string& message);

} // namespace fxgraph
