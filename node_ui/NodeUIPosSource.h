#pragma once
#include "GrphToolApi.h"
#include "host/core/IdStamp.h"
#include "node_ui/NodeUIPosRec.h"
#include "node_ui/VidRouting.h"

// Where the layout finds a node's position record and the orientation in
// force. The graph view is one.
class GRPHTOOL_API NodeUIPosSource {
public:
  virtual ~NodeUIPosSource();
  // The node's position record, or null.
  virtual NodeUIPosRec* getPosRecForNode(const IdStamp& node) = 0;
  virtual VidRouting::Orientations::Orientation getOrientation() const = 0;
};
