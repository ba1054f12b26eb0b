#pragma once
#include "graph_view/ViewPart.h"
#include "host/core/Box.h"

// The whole graph in miniature in the view's bottom-right corner, with the
// visible window framed; a click or drag in it moves the view there. Key
// "n" and the context menu turn it on and off (a preference, on at first);
// it hides while the whole graph fits the view.
class GRPHTOOL_API Navigator : public ViewPart {
public:
  using PixelBox = Ux::Box<int, Ux::BottomUpTraits>;
  static constexpr const char* preference = "Graph View : Navigator";

  explicit Navigator(FXGraphView& view);

  void setOn(bool on);
  bool on() const noexcept { return on_; }
  // Where it is drawn and where the visible window lies in it (view
  // pixels); false while hidden.
  bool geometry(PixelBox& box, PixelBox& window) const;
  // How many node boxes it drew last (every node of the view); 0 while hidden.
  int nodeBoxes() const;
  // Whether the point is on it (view pixels).
  bool contains(XY<int> point) const;
  // Moves the view so that the point of the miniature is at its centre.
  void navigateTo(XY<int> pixel);

  void draw() override;

private:
  // The mapping between its pixels and graph units.
  struct Map {
    PixelBox box;
    Ux::Box<double, Ux::BottomUpTraits> graph;
    double scale = 1; // pixels per graph unit
  };
  bool map(Map& out) const;

  bool on_ = true;
  int drawnBoxes_ = 0;
};
