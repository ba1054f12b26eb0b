#include "app/StateDump.h"

#include "host/stream/StreamableTraits.h"

namespace fxgraph {
namespace {

using json = nlohmann::ordered_json;

json point(const XY<double>& p) { return {p.x, p.y}; }
json point(const XY<int>& p) { return {p.x, p.y}; }
template <class T, class Traits>
json box(const Ux::Box<T, Traits>& b) {
  return {b.x0, b.y0, b.x1, b.y1};
}
std::string id(const IdStamp& i) { return i.asString().str(); }

json nodeJson(const FXGraphViewNode& n) {
  json j;
  j["id"] = id(n.getNodeID());
  j["kind"] = printableTypeName(typeid(n)).str();
  j["title"] = toUTF8(n.getTitleStr()).str();
  j["root"] = n.rootIndex();
  j["channel"] = id(n.locator().channel);
  j["primary"] = n.isPrimary();
  j["active"] = n.getNodeActive();
  j["pos"] = point(n.getPosition());
  j["bounds"] = {n.getL(), n.getB(), n.getR(), n.getT()};
  j["pixels"] = box(n.calcPixelExtents());
  json inputs = json::array();
  const unsigned count = n.graphNode() ? n.graphNode()->getNumInputs() : 0;
  for (unsigned i = 0; i < count; ++i) {
    json in;
    in["index"] = i;
    in["pos"] = point(n.getInputPos(i));
    const auto it = n.inputTable().find(static_cast<int>(i));
    if (it != n.inputTable().end() && it->second.node)
      in["from"] = {{"node", id(it->second.node->getNodeID())}, {"output", it->second.index}};
    else
      in["from"] = nullptr;
    inputs.push_back(in);
  }
  j["inputs"] = inputs;
  json outputs = json::array();
  for (const auto& [index, entry] : n.outputTable()) {
    json out;
    out["index"] = index;
    out["pos"] = point(n.getOutputPos(static_cast<unsigned char>(index)));
    if (entry.node)
      out["to"] = {{"node", id(entry.node->getNodeID())}, {"input", entry.index}};
    else
      out["to"] = nullptr;
    outputs.push_back(out);
  }
  // The spare slot, for a new wire.
  const int spare = static_cast<int>(n.outputTable().size());
  outputs.push_back(
      {{"index", spare}, {"pos", point(n.getOutputPos(static_cast<unsigned char>(spare)))}, {"to", nullptr}});
  j["outputs"] = outputs;
  // Where the title bar and the thumbnail are drawn, and in what colour.
  const Colour title = n.getTitleBarColour();
  j["titleBar"] = {{"pixels", box(n.getTitleBarRect())}, {"colour", {title.r, title.g, title.b}}};
  Colour thumb;
  if (n.hasThumbnail())
    j["thumbnail"] = {{"pixels", box(n.thumbBox())},
                      {"colour", n.thumbnailColour(thumb) ? json{thumb.r, thumb.g, thumb.b} : json(nullptr)}};
  else
    j["thumbnail"] = nullptr;
  j["inputsEditable"] = n.inputsEditable();
  j["outputEditable"] = n.outputEditable();
  return j;
}

} // namespace

json dumpState(const Session& session) {
  json doc;
  const GraphViewPanel* panel = session.panel();
  const FXGraphView* view = session.view();
  if (!panel || !view) {
    doc["panel"] = nullptr;
    return doc;
  }
  doc["panel"] = {{"x", panel->getX()},
                  {"y", panel->getY()},
                  {"w", panel->width()},
                  {"h", panel->height()},
                  {"title", toUTF8(panel->getTitle()).str()},
                  {"templatesVisible", false},
                  {"autoPosition", !view->manualPositioning()}};
  doc["view"] = {{"zoom", view->getZoom()},
                 {"scale", view->getScale()},
                 {"centre", point(view->getViewCentre())},
                 {"orientation", VidRouting::Orientations::asString(view->getOrientation()).str()},
                 {"canvas", box(view->canvasRect())},
                 {"window", box(view->getWindowPos())},
                 {"manualPositioning", view->manualPositioning()},
                 // The view's bottom-left corner on the screen (the picture's pixels).
                 {"origin", point(view->screenPos())}};
  json nodes = json::array();
  json wires = json::array();
  for (const auto& n : view->nodes()) {
    nodes.push_back(nodeJson(*n));
    for (const auto& [input, entry] : n->inputTable())
      if (entry.node)
        wires.push_back({{"from", id(entry.node->getNodeID())},
                         {"output", entry.index},
                         {"to", id(n->getNodeID())},
                         {"input", input}});
  }
  doc["nodes"] = nodes;
  doc["wires"] = wires;
  if (view->dragAnchor())
    doc["drag"] = {{"anchor", id(view->dragAnchor()->getNodeID())},
                   {"pad", view->dragAnchorPad()},
                   {"atInput", view->dragAnchoredAtInput()}};
  else
    doc["drag"] = nullptr;
  const Vob* vob = session.vob();
  doc["undo"] = {{"canUndo", vob && vob->canUndo()}, {"canRedo", vob && vob->canRedo()}};
  return doc;
}

} // namespace fxgraph
