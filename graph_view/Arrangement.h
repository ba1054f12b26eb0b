#pragma once
#include "GrphToolApi.h"

class FXGraphView;

// Arrange: lays the graph out as Tidy does (direction, spacing) with no two
// boxes overlapping and each shared input beside its deepest consumer
// (FXGraphArranger, plain data in and positions out); key "l" and the
// context menu. With hand placing on, the positions it replaces come back
// with one undo step.
class GRPHTOOL_API Arrangement {
public:
  static void apply(FXGraphView& view);
};
