#include "app/StateDump.h"

#include "graph_tool/PanelStatus.h"
#include "graph_view/HoverHints.h"
#include "graph_view/Navigator.h"
#include "graph_view/SearchToAdd.h"
#include "graph_view/ViewNotice.h"
#include "graph_view/ViewStills.h"
#include "host/edit/EffectInstance.h"
#include "host/edit/FirstPathIndex.h"
#include "host/stream/StreamableTraits.h"
#include "host/ui/Checkbox.h"
#include "host/ui/DropDownMenuButton.h"
#include "host/ui/GlobManager.h"
#include "host/ui/ImageButton.h"
#include "host/ui/MenuGlob.h"
#include "host/ui/MessageBox.h"
#include "host/ui/PushButton.h"
#include "routing/MultiTrackRoutingView.h"

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

// The text form of the graph position that addresses the node from its root,
// as host menus put it in their commands.
std::string state(const FXGraphViewNode& n) {
  const NodeView* view = n.view();
  if (!view) return {};
  const EditGraphIterator at = view->getIteratorFor(n.getNodeID(), EditGraphIterator::atNode);
  return at.isValid() ? at.getState().asString().str() : std::string();
}

json nodeJson(const FXGraphView& view, const FXGraphViewNode& n) {
  json j;
  j["id"] = id(n.getNodeID());
  j["kind"] = printableTypeName(typeid(n)).str();
  j["title"] = toUTF8(n.getTitleStr()).str();
  j["root"] = n.rootIndex();
  j["channel"] = id(n.locator().channel);
  j["primary"] = n.isPrimary();
  j["active"] = n.getNodeActive();
  j["state"] = state(n);
  j["description"] = toUTF8(view.hints().describeNode(n)).str();
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

// A widget's box in screen pixels, or null.
json screenBox(const Glob* g) {
  if (!g) return nullptr;
  const XY<int> at = g->screenPos();
  return {at.x, at.y, at.x + g->width(), at.y + g->height()};
}

json panelJson(const FXGraphTool& panel) {
  const FXGraphView* view = panel.getView();
  json widgets = {{"ToggleTemplates", screenBox(panel.toggleTemplatesButton())},
                  {"TidyNodes", screenBox(panel.tidyButton())},
                  {"undoBtn", screenBox(panel.undoButton())},
                  {"redoBtn", screenBox(panel.redoButton())},
                  {"autoPos", screenBox(panel.autoPosCheckbox())},
                  {"orientation", screenBox(panel.orientationMenu())},
                  {"view", screenBox(view)},
                  {"templatesList", screenBox(panel.getTemplatesList())},
                  {"close", screenBox(panel.getTitleWidget(1))}};
  json templates = nullptr;
  if (DDVideoEffectsList* list = panel.getTemplatesList()) {
    templates = json::array();
    for (const EffectCategory& c : list->categories()) templates.push_back(toUTF8(c.name).str());
  }
  return {{"x", panel.getX()},
          {"y", panel.getY()},
          {"w", panel.width()},
          {"h", panel.height()},
          {"title", toUTF8(panel.getTitle()).str()},
          {"templatesVisible", panel.templatesVisible()},
          {"autoPosition", view && !view->manualPositioning()},
          {"tidyActive", panel.tidyButton() && panel.tidyButton()->isActive()},
          {"orientationEntry", panel.orientationMenu() ? panel.orientationMenu()->getSelectedIndex() : 0},
          {"docked", panel.isDocked()},
          {"unsaved", panel.status() && panel.status()->unsaved()},
          {"timecode", panel.status() ? toUTF8(panel.status()->text()).str().substr(0, 11) : std::string()},
          {"widgets", widgets},
          {"templates", templates}};
}

// The title of a panel of the host, as its header shows it.
std::string titleOf(Glob* g) {
  if (auto* p = dynamic_cast<StandardPanel*>(g)) return toUTF8(p->getTitle()).str();
  return {};
}

json routingJson(const MultiTrackRoutingView* routing) {
  if (!routing) return nullptr;
  json pages = json::array();
  for (std::size_t i = 0; i < routing->pageTitles().size(); ++i)
    pages.push_back({{"title", toUTF8(routing->pageTitles()[i]).str()}, {"id", toUTF8(routing->pageIds()[i]).str()}});
  json rows = json::array();
  if (const AudioRoutingView* audio = routing->audioView()) {
    const int n = audio->getNumNodes();
    for (int row = 0; row < audio->getSize(); ++row) {
      const Ux::Ptr<EffectInstance> effect = row < n ? audio->getNode(row) : nullptr;
      rows.push_back({{"text", toUTF8(audio->getFieldText({row, 0})).str()},
                      {"id", id(audio->getNodeID(row))},
                      {"active", effect ? json(effect->isActive()) : json(nullptr)},
                      {"movable", audio->canMove(row)}});
    }
  }
  const char* showing = routing->videoView() ? "video" : routing->audioView() ? "audio" : nullptr;
  return {{"pages", pages},
          {"tabs", routing->tabs() != nullptr},
          {"selected", routing->tabs() ? json(routing->tabs()->getCurrentTabIndex()) : json(nullptr)},
          {"showing", showing ? json(showing) : json(nullptr)},
          {"rows", rows}};
}

} // namespace

json dumpState(const Session& session) {
  // Every node is placed in the graph for its entry: one walk serves them all.
  FirstPathIndex paths;
  json doc;
  FXGraphTool* panel = session.panel();
  doc["panel"] = panel ? panelJson(*panel) : json(nullptr);
  json panels = json::array();
  for (const FXGraphTool* p : FXGraphTool::allPanels_.as<FXGraphTool>())
    panels.push_back({{"title", toUTF8(p->getTitle()).str()},
                      {"x", p->getX()},
                      {"y", p->getY()},
                      {"w", p->width()},
                      {"h", p->height()}});
  doc["panels"] = panels;
  if (session.lastMessage)
    doc["lastMessage"] = {{"text", session.lastMessage->text}, {"handled", session.lastMessage->handled}};
  else
    doc["lastMessage"] = nullptr;
  json messages = json::array();
  for (const auto& text : messagesShown()) messages.push_back(toUTF8(text).str());
  doc["messages"] = messages;
  json popups = json::array();
  for (Glob* root : GlobManager::rootsInOpeningOrder()) {
    if (dynamic_cast<FXGraphTool*>(root) || dynamic_cast<MenuGlob*>(root)) continue;
    popups.push_back({{"type", root->idstring().str()}, {"title", titleOf(root)}});
  }
  doc["popups"] = popups;
  doc["routing"] = routingJson(MultiTrackRoutingView::findFor(session.focusVob()));
  const Vob* vob = session.focusVob();
  const json undo = {{"canUndo", vob && vob->canUndo()}, {"canRedo", vob && vob->canRedo()}};
  const FXGraphView* view = session.view();
  if (!view) {
    // Every key is there with no panel open, in the order it has with one.
    doc["view"] = nullptr;
    doc["nodes"] = json::array();
    doc["wires"] = json::array();
    doc["drag"] = nullptr;
    doc["focus"] = nullptr;
    doc["highlighted"] = json::array();
    doc["navigator"] = nullptr;
    doc["notice"] = nullptr;
    doc["search"] = nullptr;
    doc["undo"] = undo;
    return doc;
  }
  doc["view"] = {{"zoom", view->getZoom()},
                 {"scale", view->getScale()},
                 {"centre", point(view->getViewCentre())},
                 {"orientation", VidRouting::Orientations::asString(view->getOrientation()).str()},
                 {"canvas", box(view->canvasRect())},
                 {"window", box(view->getWindowPos())},
                 {"manualPositioning", view->manualPositioning()},
                 // The view's bottom-left corner on the screen (the picture's pixels).
                 {"origin", point(view->screenPos())}};
  Glob::PixelBox preview;
  doc["view"]["preview"] = view->stills().previewPlace(preview) ? box(preview) : json(nullptr);
  json nodes = json::array();
  json wires = json::array();
  for (const auto& n : view->nodes()) {
    nodes.push_back(nodeJson(*view, *n));
    for (const auto& [input, entry] : n->inputTable())
      if (entry.node)
        wires.push_back({{"from", id(entry.node->getNodeID())},
                         {"output", entry.index},
                         {"to", id(n->getNodeID())},
                         {"input", input}});
  }
  doc["nodes"] = nodes;
  doc["wires"] = wires;
  if (view->dragAnchor()) {
    json accepts = json::array();
    for (const FXGraphView::PadRef& pad : view->hints().acceptingPads(HoverHints::Among::all))
      accepts.push_back(pad.atInput ? json{{"node", id(pad.node)}, {"input", pad.index}, {"atInput", true}}
                                    : json{{"node", id(pad.node)}, {"output", pad.index}, {"atInput", false}});
    doc["drag"] = {{"anchor", id(view->dragAnchor()->getNodeID())},
                   {"pad", view->dragAnchorPad()},
                   {"atInput", view->dragAnchoredAtInput()},
                   {"accepts", accepts}};
  } else {
    doc["drag"] = nullptr;
  }
  const IdStamp& focus = view->keyboardFocus();
  doc["focus"] = focus.valid() && view->findViewRecForNode(focus) ? json(id(focus)) : json(nullptr);
  json highlighted = json::array();
  for (const IdStamp& h : view->hints().highlighted()) highlighted.push_back(id(h));
  doc["highlighted"] = highlighted;
  // Why the last thing asked for was not done, while the view says so.
  doc["notice"] = view->notice().text().empty() ? json(nullptr) : json(toUTF8(view->notice().text()).str());
  Glob::PixelBox navigator, framed;
  doc["navigator"] =
      view->navigator().geometry(navigator, framed)
          ? json{{"pixels", box(navigator)}, {"window", box(framed)}, {"nodes", view->navigator().nodeBoxes()}}
          : json(nullptr);
  if (const SearchToAdd::Search* search = view->searchField().search()) {
    json results = json::array();
    for (const EffectTemplateSummary& t : search->results) results.push_back(toUTF8(t.name).str());
    doc["search"] = {{"query", toUTF8(LightweightString<wchar_t>(search->query)).str()},
                     {"results", results},
                     {"chosen", search->chosen < 0 ? json(nullptr) : json(search->chosen)}};
  } else {
    doc["search"] = nullptr;
  }
  doc["undo"] = undo;
  return doc;
}

std::string dumpStateText(const Session& session) {
  return dumpState(session).dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

} // namespace fxgraph
