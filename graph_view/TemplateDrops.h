#pragma once
#include <vector>

#include "graph_view/FXGraphView.h"
#include "graph_view/ViewPart.h"
#include "host/render/EffectTemplateSummary.h"

class DragDropItem;

// Effect templates laid into the graph: dropped from the templates list on
// a node (the new effect takes the node's place downstream and the node
// feeds its first input) or on a wire (the new effect goes in between: the
// wire's source feeds its first input and it feeds the input the wire went
// to, refused where the input is locked); search to add lays its choice
// the same way. Each is one undo step.
class GRPHTOOL_API TemplateDrops : public ViewPart {
public:
  // What a template would be laid into: a node, else a wire.
  struct Target {
    IdStamp node;
    FXGraphView::WireRef wire;
  };

  explicit TemplateDrops(FXGraphView& view) : ViewPart(view) {}

  // A dragged item over the view (null: it left): what it would go into
  // lights up.
  void hover(const DragDropItem* item, XY<int> position);
  const Target& hovered() const noexcept { return hovered_; }
  Target targetAt(XY<int> position) const;
  // Draws the target lit: the wire thick and bright, the node ringed.
  void light(const Target& target);
  void draw() override;

  // Whether a dragged item would be taken at a view pixel.
  bool canAccept(const DragDropItem& item, XY<int> position) const;
  bool accept(const DragDropItem& item, XY<int> position);
  bool insertAbove(const EffectTemplateSummary& t, const IdStamp& node);
  // False where the editor refuses.
  bool insertOnWire(const EffectTemplateSummary& t, const FXGraphView::WireRef& wire);

  // The wire drawn under a view pixel (within a few pixels), if any.
  bool wireAt(XY<int> p, FXGraphView::WireRef& out) const;
  // A point of the wire into the input that no node covers, for a drop;
  // false when the wire is not there or wholly hidden.
  bool clearPointOnWire(const IdStamp& to, int input, XY<int>& out) const;

private:
  // Points along a wire, every few pixels.
  std::vector<XY<int>> wirePoints(const FXGraphViewNode& to, int input) const;

  Target hovered_;
};
