#pragma once
#include <memory>
#include <vector>

#include "host/FxHostApi.h"
#include "host/render/RenderContext.h"

namespace Render {

// A still in two halves. Planning reads the graph (on the thread that owns
// the edit) and writes down what to make: one step per picture, inputs
// before the steps that use them, with every number and file name the
// pixels need. Running makes the pixels from the steps alone, so it may run
// on any thread while the edit changes.
//
// A node's picture depends on the node and the time, not on the path that
// reached it, so each picture is planned once per still, and one that
// another still has made (or will make) at the same size is taken from the
// shared node pictures instead of being planned again. Two things do depend
// on the path, and the plan keeps them exact: a cycle shows black where it
// closes (graphs with a cycle are planned path by path, unshared), and
// inputs deeper than maxInputDepth show black (a picture is reused only
// where its inputs stay within that depth).
class FXHOST_API StillPlan {
public:
  // Inputs are followed this many steps down from the position rendered;
  // deeper ones show black. Each step may hold a frame while its other
  // inputs render, so the depth bounds the memory a still takes.
  static constexpr int maxInputDepth = 64;

  explicit StillPlan(const RenderContext& context);
  // A plan that never ran gives up the pictures it promised.
  ~StillPlan();
  StillPlan(const StillPlan&) = delete;
  StillPlan& operator=(const StillPlan&) = delete;

  // The picture: black when there is nothing to show; null for an invalid
  // format. Once only.
  Ux::Ptr<UxImage> run();
  // Pictures the run will make (shared pictures taken are not counted).
  std::size_t pictures() const noexcept;

  struct Step;

private:
  class Planner;
  int width_ = 0, height_ = 0;
  bool valid_ = false;
  double aspect_ = 1;
  ARCSettings arc_;
  bool lut_ = false;
  ViewLUT viewLUT_;
  std::vector<Step> steps_;
  int top_ = -1; // the step whose picture is the still; -1 for black
};

} // namespace Render
