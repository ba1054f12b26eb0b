// The view's life: construction, focus, the timer, notifications from the
// vob and the position manager, messages, the context menu and drops.
#include "graph_view/FXGraphView.h"

#include <algorithm>
#include <cmath>

#include "graph_view/Arrangement.h"
#include "graph_view/Framing.h"
#include "graph_view/HoverHints.h"
#include "graph_view/KeyboardFocus.h"
#include "graph_view/Navigator.h"
#include "graph_view/NodeFades.h"
#include "graph_view/SearchToAdd.h"
#include "graph_view/TemplateDrops.h"
#include "graph_view/ViewNotice.h"
#include "graph_view/ViewStills.h"
#include "host/config/EditorPreferences.h"
#include "host/config/Resources.h"
#include "host/edit/EffectInstance.h"
#include "host/edit/FXEditor.h"
#include "host/edit/TransitStatus.h"
#include "host/render/EffectTemplateManager.h"
#include "host/render/StillsQueue.h"
#include "host/ui/EffectMenuItems.h"
#include "host/ui/EffectsBrowser.h"
#include "host/ui/GlobManager.h"
#include "host/ui/HostClock.h"
#include "host/ui/ScrollBar.h"
#include "node_ui/PositionsUndo.h"

FXGraphView::FXGraphView(Vob* vob, XY<int> size, const Palette& palette, int scope)
    : VobClient(vob, 2), scope_(scope), centre_(XY<double>(0, 0)), zoom_(0.75) {
  setPalette(palette);
  hints_ = std::make_unique<HoverHints>(*this);
  keyboard_ = std::make_unique<KeyboardFocus>(*this);
  stills_ = std::make_unique<ViewStills>(*this);
  navigator_ = std::make_unique<Navigator>(*this);
  search_ = std::make_unique<SearchToAdd>(*this);
  drops_ = std::make_unique<TemplateDrops>(*this);
  fades_ = std::make_unique<NodeFades>(*this);
  notice_ = std::make_unique<ViewNotice>(*this);
  manageServer(&zoom_, &FXGraphView::judgeZoom);
  hScroll_ = new ScrollBar(ScrollBar::horizontal, 100);
  vScroll_ = new ScrollBar(ScrollBar::vertical, 100);
  addChild(hScroll_, BottomLeft(0, 0));
  addChild(vScroll_, BottomLeft(0, 0));
  orientation_ = VidRouting::Orientations::fromString(
      prefs().getPreference("Video Routing : Orientation", LightweightString<char>("LeftToRight")));
  flushNodeList();
  resize(size.x, size.y);
  if (vob && vob->getEdit()) setEditFocus(vob->getEdit(), {}, scope);
}

FXGraphView::~FXGraphView() {
  // The gesture and the parts give their timer holds back while the view is
  // still whole.
  endInteraction();
  autoScroll_.release();
  fades_.reset();
  drops_.reset();
  search_.reset();
  navigator_.reset();
  stills_.reset();
  keyboard_.reset();
  hints_.reset();
  NodeUIManagerClient::registerWith(nullptr);
  flushNodeList();
  releaseServer(&zoom_);
}

double FXGraphView::currentTime() const { return getVob() ? getVob()->getCurrentTime() : 0.0; }

int FXGraphView::getPrimaryChanIx() const {
  if (!edit_) return -1;
  for (const auto& n : nodes_)
    if (n->isPrimary()) return edit_->findChan(n->locator().channel);
  return -1;
}

void FXGraphView::setEditFocus(const EditPtr& edit, const IdStamp& focusNode, int scope) {
  edit_ = edit;
  focusNode_ = focusNode;
  scope_ = scope;
  Ux::Ptr<NodeUIPosManager> manager = positionManager();
  NodeUIManagerClient::registerWith(manager.get());
  if (manager) manager->setOrientation(orientation_);
  // Where nodes placed by hand were last shown, before the first tidy
  // writes over the stored positions.
  std::map<IdStamp, XY<double>> handPlaced;
  storePositionsForReopen(handPlaced);
  flushNodeList();
  recalcNodeList(false);
  if (manualPositioning()) {
    for (const auto& [id, p] : handPlaced)
      if (Ux::Ptr<FXGraphViewNode> n = findViewRecForNode(id)) {
        NotificationsSuspended quiet(n.get());
        n->setPosition(p.x, p.y, false);
      }
    keepCanvasAroundGraph();
  }
  resetView(1, 0);
}

void FXGraphView::storePositionsForReopen(std::map<IdStamp, XY<double>>& handPlaced) {
  Ux::Ptr<NodeUIPosManager> manager = positionManager();
  if (!manager) return;
  for (NodeUIRecBase* rec : manager->records().as<NodeUIRecBase>())
    if (auto* pos = dynamic_cast<NodeUIPosRec*>(rec); pos && pos->isManualPosSet())
      handPlaced[pos->getNodeId()] = pos->getDrawPosition();
}

bool FXGraphView::judgeZoom(ValServer<double>*, double& value) {
  // Zoom lives in [0, 1]; setViewZoom clamps before it asks, others may not.
  // A zoom that is no number is refused.
  if (std::isnan(value)) return false;
  value = std::clamp(value, 0.0, 1.0);
  return true;
}

// -- timer ---------------------------------------------------------------------

void FXGraphView::enableETime() {
  if (timerHolds_++ == 0) {
    enableTimerInterest();
    timerStart_ = msecsNow();
    lastTick_ = msecsNow() / 1000.0;
  }
}

void FXGraphView::disableETime() {
  if (timerHolds_ == 0) return;
  if (--timerHolds_ == 0) {
    disableTimerInterest();
    canvas().resetClipRect();
  }
}

bool FXGraphView::handleTimerEvent(const Event&) {
  stills_->take();
  hints_->tick();
  const double now = msecsNow() / 1000.0;
  if (autoScroll_) {
    if (mouseInAutoScrollArea()) {
      const auto w = getWindowPos();
      const XY<int> m = XY<int>(mouse_get_current_x(), mouse_get_current_y()) - screenPos();
      const double dt = (now - lastTick_) * 0.5;
      const double a = dt * width(), b = dt * height();
      XY<double> c = getViewCentre();
      // Left and down run at half a width a second, right and up at half a
      // height: the asymmetry is the view's.
      if (m.x < w.x0 + 20) c.x -= a / scale_;
      if (m.x > w.x1 - 20) c.x += b / scale_;
      if (m.y < w.y0 + 20) c.y -= a / scale_;
      if (m.y > w.y1 - 20) c.y += b / scale_;
      setViewCentre(c.x, c.y);
      updateScrollbars(true);
      redraw();
    } else {
      setAutoScrollState(false);
    }
  } else {
    // A fade moves on only on ticks that do not scroll.
    if (!fades_->advance(now - lastTick_) && dragAnchor()) {
      // The dragged wire follows the mouse.
      redraw();
    }
  }
  lastTick_ = now;
  return true;
}

// -- notifications ----------------------------------------------------------------

void FXGraphView::handleModifications(const EditModifications& mods, const VobModification& vobMod) {
  if (vobMod.flags & VobModification::closing) {
    // Stills under way would keep the edit open.
    stills_->forget();
    NodeUIManagerClient::registerWith(nullptr);
    edit_.reset();
    endInteraction();
    flushNodeList();
    return;
  }
  if (vobMod.flags & VobModification::editReplaced) {
    setEditFocus(getVob() ? getVob()->getEdit() : EditPtr(), {}, scope_);
    redraw();
    return;
  }
  if (mods.empty() && !(vobMod.flags & VobModification::timeChanged)) return;
  // The edit changed under a held wire (an undo, a redo, a change from
  // elsewhere): the wire is let go, so that the view shows the edit as it
  // now is. The view's own pick-up and drop change it while it is busy.
  if (interaction_.kind == Interaction::holdingWire && !busy_) endInteraction();
  if (!edit_ || edit_->isClosed()) {
    flushNodeList();
    redraw();
    return;
  }
  const double scale = scale_;
  recalcNodeList(true);
  checkForCoincidentNodes();
  keepCanvasAroundGraph();
  // The zoom is a share of the canvas, which follows the graph: the scale
  // is what the person sees, and it stays.
  keepScale(scale);
  // The view keeps its zoom and centre through a change (a wire picked up,
  // an undo): it moves only when asked, or when nothing would show.
  const bool anyInView = std::any_of(nodes_.begin(), nodes_.end(), [](const Ux::Ptr<FXGraphViewNode>& n) {
    return n->isVisible(n->calcPixelExtents());
  });
  if (!anyInView) resetView(1, 1);
  redraw();
}

void FXGraphView::newNodeRecNotify(NodeUIRecBase*) {
  recalcNodeList(false);
  redraw();
}

void FXGraphView::nodeRecDeletedNotify(NodeUIRecBase*) {}

void FXGraphView::nodeManagerGeneralNotify(const LightweightString<char>& text) {
  // Positions an undo step brought back: the nodes followed their records.
  if (text == PositionsUndo::restoredMsg) {
    keepCanvasAroundGraph();
    updateScrollbars(true);
  }
  redraw();
}

bool FXGraphView::handleMessageEvent(const LightweightString<char>& msg, Glob* sender) {
  if (auto* bar = dynamic_cast<ScrollBar*>(sender); bar && (bar == hScroll_ || bar == vScroll_)) {
    handleScrollbarMsg(bar, msg);
    return true;
  }
  if (msg == "TidyNodes") {
    tidy();
    return true;
  }
  return false;
}

bool FXGraphView::handleDataMessageEvent(const LightweightString<char>& msg, Glob* sender, const void* data) {
  if (msg != MenuData::changeMsg || !data) return Glob::handleDataMessageEvent(msg, sender, data);
  const auto* change = static_cast<const MenuData::Change*>(data);
  if (change->tag == "zoomIn" || change->tag == "zoomOut") {
    // Held in a panel, the panel's step; alone, the wheel's.
    if (parent() && parent()->handleDataMessageEvent(msg, sender, data)) return true;
    handleZoom(change->tag == "zoomIn" ? 1 : -1);
    return true;
  }
  if (change->tag == "arrange") {
    arrange();
    return true;
  }
  if (change->tag == "navigator") {
    navigator_->setOn(!navigator_->on());
    return true;
  }
  if (change->tag == "preview") {
    stills_->setOn(!stills_->on());
    return true;
  }
  if (change->tag != "orientation") return false;
  NotifyMsg m;
  m.object = Ux::Ptr<iObject>(const_cast<MenuData::Change*>(change));
  changeOrientation(m);
  return true;
}

MenuItems FXGraphView::getMenuItems(const Event* e) {
  MenuItems items;
  // On a node: its own entries first, under its title, then the view's.
  if (e) {
    const XY<int> at = e->screen - screenPos();
    for (const auto& n : nodes_) {
      int index = 0;
      if (n->translateMouseEvent(at.x, at.y, index) == FXGraphViewNode::eNothing) continue;
      const MenuItems commands =
          EffectMenuItems::getItemsForComponent(getIteratorFor(n->getNodeID(), EditGraphIterator::atNode));
      items.push_back(menuHeading(n->getTitleStr()));
      items.insert(items.end(), commands.begin(), commands.end());
      items.push_back(menuSeparator());
      break;
    }
  }
  auto add = [&](MenuItem item, const wchar_t* keys, bool checked = false) {
    item.keys = keys;
    item.checked = checked;
    items.push_back(std::move(item));
  };
  add(MenuItem(resourceStrW(11779), {}, "orientation"), L"", orientation_ == VidRouting::Orientations::LeftToRight);
  add(MenuItem(resourceStrW(11780), {}, "orientation"), L"", orientation_ != VidRouting::Orientations::LeftToRight);
  // Zoom steps: a panel that holds the view takes them as its own.
  add(MenuItem(resourceStrW(13050), {}, "zoomIn"), L"+");
  add(MenuItem(resourceStrW(13051), {}, "zoomOut"), L"-");
  // The routing of the edit, track by track: whoever holds the view opens it.
  add(MenuItem(resourceStrW(13053), {}, "routing"), L"");
  add(MenuItem(resourceStrW(13055), {}, "arrange"), L"L");
  add(MenuItem(resourceStrW(13054), {}, "navigator"), L"N", navigator_->on());
  add(MenuItem(resourceStrW(13056), {}, "preview"), L"V", stills_->on());
  return items;
}

bool FXGraphView::canAcceptDrop(const DragDropItem& item, XY<int> position) {
  return drops_->canAccept(item, position);
}

bool FXGraphView::acceptDrop(const DragDropItem& item, XY<int> position) { return drops_->accept(item, position); }

void FXGraphView::dragHover(const DragDropItem* item, XY<int> position) { drops_->hover(item, position); }

bool FXGraphView::insertTemplateAbove(const EffectTemplateSummary& t, const IdStamp& node) {
  return drops_->insertAbove(t, node);
}

void FXGraphView::arrange() {
  const Framing::Anchor anchor = Framing::hold(*this);
  Arrangement::apply(*this);
  Framing::restore(*this, anchor);
  redraw();
}

const IdStamp& FXGraphView::keyboardFocus() const noexcept { return keyboard_->focus(); }

bool FXGraphView::stillsInBackground() const noexcept { return stills_->inBackground(); }

bool FXGraphView::requestStill(const IdStamp& node, Still what, const Render::RenderContext& context) {
  return stills_->request(node, what, context);
}
