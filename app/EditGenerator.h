#pragma once
#include <cstdint>
#include <string>

#include "host/edit/Edit.h"

namespace fxgraph {

// Makes a large edit for benchmarks: video channels whose graphs are random
// trees of effects (one to three inputs) over materials and mattes, about
// `nodes` graph nodes in all, at most `treeSize` to a channel's tree; the
// same for the same seed.
EditPtr generateEdit(unsigned nodes, uint64_t seed, unsigned treeSize = 40);

// One output node over a tree grown as compositing trees grow, with about
// one shared input a hundred nodes (acyclic); the same for the same seed.
EditPtr generateDeepEdit(unsigned nodes, uint64_t seed);

// `fxgraph gen-edit --nodes N --seed S [--tree-size K] [--shape deep|forest] OUT`. Returns the exit status.
int runGenEditCommand(int argc, const char* const* argv, std::string& message);

} // namespace fxgraph
