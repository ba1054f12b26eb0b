// What the mouse rests on, and the hints drawn for it: lit wires, the
// tooltip with a node's description, and the pads that take a dangling wire.
#include "graph_view/HoverHints.h"

#include <algorithm>
#include <string>
#include <unordered_set>

#include "host/edit/EffectInstance.h"
#include "host/edit/FXEditor.h"
#include "host/edit/GraphNodeKinds.h"
#include "host/ui/HostClock.h"
#include "host/ui/TextMetrics.h"

namespace {

std::wstring quoted(const LightweightString<wchar_t>& text) { return L"\u201c" + std::wstring(text.str()) + L"\u201d"; }

std::wstring kindOf(const FXGraphNodeBase* node) {
  switch (nodeKindOf(node)) {
  case GraphNodeKind::material:
    return L"Material";
  case GraphNodeKind::image:
    return L"Image";
  case GraphNodeKind::alias:
    return L"Aliased input";
  case GraphNodeKind::background:
    return L"Background";
  case GraphNodeKind::effect:
  case GraphNodeKind::none:
    break;
  }
  return L"Effect";
}
} // namespace

bool HoverHints::mouse(const Event& e) {
  if (e.type == Event::mouseDown) dropTooltip();
  // Hover follows the mouse, but not while it pans, moves a node or the navigator.
  const Interaction::Kind gesture = view_.interaction().kind;
  if (e.type == Event::mouseMove && gesture != Interaction::panning && gesture != Interaction::draggingNode &&
      gesture != Interaction::navigating)
    update(e.position);
  return false;
}

void HoverHints::tick() {
  if (tipHold_ && msecsNow() - hoverSince_ >= tooltipMs) {
    tipHold_.release();
    tipShown_ = true;
    // The tip belongs to the view as it is now: moved, it goes.
    tipView_ = {view_.getViewCentre(), view_.getScale()};
    view_.redraw();
  }
}

void HoverHints::rebuilt() {
  // The wires may have changed under the mouse: lit again when it moves.
  hovered_ = IdStamp();
  highlighted_.clear();
  tipHold_.release();
  tipShown_ = false;
}

std::vector<FXGraphView::PadRef> HoverHints::acceptingPads(Among among) const {
  std::vector<FXGraphView::PadRef> pads;
  const Ux::Ptr<FXGraphViewNode>& anchor = view_.dragAnchor();
  const EditPtr& edit = view_.getEdit();
  if (!anchor || !anchor->graphNode() || !edit) return pads;
  FXEditor editor(edit, 0, view_.getPrimaryChanIx());
  if (view_.dragAnchoredAtInput()) {
    const EditGraphIterator destination = view_.getIteratorFor(anchor->graphNode(), EditGraphIterator::atNode);
    for (const auto& n : view_.nodes()) {
      if (!n->graphNode() || (among == Among::shown && !n->isVisibleFlag())) continue;
      if (editor.canConnectNodes(destination, view_.dragAnchorPad(),
                                 view_.getIteratorFor(n->graphNode(), EditGraphIterator::atNode)))
        pads.push_back({n->getNodeID(), static_cast<int>(n->outputTable().size()), false});
    }
  } else {
    const EditGraphIterator source = view_.getIteratorFor(anchor->graphNode(), EditGraphIterator::atNode);
    for (const auto& n : view_.nodes()) {
      if (!n->graphNode() || (among == Among::shown && !n->isVisibleFlag())) continue;
      const unsigned count = n->graphNode()->getNumInputs();
      EditGraphIterator destination;
      for (unsigned i = 0; i < count; ++i) {
        if (n->getInputConnect(static_cast<int>(i))) continue;
        if (!destination.isValid()) destination = view_.getIteratorFor(n->graphNode(), EditGraphIterator::atNode);
        if (editor.canConnectNodes(destination, static_cast<int>(i), source))
          pads.push_back({n->getNodeID(), static_cast<int>(i), true});
      }
    }
  }
  return pads;
}

void HoverHints::update(XY<int> position) {
  IdStamp over;
  for (const auto& n : view_.nodes()) {
    int index = 0;
    if (n->isVisibleFlag() && n->translateMouseEvent(position.x, position.y, index) != FXGraphViewNode::eNothing) {
      over = n->getNodeID();
      break;
    }
  }
  if (over == hovered_) return;
  hovered_ = over;
  highlighted_.clear();
  dropTooltip();
  if (over.valid()) {
    hoverSince_ = msecsNow();
    tipHold_ = TimerHold(view_);
  }
  if (Ux::Ptr<FXGraphViewNode> start = over.valid() ? view_.findViewRecForNode(over) : Ux::Ptr<FXGraphViewNode>()) {
    // Upstream, each node once: graphs share inputs.
    std::vector<FXGraphViewNode*> todo{start.get()};
    std::unordered_set<const FXGraphViewNode*> met{start.get()};
    while (!todo.empty()) {
      FXGraphViewNode* n = todo.back();
      todo.pop_back();
      highlighted_.push_back(n->getNodeID());
      for (const auto& [input, entry] : n->inputTable())
        if (entry.node && met.insert(entry.node).second) todo.push_back(entry.node);
    }
    if (highlighted_.size() == 1) highlighted_.clear(); // nothing feeds it
  }
  view_.redraw();
}

void HoverHints::dropTooltip() {
  tipHold_.release();
  if (tipShown_) view_.redraw();
  tipShown_ = false;
}

void HoverHints::drawTooltip() {
  if (!tipShown_) return;
  Ux::Ptr<FXGraphViewNode> n = hovered_.valid() ? view_.findViewRecForNode(hovered_) : Ux::Ptr<FXGraphViewNode>();
  if (!n) return;
  // One line per part of the description, beside the mouse and inside the view.
  std::vector<std::wstring> lines;
  const std::wstring text = describeNode(*n).str();
  for (std::size_t from = 0; from <= text.size();) {
    const std::size_t end = text.find(L"; ", from);
    lines.push_back(text.substr(from, end == std::wstring::npos ? std::wstring::npos : end - from));
    if (end == std::wstring::npos) break;
    from = end + 2;
  }
  if (!tooltipShowing()) {
    tipShown_ = false;
    return;
  }
  const FXGraphView::PixelBox box = tooltipBox(lines);
  if (!view_.drawArea(box)) return;
  {
    CanvasRenderer r = view_.canvas().renderer();
    r.renderPrimitive(Glib::RectDescription{box, fromColour(Colour(1.0, 0.98, 0.85))});
    r.renderPrimitive(Glib::FrameDescription{box, fromColour(Colour(0.3, 0.3, 0.3)), 1});
    r.addModifiedArea(box);
  }
  int y = box.y1 - 3 - tooltipLine;
  for (const std::wstring& l : lines) {
    view_.drawText({box.x0 + 6, y, box.x1 - 4, y + tooltipLine}, LightweightString<wchar_t>(l), Colour(0.1, 0.1, 0.1),
                   {}, tooltipPoints);
    y -= tooltipLine;
  }
}

bool HoverHints::tooltipShowing() const noexcept {
  return tipShown_ && tipView_ == std::pair(view_.getViewCentre(), view_.getScale());
}

FXGraphView::PixelBox HoverHints::tooltipBox(const std::vector<std::wstring>& lines) const {
  // As wide as its longest line measures, inside the view, and off the
  // mouse (and the pad under it): below and right of it where there is
  // room, else above or left.
  int widest = 0;
  for (const std::wstring& l : lines)
    widest = std::max(widest, measureText(LightweightString<wchar_t>(l), {}, tooltipPoints).x);
  const auto v = view_.getWindowPos();
  const int w = std::min(widest + 12, v.x1 - v.x0 - 4), h = static_cast<int>(lines.size()) * tooltipLine + 6;
  const XY<int> m = view_.mousePosition();
  const int clear = 16;
  int x0 = m.x + clear;
  if (x0 + w > v.x1 - 2) x0 = m.x - clear - w;
  x0 = std::clamp(x0, v.x0 + 2, std::max(v.x0 + 2, v.x1 - 2 - w));
  int y1 = m.y - clear;
  if (y1 - h < v.y0 + 2) y1 = m.y + clear + h;
  y1 = std::clamp(y1, std::min(v.y1 - 2, v.y0 + 2 + h), v.y1 - 2);
  return {x0, y1 - h, x0 + w, y1};
}

LightweightString<wchar_t> HoverHints::describeNode(const FXGraphViewNode& node) const {
  const FXGraphNodeBase* g = node.graphNode().get();
  if (!g) return node.getTitleStr();
  std::wstring text = kindOf(g) + L" " + quoted(node.getTitleStr());
  if (dynamic_cast<const EffectInstance*>(g)) text += node.getNodeActive() ? L", on" : L", off";
  const unsigned inputs = g->getNumInputs();
  for (unsigned i = 0; i < inputs; ++i) {
    std::wstring name = g->getInputName(i).str();
    text += L"; input " + (name.empty() ? std::to_wstring(i + 1) : name) + L" from ";
    const FXGraphViewNode* up = node.getInputConnect(static_cast<int>(i));
    text += up ? quoted(up->getTitleStr()) : std::wstring(L"nothing");
  }
  std::wstring feeds;
  for (const auto& [output, entry] : node.outputTable()) {
    if (!entry.node) continue;
    if (!feeds.empty()) feeds += L" and ";
    feeds += quoted(entry.node->getTitleStr());
    const std::wstring name = entry.node->graphNode() ? entry.node->graphNode()->getInputName(entry.index).str() : L"";
    feeds += L" input " + (name.empty() ? std::to_wstring(entry.index + 1) : name);
  }
  text += L"; output feeds " + (feeds.empty() ? std::wstring(L"nothing") : feeds);
  return LightweightString<wchar_t>(text);
}

void HoverHints::draw() {
  const auto thickness = static_cast<unsigned short>(view_.getEdgeThickness(FXGraphView::eHighlightEdge));
  // The wires feeding the hovered node, all the way up.
  if (!highlighted_.empty()) {
    const Colour lit(1.0, 0.85, 0.3);
    for (const IdStamp& id : highlighted_) {
      Ux::Ptr<FXGraphViewNode> n = view_.findViewRecForNode(id);
      if (!n || !n->isVisibleFlag()) continue;
      for (const auto& [input, entry] : n->inputTable()) {
        if (!entry.node || !entry.node->isVisibleFlag()) continue;
        view_.drawConnection(entry.node->getOutputPos(static_cast<unsigned char>(entry.index)),
                             n->getInputPos(static_cast<unsigned long>(input)), lit, thickness);
      }
    }
  }
  // While a wire dangles: pads that would take it are ringed, others dimmed.
  if (view_.dragAnchor()) {
    const std::vector<FXGraphView::PadRef> accepting = acceptingPads();
    const int r = std::max(5, static_cast<int>(view_.getScale() * 0.016));
    auto mark = [&](XY<int> at, bool ok) {
      const FXGraphView::PixelBox box{at.x - r, at.y - r, at.x + r, at.y + r};
      if (!view_.drawArea(box)) return;
      CanvasRenderer renderer = view_.canvas().renderer();
      if (ok)
        renderer.renderPrimitive(Glib::FrameDescription{box, fromColour(Colour(0.2, 1.0, 0.35)), 3});
      else
        renderer.renderPrimitive(Glib::RectDescription{box, fromColour(Colour(0.1, 0.1, 0.1, 0.6))});
      renderer.addModifiedArea(box);
    };
    for (const auto& n : view_.nodes()) {
      if (!n->isVisibleFlag() || !n->graphNode()) continue;
      auto takes = [&](int index, bool atInput) {
        return std::any_of(accepting.begin(), accepting.end(), [&](const FXGraphView::PadRef& p) {
          return p.node == n->getNodeID() && p.index == index && p.atInput == atInput;
        });
      };
      if (view_.dragAnchoredAtInput()) {
        const int spare = static_cast<int>(n->outputTable().size());
        mark(n->getOutputPos(static_cast<unsigned char>(spare)), takes(spare, false));
      } else {
        const unsigned count = n->graphNode()->getNumInputs();
        for (unsigned i = 0; i < count; ++i) mark(n->getInputPos(i), takes(static_cast<int>(i), true));
      }
    }
  }
}
