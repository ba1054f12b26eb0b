// Arrange: the layout beside Tidy in which no two boxes overlap
// (FXGraphArranger), applied to the view's nodes; with hand placing on, the
// positions it replaces come back with one undo.
#include "graph_view/Arrangement.h"

#include <unordered_map>

#include "graph_view/FXGraphView.h"
#include "layout/FXGraphArranger.h"

namespace {

// The draw and hand-placed positions of some records, to put back.
class PositionsUndo : public UndoExtra {
public:
  PositionsUndo(Ux::Ptr<NodeUIPosManager> manager, const std::vector<IdStamp>& ids) : manager_(std::move(manager)) {
    for (const IdStamp& id : ids)
      if (const NodeUIPosRec* rec = manager_->openPosRec(id))
        saved_.push_back({id, rec->getDrawPosition(), rec->getManualPos(), rec->isManualPosSet()});
  }
  std::shared_ptr<const UndoExtra> capture() const override {
    std::vector<IdStamp> ids;
    for (const Saved& s : saved_) ids.push_back(s.id);
    return std::make_shared<PositionsUndo>(manager_, ids);
  }
  void restore() const override {
    for (const Saved& s : saved_)
      if (NodeUIPosRec* rec = manager_->openPosRec(s.id)) {
        rec->restoreManualState(s.manual.x, s.manual.y, s.manualSet);
        rec->setDrawPosition(s.draw, true);
      }
  }

private:
  struct Saved {
    IdStamp id;
    XY<double> draw, manual;
    bool manualSet;
  };
  Ux::Ptr<NodeUIPosManager> manager_;
  std::vector<Saved> saved_;
};

} // namespace

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
    if (const auto it = view.nodeIndex_.find(id); it != view.nodeIndex_.end()) roots.push_back(static_cast<int>(it->second));
  // The first root's box stays where it is.
  const bool leftToRight = view.getOrientation() == VidRouting::Orientations::LeftToRight;
  const FXGraphViewNode& first = *nodes[roots.empty() ? 0 : static_cast<std::size_t>(roots.front())];
  const XY<double> origin =
      leftToRight ? XY<double>(first.getR(), first.getT()) : XY<double>(first.getL(), first.getT());
  const std::vector<XY<double>> places = FXGraphArranger::arrange(
      graph, roots, leftToRight ? FXGraphArranger::leftToRight : FXGraphArranger::bottomToTop, FXGraphView::layoutGap, origin);

  const bool byHand = view.manualPositioning();
  if (byHand) {
    if (Ux::Ptr<NodeUIPosManager> manager = view.positionManager()) {
      std::vector<IdStamp> ids;
      for (const auto& n : nodes) ids.push_back(n->getNodeID());
      edit->makeBackup(std::make_shared<PositionsUndo>(manager, ids));
    }
  }
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    nodes[i]->setPosition(places[i].x, places[i].y, true);
    if (byHand)
      if (NodeUIPosRec* stored = nodes[i]->storedRecord()) stored->setManualPos(places[i].x, places[i].y);
  }
  view.keepCanvasAroundGraph();
  view.updateScrollbars(true);
  view.redraw();
}
