#pragma once
// The layout by its definition, for checking the fast one against: the
// examiner meeting every path from the root (applyToTree with the examiner,
// as a walk driven by hand), and the tidier placing every level again after
// every spread.
#include <cstdint>
#include <string>
#include <vector>

#include "host/core/IdStamp.h"
#include "host/edit/EditGraphIterator.h"
#include "layout/GraphExaminer.h"
#include "node_ui/VidRouting.h"

namespace testsupport {

// Examines the tree under the iterator's node by meeting every path.
void examineEveryPath(GraphExaminer& examiner, EditGraphIterator& at);

// Where two examinations of one graph differ, one line each (the first few);
// empty when they agree on every record, the order of first meetings and
// every level.
std::string examinationDifferences(const GraphExaminer& a, const GraphExaminer& b);

// The bits of a tidy of the tree under the iterator's node, root at
// (0.25, -0.5) with the view's spacings: each listed node's draw position
// ((-7, -7) for one left out), then the tree's extents. Equal bits are the
// same doubles.
std::vector<uint64_t> tidiedBits(const EditGraphIterator& at, const std::vector<IdStamp>& nodes,
                                 VidRouting::Orientations::Orientation orientation, GraphExaminer::Walk walk);

} // namespace testsupport
