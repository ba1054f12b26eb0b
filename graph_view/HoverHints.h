#pragma once
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "graph_view/FXGraphView.h"
#include "graph_view/TimerHold.h"
#include "graph_view/ViewPart.h"

// What the mouse rests on, and the hints drawn for it: the wires that feed
// the hovered node, all the way up, are lit; a node the mouse rests on for
// tooltipMs shows its description beside the mouse until the mouse moves
// off it or is pressed; while a wire dangles, the pads that would take it
// are ringed in green and the others dimmed. Every node has a description
// in words.
class GRPHTOOL_API HoverHints : public ViewPart {
public:
  static constexpr uint64_t tooltipMs = 600;

  explicit HoverHints(FXGraphView& view) : ViewPart(view) {}

  // Follows the mouse; never takes an event from the view.
  bool mouse(const Event& e) override;
  // Shows the tooltip once it is due.
  void tick();
  // The lit wires and the pads that take a dangling wire.
  void draw() override;
  void drawTooltip();
  void rebuilt() override;

  // The node under the mouse and every node upstream of it.
  const std::vector<IdStamp>& highlighted() const noexcept { return highlighted_; }
  // Up, and for the view as it is: a view moved since has lost it.
  bool tooltipShowing() const noexcept;
  // While a wire dangles: every pad that would take it, as the editor
  // judges (no cycle, no locked input): free inputs for a wire from an
  // output, spare output slots for a wire from an input; of the nodes
  // drawn last, or of every node.
  enum class Among { shown, all };
  std::vector<FXGraphView::PadRef> acceptingPads(Among among = Among::shown) const;
  // Says what a node is in words: its kind, title, whether it is on, what
  // feeds each input and what its output feeds.
  LightweightString<wchar_t> describeNode(const FXGraphViewNode& node) const;

  // Where the tooltip of those lines goes (view pixels).
  FXGraphView::PixelBox tooltipBox(const std::vector<std::wstring>& lines) const;

private:
  static constexpr int tooltipPoints = 8, tooltipLine = 15;
  void update(XY<int> position);
  void dropTooltip();

  IdStamp hovered_;
  std::vector<IdStamp> highlighted_;
  uint64_t hoverSince_ = 0;
  // Where the view was when the tip came up.
  std::pair<XY<double>, double> tipView_;
  TimerHold tipHold_; // the timer runs until the tooltip is due
  bool tipShown_ = false;
};
