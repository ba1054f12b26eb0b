#pragma once
#include <cstdint>

#include "graph_nodes/FXGraphViewNode.h"
#include "graph_view/TimerHold.h"
#include "host/core/Ptr.h"
#include "host/core/XY.h"

// Which gesture holds the view, with the data of each: one at a time, as
// imnodes keeps one click interaction. The view's mouse and key rules start
// and end them; a rebuild of the node list ends whichever is going on
// (holding a wire is let go before: the edit changed under it).
//
//   kind          | starts                              | ends
//   none          |                                     |
//   panning       | a left press on empty canvas        | the release, a right click
//   draggingNode  | a left press on a node's body       | the release
//   holdingWire   | a click on a pad                    | a click on a pad that takes it, a press on
//                 |                                     | empty canvas, a change of the edit
//   navigating    | a left press in the navigator       | the release, the navigator turned off
//   searching     | Tab, or a letter that is no command | Return, Escape, Tab
// One end of a wire: a node's pad, an input or an output.
struct WireEnd {
  Ux::Ptr<FXGraphViewNode> node;
  int pad = 0;
  bool atInput = false;
};

struct Interaction {
  enum Kind { none, panning, draggingNode, holdingWire, navigating, searching };
  Kind kind = none;

  // panning: the last mouse position, screen pixels.
  XY<int> panLast;
  // draggingNode: the node, and where on it the press took it (view
  // pixels from its centre).
  Ux::Ptr<FXGraphViewNode> moved;
  XY<int> grab;
  // draggingNode: the undo step of the move is made (at its first move).
  bool stepMade = false;
  // holdingWire: the pad the wire is fixed at (its anchor), where that pad
  // is (the wire's fixed end, view pixels) and where the mouse was when the
  // wire was taken.
  WireEnd held;
  XY<int> fixedEnd;
  XY<int> dragStart;
  // holdingWire: the edit's revision right after taking the wire off its
  // pad made its step; 0 for a new wire, which changed nothing. Escape
  // takes that step back while the edit is as the pick-up left it.
  uint64_t pickUpRevision = 0;
  // draggingNode, holdingWire: the timer runs (the wire follows the mouse,
  // the view scrolls at its edges) until the gesture ends.
  TimerHold hold;
};
