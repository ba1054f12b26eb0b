// The keyboard: focus on one node, walking the graph from it, and the keys
// that act on it; what the mouse hovers over; the hints shown while a wire
// dangles; and the words that say what a node is.
//
// Walking (the arrow that does each follows the orientation):
//   step             | left to right | bottom to top | goes to
//   towards inputs   | Left          | Down          | the first connected input
//   towards output   | Right         | Up            | the consumer it was reached from, else the first
//   between siblings | Up / Down     | Right / Left  | the next input of the same consumer (roots for a
//                    |               |               | root), in the direction of the arrow on screen
#include <algorithm>
#include <cctype>
#include <cmath>
#include <string>

#include "graph_view/FXGraphView.h"
#include "graph_view/ViewHost.h"
#include "host/edit/EffectInstance.h"
#include "host/edit/FXEditor.h"
#include "host/edit/GraphNodeKinds.h"
#include "host/ui/EffectMenuItems.h"
#include "host/ui/HostClock.h"

namespace {
constexpr int atNode = 9;

XY<double> centreOf(const FXGraphViewNode& n) { return {(n.getL() + n.getR()) / 2, (n.getB() + n.getT()) / 2}; }

std::wstring quoted(const LightweightString<wchar_t>& text) { return L"\u201c" + std::wstring(text.str()) + L"\u201d"; }

std::wstring kindOf(const FXGraphNodeBase* node) {
  if (dynamic_cast<const MaterialUsageNode*>(node)) return L"Material";
  if (dynamic_cast<const ImageImportEffect*>(node)) return L"Image";
  if (dynamic_cast<const AliasedInputEffect*>(node)) return L"Aliased input";
  if (dynamic_cast<const ComplexBackgroundEffect*>(node)) return L"Background";
  return L"Effect";
}
} // namespace

void FXGraphView::setKeyboardFocus(const IdStamp& id) {
  if (id == keyFocus_) return;
  keyFocus_ = id;
  keyPath_.clear();
  redraw();
}

bool FXGraphView::handleKeyEvent(const Event& e) {
  if (e.type != Event::keyDown || (e.modifiers & Event::controlHeld)) return false;
  if (searchOpen_) return handleSearchKey(e);
  const bool shift = (e.modifiers & Event::shiftHeld) != 0;
  const bool commandLetter = e.key == 'f' || e.key == 'F' || e.key == 'p' || e.key == 'l' || e.key == 'n';
  if (e.key == 'l') {
    if (!(getVob() && getVob()->isReadOnly())) arrange();
    return true;
  }
  if (e.key == 'n') {
    setNavigatorOn(!navigatorOn_);
    return true;
  }
  // Tab, or a letter or digit that is no command, starts a search to add.
  if (e.key == Event::keyTab || (!commandLetter && e.key < 128 && std::isalnum(e.key))) {
    if (getVob() && getVob()->isReadOnly()) return false;
    openSearch(e.key == Event::keyTab ? std::wstring() : std::wstring(1, static_cast<wchar_t>(e.key)));
    return true;
  }
  Ux::Ptr<FXGraphViewNode> focus = keyFocus_.valid() ? findViewRecForNode(keyFocus_) : Ux::Ptr<FXGraphViewNode>();
  if (!focus) keyFocus_ = IdStamp();
  if (e.key == 'f' || e.key == 'F') {
    if (!shift && e.key == 'f') {
      resetView(0, 0);
      return true;
    }
    // The node under the mouse, else the one with focus, to the middle.
    Ux::Ptr<FXGraphViewNode> target;
    for (const auto& n : nodes_) {
      int index = 0;
      if (n->isVisibleFlag() && n->translateMouseEvent(mouse_.x, mouse_.y, index) != FXGraphViewNode::eNothing) {
        target = n;
        break;
      }
    }
    if (!target) target = focus;
    if (target) {
      const XY<double> c = centreOf(*target);
      setViewCentre(c.x, c.y);
      updateScrollbars(true);
      redraw();
    }
    return true;
  }
  // Without a node in focus the other keys are not the view's: the arrows
  // step the editor's time.
  if (!focus) return false;
  switch (e.key) {
  case Event::arrowLeft:
  case Event::arrowRight:
  case Event::arrowUp:
  case Event::arrowDown:
    walkFocus(e.key);
    return true;
  case Event::keyReturn: {
    auto* effect = dynamic_cast<EffectInstance*>(focus->graphNode().get());
    if (effect && !dynamic_cast<AliasedInputEffect*>(effect))
      if (host_)
        host_->runItemCommand(EffectMenuItems::commandFor("fxutr", "params", getIteratorFor(keyFocus_, atNode)));
    return true;
  }
  case Event::keySpace:
    if (!(getVob() && getVob()->isReadOnly())) handleNodeClicked(focus);
    return true;
  case Event::keyDelete: {
    if (!dynamic_cast<EffectInstance*>(focus->graphNode().get())) return true;
    // Focus passes to what the effect fed, if anything did.
    IdStamp next;
    for (const auto& [output, entry] : focus->outputTable())
      if (entry.node) {
        next = entry.node->getNodeID();
        break;
      }
    const IdStamp gone = keyFocus_;
    if (host_) host_->runItemCommand(EffectMenuItems::commandFor("fxutr", "remove_utr", getIteratorFor(gone, atNode)));
    if (!findViewRecForNode(gone)) setKeyboardFocus(next);
    return true;
  }
  case 'p':
    if (!(getVob() && getVob()->isReadOnly())) pickOrDropAtFocus();
    return true;
  case Event::keyEscape:
    setKeyboardFocus({});
    return true;
  default:
    return false;
  }
}

void FXGraphView::walkFocus(int key) {
  Ux::Ptr<FXGraphViewNode> node = findViewRecForNode(keyFocus_);
  if (!node) return;
  const bool leftToRight = orientation_ == VidRouting::Orientations::LeftToRight;
  const int toInputs = leftToRight ? Event::arrowLeft : Event::arrowDown;
  const int toOutput = leftToRight ? Event::arrowRight : Event::arrowUp;
  // The consumer the walk came from, while it still takes this node.
  auto consumer = [&]() -> FXGraphViewNode* {
    FXGraphViewNode* first = nullptr;
    for (const auto& [output, entry] : node->outputTable()) {
      if (!entry.node) continue;
      if (!keyPath_.empty() && entry.node->getNodeID() == keyPath_.back()) return entry.node;
      if (!first) first = entry.node;
    }
    return first;
  };
  IdStamp next;
  if (key == toInputs) {
    const unsigned n = node->graphNode() ? node->graphNode()->getNumInputs() : 0;
    for (unsigned i = 0; i < n && !next.valid(); ++i)
      if (FXGraphViewNode* up = node->getInputConnect(static_cast<int>(i))) next = up->getNodeID();
    if (next.valid()) keyPath_.push_back(keyFocus_);
  } else if (key == toOutput) {
    if (FXGraphViewNode* down = consumer()) {
      next = down->getNodeID();
      if (!keyPath_.empty() && keyPath_.back() == next)
        keyPath_.pop_back();
      else
        keyPath_.clear();
    }
  } else {
    // Siblings: the consumer's other inputs, or the other roots, ordered
    // across the flow as they stand on the screen.
    std::vector<FXGraphViewNode*> siblings;
    if (FXGraphViewNode* down = consumer()) {
      const unsigned n = down->graphNode() ? down->graphNode()->getNumInputs() : 0;
      for (unsigned i = 0; i < n; ++i)
        if (FXGraphViewNode* up = down->getInputConnect(static_cast<int>(i));
            up && std::find(siblings.begin(), siblings.end(), up) == siblings.end())
          siblings.push_back(up);
    } else {
      for (const auto& n : nodes_)
        if (n->isVisibleFlag() && std::none_of(n->outputTable().begin(), n->outputTable().end(),
                                               [](const auto& o) { return o.second.node != nullptr; }))
          siblings.push_back(n.get());
    }
    auto across = [&](const FXGraphViewNode* n) { return leftToRight ? centreOf(*n).y : centreOf(*n).x; };
    const double here = across(node.get());
    const bool higher = leftToRight ? key == Event::arrowUp : key == Event::arrowRight;
    const FXGraphViewNode* best = nullptr;
    for (const FXGraphViewNode* s : siblings) {
      if (s == node.get()) continue;
      const double d = across(s) - here;
      if ((higher ? d <= 0 : d >= 0) || (best && std::abs(d) >= std::abs(across(best) - here))) continue;
      best = s;
    }
    if (best) next = best->getNodeID();
  }
  if (!next.valid() || next == keyFocus_) return;
  keyFocus_ = next;
  Vector<IdStamp> ids;
  ids.push_back(next);
  ensureNodeListVisible(ids, 1);
  updateScrollbars(true);
  redraw();
}

bool FXGraphView::pickOrDropAtFocus() {
  Ux::Ptr<FXGraphViewNode> node = findViewRecForNode(keyFocus_);
  if (!node || !node->graphNode()) return false;
  const int spare = static_cast<int>(node->outputTable().size());
  if (!anchor_) return handleOutputClicked(node, spare);
  if (anchoredAtInput_) return handleOutputClicked(node, spare);
  // A wire from an output lands on the first free input that takes it.
  for (const PadRef& pad : acceptingPads())
    if (pad.node == keyFocus_ && pad.atInput) return handleInputClicked(node, pad.index);
  return false;
}

std::vector<FXGraphView::PadRef> FXGraphView::acceptingPads() const {
  std::vector<PadRef> pads;
  if (!anchor_ || !anchor_->graphNode() || !edit_) return pads;
  FXEditor editor(edit_, 0, getPrimaryChanIx());
  if (anchoredAtInput_) {
    const EditGraphIterator destination = getIteratorFor(anchor_->graphNode(), atNode);
    for (const auto& n : nodes_) {
      if (!n->graphNode() || !n->isVisibleFlag()) continue;
      if (editor.canConnectNodes(destination, anchorPad_, getIteratorFor(n->graphNode(), atNode)))
        pads.push_back({n->getNodeID(), static_cast<int>(n->outputTable().size()), false});
    }
  } else {
    const EditGraphIterator source = getIteratorFor(anchor_->graphNode(), atNode);
    for (const auto& n : nodes_) {
      if (!n->graphNode() || !n->isVisibleFlag()) continue;
      const unsigned count = n->graphNode()->getNumInputs();
      EditGraphIterator destination;
      for (unsigned i = 0; i < count; ++i) {
        if (n->getInputConnect(static_cast<int>(i))) continue;
        if (!destination.isValid()) destination = getIteratorFor(n->graphNode(), atNode);
        if (editor.canConnectNodes(destination, static_cast<int>(i), source))
          pads.push_back({n->getNodeID(), static_cast<int>(i), true});
      }
    }
  }
  return pads;
}

std::vector<XY<int>> FXGraphView::wirePoints(const FXGraphViewNode& to, int input) const {
  std::vector<XY<int>> points;
  const FXGraphViewNode* from = to.getInputConnect(input);
  if (!from) return points;
  const int output = from->findOutputConnectFor(&to, input);
  if (output < 0) return points;
  for (const Curve& c : wireCurves(from->getOutputPos(static_cast<unsigned char>(output)),
                                   to.getInputPos(static_cast<unsigned long>(input)))) {
    const double length = std::hypot(c[1].x - c[0].x, c[1].y - c[0].y) + std::hypot(c[2].x - c[0].x, c[2].y - c[0].y) +
                          std::hypot(c[3].x - c[1].x, c[3].y - c[1].y);
    const int steps = std::clamp(static_cast<int>(length / 3), 8, 2000);
    for (int k = 0; k <= steps; ++k) {
      const double t = static_cast<double>(k) / steps, u = 1 - t;
      // Start, end, then the control points: (start, c1, c2, end) in the usual order.
      const double x = u * u * u * c[0].x + 3 * u * u * t * c[2].x + 3 * u * t * t * c[3].x + t * t * t * c[1].x;
      const double y = u * u * u * c[0].y + 3 * u * u * t * c[2].y + 3 * u * t * t * c[3].y + t * t * t * c[1].y;
      points.push_back({static_cast<int>(std::lround(x)), static_cast<int>(std::lround(y))});
    }
  }
  return points;
}

bool FXGraphView::wireAt(XY<int> p, WireRef& out) const {
  const int reach = getEdgeThickness(eHighlightEdge) + 3;
  for (const auto& n : nodes_) {
    if (!n->isVisibleFlag()) continue;
    for (const auto& [input, entry] : n->inputTable()) {
      if (!entry.node || !entry.node->isVisibleFlag()) continue;
      for (const XY<int>& q : wirePoints(*n, input))
        if (std::abs(q.x - p.x) <= reach && std::abs(q.y - p.y) <= reach) {
          out = {n, input};
          return true;
        }
    }
  }
  return false;
}

bool FXGraphView::clearPointOnWire(const IdStamp& to, int input, XY<int>& out) const {
  const Ux::Ptr<FXGraphViewNode> node = findViewRecForNode(to);
  if (!node) return false;
  const std::vector<XY<int>> points = wirePoints(*node, input);
  const auto w = getWindowPos();
  // From the middle outwards: the first point clear of every box and inside the view.
  for (std::size_t k = 0; k < points.size(); ++k) {
    const std::size_t i = points.size() / 2 + (k % 2 ? (k + 1) / 2 : 0) - (k % 2 ? 0 : k / 2);
    if (i >= points.size()) continue;
    const XY<int> q = points[i];
    if (q.x < w.x0 + 4 || q.x > w.x1 - 4 || q.y < w.y0 + 4 || q.y > w.y1 - 4) continue;
    const bool covered = std::any_of(nodes_.begin(), nodes_.end(), [&](const auto& n) {
      const PixelBox b = n->calcPixelExtents();
      return n->isVisibleFlag() && q.x >= b.x0 - 8 && q.x <= b.x1 + 8 && q.y >= b.y0 - 8 && q.y <= b.y1 + 8;
    });
    WireRef hit;
    if (!covered && wireAt(q, hit) && hit.to->getNodeID() == to && hit.input == input) {
      out = q;
      return true;
    }
  }
  return false;
}

void FXGraphView::updateHover(XY<int> position) {
  IdStamp over;
  for (const auto& n : nodes_) {
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
    tipHold_ = true;
    enableETime();
  }
  if (Ux::Ptr<FXGraphViewNode> start = over.valid() ? findViewRecForNode(over) : Ux::Ptr<FXGraphViewNode>()) {
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
  redraw();
}

void FXGraphView::dropTooltip() {
  if (tipHold_) disableETime();
  tipHold_ = false;
  if (tipShown_) redraw();
  tipShown_ = false;
}

void FXGraphView::drawTooltip() {
  if (!tipShown_) return;
  Ux::Ptr<FXGraphViewNode> n = hovered_.valid() ? findViewRecForNode(hovered_) : Ux::Ptr<FXGraphViewNode>();
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
  std::size_t longest = 0;
  for (const std::wstring& l : lines) longest = std::max(longest, l.size());
  const int lineHeight = 15, w = static_cast<int>(longest) * 7 + 12,
            h = static_cast<int>(lines.size()) * lineHeight + 6;
  const auto v = getWindowPos();
  const int x0 = std::clamp(mouse_.x + 14, v.x0 + 2, std::max(v.x0 + 2, v.x1 - 2 - w));
  const int y1 = std::clamp(mouse_.y - 14, std::min(v.y1 - 2, v.y0 + 2 + h), v.y1 - 2);
  const PixelBox box{x0, y1 - h, x0 + w, y1};
  if (!drawArea(box)) return;
  {
    CanvasRenderer r = canvas().renderer();
    r.renderPrimitive(Glib::RectDescription{box, fromColour(Colour(1.0, 0.98, 0.85))});
    r.renderPrimitive(Glib::FrameDescription{box, fromColour(Colour(0.3, 0.3, 0.3)), 1});
    r.addModifiedArea(box);
  }
  int y = y1 - 3 - lineHeight;
  for (const std::wstring& l : lines) {
    drawText({box.x0 + 6, y, box.x1 - 4, y + lineHeight}, LightweightString<wchar_t>(l), Colour(0.1, 0.1, 0.1), {}, 8);
    y -= lineHeight;
  }
}

LightweightString<wchar_t> FXGraphView::describeNode(const FXGraphViewNode& node) const {
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

void FXGraphView::drawHints() {
  const auto thickness = static_cast<unsigned short>(getEdgeThickness(eHighlightEdge));
  // The wires feeding the hovered node, all the way up.
  if (!highlighted_.empty()) {
    const Colour lit(1.0, 0.85, 0.3);
    for (const IdStamp& id : highlighted_) {
      Ux::Ptr<FXGraphViewNode> n = findViewRecForNode(id);
      if (!n || !n->isVisibleFlag()) continue;
      for (const auto& [input, entry] : n->inputTable()) {
        if (!entry.node || !entry.node->isVisibleFlag()) continue;
        drawConnection(entry.node->getOutputPos(static_cast<unsigned char>(entry.index)),
                       n->getInputPos(static_cast<unsigned long>(input)), lit, thickness);
      }
    }
  }
  // While a wire dangles: pads that would take it are ringed, others dimmed.
  if (anchor_) {
    const std::vector<PadRef> accepting = acceptingPads();
    const int r = std::max(5, static_cast<int>(scale_ * 0.016));
    auto mark = [&](XY<int> at, bool ok) {
      const PixelBox box{at.x - r, at.y - r, at.x + r, at.y + r};
      if (!drawArea(box)) return;
      CanvasRenderer renderer = canvas().renderer();
      if (ok)
        renderer.renderPrimitive(Glib::FrameDescription{box, fromColour(Colour(0.2, 1.0, 0.35)), 3});
      else
        renderer.renderPrimitive(Glib::RectDescription{box, fromColour(Colour(0.1, 0.1, 0.1, 0.6))});
      renderer.addModifiedArea(box);
    };
    for (const auto& n : nodes_) {
      if (!n->isVisibleFlag() || !n->graphNode()) continue;
      auto takes = [&](int index, bool atInput) {
        return std::any_of(accepting.begin(), accepting.end(), [&](const PadRef& p) {
          return p.node == n->getNodeID() && p.index == index && p.atInput == atInput;
        });
      };
      if (anchoredAtInput_) {
        const int spare = static_cast<int>(n->outputTable().size());
        mark(n->getOutputPos(static_cast<unsigned char>(spare)), takes(spare, false));
      } else {
        const unsigned count = n->graphNode()->getNumInputs();
        for (unsigned i = 0; i < count; ++i) mark(n->getInputPos(i), takes(static_cast<int>(i), true));
      }
    }
  }
  // The keyboard focus: a ring round the node.
  if (Ux::Ptr<FXGraphViewNode> n = keyFocus_.valid() ? findViewRecForNode(keyFocus_) : Ux::Ptr<FXGraphViewNode>();
      n && n->isVisibleFlag()) {
    drawRing(n->calcPixelExtents(), 3, std::max(2, static_cast<int>(scale_ * 0.006)), Colour(1.0, 1.0, 1.0));
  }
}
