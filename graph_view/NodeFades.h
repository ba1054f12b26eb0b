#pragma once
#include <vector>

#include "graph_view/TimerHold.h"
#include "graph_view/ViewPart.h"
#include "host/core/IdStamp.h"

// Nodes that appear in a rebuild glow, a ring round each, and fade over
// `seconds` on the view's timer.
class GRPHTOOL_API NodeFades : public ViewPart {
public:
  static constexpr double seconds = 0.4;

  explicit NodeFades(FXGraphView& view) : ViewPart(view) {}

  void start(std::vector<IdStamp> ids);
  // Moves the fade on by some seconds; false when nothing fades.
  bool advance(double by);
  void draw() override;

private:
  std::vector<IdStamp> fading_;
  double progress_ = 1; // 0 as they appear, 1 gone
  TimerHold hold_;      // the timer runs while they fade
};
