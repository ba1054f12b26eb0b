#pragma once
// Arrange: a layout beside Tidy with the same direction and spacing rules,
// in which no two node boxes overlap. Each node sits one level beyond its
// deepest consumer (a shared input goes beside the deepest of those it
// feeds); levels are a box and a gap apart along the flow, and within a
// level boxes are a gap apart across it, each family centred on its
// children where there is room. Time and memory are linear in the nodes
// and wires.
#include <vector>

#include "GrphToolApi.h"
#include "host/core/XY.h"

class GRPHTOOL_API FXGraphArranger {
public:
  struct Node {
    std::vector<int> inputs; // indices of the nodes feeding it, in input order (-1: none)
    // The box round the node's position: its left, bottom, right and top
    // edges less the position, in graph units.
    double left = 0, bottom = 0, right = 0, top = 0;
  };
  // Inputs lie towards smaller x (left to right) or smaller y (bottom to top).
  enum Direction { leftToRight, bottomToTop };

  // Positions for every node. Roots (nodes that feed none) are laid out in
  // the order given, the first at `origin` (its box's right edge and top
  // edge for left to right; top edge and left edge for bottom to top);
  // nodes no root reaches (in a cycle) count as roots after them.
  static std::vector<XY<double>> arrange(const std::vector<Node>& nodes, const std::vector<int>& roots,
                                         Direction direction, double gap, XY<double> origin);
};
