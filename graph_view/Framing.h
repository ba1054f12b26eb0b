#pragma once
#include "GrphToolApi.h"
#include "host/core/IdStamp.h"
#include "host/core/XY.h"

class FXGraphView;

// Where the graph sits in the view when the view is asked to show it: the
// whole graph framed in the part of the view that nothing covers (zoomed in
// or out, up to the view's zoom limits), and one node kept at its place on
// the screen while a layout moves everything (Tidy, Arrange).
class GRPHTOOL_API Framing {
public:
  // The node that stays put and where on the screen it was (view pixels).
  struct Anchor {
    IdStamp node;
    XY<double> pixel;
  };

  // Fits the whole graph into the view clear of the preview's band: both
  // ways, in or out; or keeps the zoom. Either way the graph's middle goes
  // to the view's middle.
  enum class Zoom { fit, kept };
  static void frame(FXGraphView& view, Zoom zoom = Zoom::fit);
  // The node with keyboard focus, else the primary node, else none.
  static Anchor hold(const FXGraphView& view);
  // Moves the view so that the anchor's node is where it was.
  static void restore(FXGraphView& view, const Anchor& anchor);
};
