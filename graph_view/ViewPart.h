#pragma once
#include "GrphToolApi.h"
#include "host/ui/Event.h"

class FXGraphView;

// A feature of the graph view that keeps its own state: the canvas hands it
// the few calls it hears (the mouse, a key, the frame, a rebuild) at fixed
// places in its own rules, and the part says whether it took them.
class GRPHTOOL_API ViewPart {
public:
  explicit ViewPart(FXGraphView& view) : view_(view) {}
  virtual ~ViewPart() = default;
  ViewPart(const ViewPart&) = delete;
  ViewPart& operator=(const ViewPart&) = delete;

  virtual bool mouse(const Event&) { return false; }
  virtual bool key(const Event&) { return false; }
  virtual void draw() {}
  // The node list was built again: what the part held of the old one goes.
  virtual void rebuilt() {}

protected:
  FXGraphView& view_;
};
