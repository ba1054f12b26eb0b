// Arrange: the layout beside Tidy in which no two boxes overlap
// (FXGraphArranger), applied to the view's nodes; with hand placing on, the
// positions it replaces come back with one undo.
#include "graph_view/Arrangement.h"

#include <unordered_map>

#include "graph_view/FXGraphView.h"
#include "layout/FXGraphArranger.h"

void Arrangement::apply(FXGraphView& view) {
  const auto& nodes = view.nodes_;
  const EditPtr& edit = view.edit_;
  if (nodes.empty() || !edit) return;
  // The graph as the arranger takes it: one entry per node, wires as indices.
  std::unordered_map<const FXGraphViewNode*, int> index;
  for (std::size_t i = 0; i < nodes.size(); ++i) index.emplace(nodes[i].get(), static_cast<int>(i));
  std::vector<FXGraphArranger::Node> graph(nodes.size());
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    const FXGraphViewNode& n = *nodes[i];
    const XY<double> p = n.getPosition();
    FXGraphArranger::Node& g = graph[i];
    g.left = n.getL() - p.x, g.bottom = n.getB() - p.y, g.right = n.getR() - p.x, g.top = n.getT() - p.y;
    const unsigned inputs = n.graphNode() ? n.graphNode()->getNumInputs() : 0;
    for (unsigned k = 0; k < inputs; ++k) {
      const FXGraphViewNode* up = n.getInputConnect(static_cast<int>(k));
      const auto it = up ? index.find(up) : index.end();
      g.inputs.push_back(it != index.end() ? it->second : -1);
    }
  }
  std::vector<int> roots;
  for (const IdStamp& id : view.getRoots())
    if (const auto it = view.nodeIndex_.find(id); it != view.nodeIndex_.end())
      roots.push_back(static_cast<int>(it->second));
  // The first root's box stays where it is.
  const bool leftToRight = view.getOrientation() == VidRouting::Orientations::LeftToRight;
  const FXGraphViewNode& first = *nodes[roots.empty() ? 0 : static_cast<std::size_t>(roots.front())];
  const XY<double> origin =
      leftToRight ? XY<double>(first.getR(), first.getT()) : XY<double>(first.getL(), first.getT());
  const std::vector<XY<double>> places =
      FXGraphArranger::arrange(graph, roots, leftToRight ? FXGraphArranger::leftToRight : FXGraphArranger::bottomToTop,
                               FXGraphView::layoutGap, origin);

  const bool byHand = view.manualPositioning();
  // One undo step, which keeps every position as it was (the edit's
  // position manager gives them to each step).
  edit->makeBackup();
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    nodes[i]->setPosition(places[i].x, places[i].y, true);
    if (byHand)
      if (NodeUIPosRec* stored = nodes[i]->storedRecord()) stored->setManualPos(places[i].x, places[i].y);
  }
  view.keepCanvasAroundGraph();
  view.updateScrollbars(true);
  view.redraw();
}
