#pragma once
#include <vector>

#include "graph_view/ViewPart.h"
#include "host/core/IdStamp.h"

// Keyboard focus on one node (a click on a node gives it) and the keys that
// act on it: the arrows walk the graph (towards its inputs, towards its
// output, between siblings: which arrow is which follows the orientation),
// Return opens the effect's parameters, space switches it on or off as a
// click does, Delete removes it as the "remove_utr" command does, "p" picks
// a wire up or drops it at the node's pads as pad clicks do, Escape lets go
// of the focus. The focus is drawn as a ring round the node.
//
// Walking:
//   step             | left to right | bottom to top | goes to
//   towards inputs   | Left          | Down          | the first connected input
//   towards output   | Right         | Up            | the consumer it was reached from, else the first
//   between siblings | Up / Down     | Right / Left  | the next input of the same consumer (roots for a
//                    |               |               | root), in the direction of the arrow on screen
class GRPHTOOL_API KeyboardFocus : public ViewPart {
public:
  explicit KeyboardFocus(FXGraphView& view) : ViewPart(view) {}

  // The node with focus, or none.
  const IdStamp& focus() const noexcept { return focus_; }
  void set(const IdStamp& id);

  // The keys above, while a node has focus.
  bool key(const Event& e) override;
  void draw() override;

private:
  void walk(int key);
  bool pickOrDrop();

  IdStamp focus_;
  // The consumers the walk came down through: a node with shared outputs
  // goes back the way it came.
  std::vector<IdStamp> path_;
};
