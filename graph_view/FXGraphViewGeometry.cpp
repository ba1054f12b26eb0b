// The view's geometry: graph units <-> view pixels, zoom and its physical
// scale, fitting, the pan and zoom gesture, the wheel, the scroll bars,
// auto-scroll, rotation and orientation.
//
// The pan and zoom gesture (checkForPanAndZoom), active once a press fell on
// nothing:
//   event                          | state       | action
//   left button released           | active      | end; raise the panel unless the mouse moved
//   left button moved (new place)  | active      | pan, or zoom with control held / a zoom drag
//   right button (no chord)        | active      | end, redraw
//   anything                       | not active  | nothing (0)
#include <algorithm>
#include <cmath>

#include "graph_view/FXGraphView.h"
#include "host/config/EditorPreferences.h"
#include "host/config/Resources.h"
#include "host/ui/GlobManager.h"
#include "host/ui/HostClock.h"
#include "host/ui/MenuItem.h"
#include "host/ui/ScrollBar.h"
#include "host/ui/UifStd.h"
#include "layout/FXGraphTidier.h"

Ux::Box<int, Ux::BottomUpTraits> FXGraphView::getWindowPos() const {
  const int gap = UifStd::getWidgetGap();
  const int bar = ScrollBar::thickness();
  const int indent = UifStd::getIndentWidth();
  return {indent, gap + bar, width() - (gap + bar), height() - indent};
}

void FXGraphView::graphToViewSpace(double x, double y, double& vx, double& vy) const {
  const auto w = getWindowPos();
  const XY<double> c = centre_.getValue();
  vx = (w.x0 + w.x1) / 2.0 + (x - c.x) * scale_;
  vy = (w.y0 + w.y1) / 2.0 + (y - c.y) * scale_;
}

XY<double> FXGraphView::graphToViewSpace(const XY<double>& p) const {
  XY<double> v;
  graphToViewSpace(p.x, p.y, v.x, v.y);
  return v;
}

void FXGraphView::viewToGraphSpace(double vx, double vy, double& x, double& y) const {
  const auto w = getWindowPos();
  const XY<double> c = centre_.getValue();
  x = (vx - (w.x0 + w.x1) / 2.0) / scale_ + c.x;
  y = (vy - (w.y0 + w.y1) / 2.0) / scale_ + c.y;
}

XY<double> FXGraphView::viewToGraphSpace(const XY<double>& p) const {
  XY<double> g;
  viewToGraphSpace(p.x, p.y, g.x, g.y);
  return g;
}

namespace {
// Rounds half away from zero after the offset of one half: kept as the
// view's pixel snapping has always worked.
int snapped(double v) {
  const double shifted = v + 0.5;
  return static_cast<int>(shifted + (shifted > 0 ? 0.5 : -0.5));
}
} // namespace

XY<int> FXGraphView::graphToPixels(double x, double y) const {
  // The transform is computed and discarded: the graph values themselves
  // are what is rounded. Drawing and hit testing use graphToViewSpace.
  double vx = 0, vy = 0;
  graphToViewSpace(x, y, vx, vy);
  return {snapped(x), snapped(y)};
}

bool FXGraphView::clipRectToView(int& l, int& b, int& r, int& t) const {
  const auto w = getWindowPos();
  if (r >= w.x0 && l <= w.x1 && t >= w.y0 && b <= w.y1) {
    l = std::clamp(l, w.x0, w.x1);
    r = std::clamp(r, w.x0, w.x1);
    b = std::clamp(b, w.y0, w.y1);
    t = std::clamp(t, w.y0, w.y1);
    return true;
  }
  l = b = r = t = 0;
  return false;
}

void FXGraphView::constrainToCanvas(double& x, double& y) const {
  if (x > canvas_.x1)
    x = canvas_.x1;
  else if (x < canvas_.x0)
    x = canvas_.x0;
  if (y > canvas_.y1)
    y = canvas_.y1;
  else if (y < canvas_.y0)
    y = canvas_.y0;
}

void FXGraphView::setViewCentre(double x, double y) {
  constrainToCanvas(x, y);
  centre_ = XY<double>(x, y);
}

void FXGraphView::setViewZoom(double z) {
  // A zoom that is no number changes nothing.
  if (std::isnan(z)) return;
  z = std::clamp(z, 0.0, 1.0);
  scale_ = calcPhysicalScale(z);
  zoom_ = z;
}

void FXGraphView::setMaxNodeSize(int n) {
  maxNodeSize_ = n;
  scale_ = calcPhysicalScale(zoom_.getValue());
}

double FXGraphView::calcPhysicalScale(double zoom) const {
  const double most = maxNodeSize_ * 8.0;
  const double fit =
      std::min(double(width()) / (canvas_.x1 - canvas_.x0), double(height()) / (canvas_.y1 - canvas_.y0));
  const double low = std::min(most, fit);
  return low + (most - low) * zoom;
}

void FXGraphView::keepScale(double scale) {
  const double s0 = calcPhysicalScale(0), s1 = calcPhysicalScale(1);
  if (s1 > s0 && std::isfinite(scale)) setViewZoom(std::clamp((scale - s0) / (s1 - s0), 0.0, 1.0));
}

double FXGraphView::fitViewToCanvRect(const GraphBox& box) const {
  const double sy = (height() - 30.0) / (box.y1 - box.y0);
  const double sx = (width() - 30.0) / (box.x1 - box.x0);
  const double s = std::min(sx, sy);
  const double s0 = calcPhysicalScale(0), s1 = calcPhysicalScale(1);
  return std::clamp((s - s0) / (s1 - s0), 0.0, 1.0);
}

double FXGraphView::calcAutoScale(double& cx, double& cy) const {
  const GraphBox e = getGraphExtents();
  cx = (e.x0 + e.x1) / 2;
  cy = (e.y0 + e.y1) / 2;
  return fitViewToCanvRect(e);
}

FXGraphView::GraphBox FXGraphView::getGraphExtents() const {
  if (nodes_.empty()) return {0, 0, 0, 0};
  GraphBox b{nodes_[0]->getL(), nodes_[0]->getB(), nodes_[0]->getR(), nodes_[0]->getT()};
  for (const auto& n : nodes_) {
    b.x0 = std::min(b.x0, n->getL());
    b.y0 = std::min(b.y0, n->getB());
    b.x1 = std::max(b.x1, n->getR());
    b.y1 = std::max(b.y1, n->getT());
  }
  return b;
}

int FXGraphView::handleZoom(int direction) {
  setViewZoom(getZoom() + (direction > 0 ? 0.1 : -0.1));
  updateScrollbars(true);
  redraw();
  return 1;
}

int FXGraphView::checkForPanAndZoom(const Event& e) {
  if (interaction_.kind != Interaction::panning) return 0;
  if (e.button == Event::left && e.type == Event::mouseUp) {
    endInteraction();
    if (isMouseMoveSignificant(e)) return 0;
    if (GlobManager::windowArrangement() != 0) return 0;
    getRootParent()->popToTop(false);
    return 0;
  }
  if (e.button == Event::left && e.type == Event::mouseMove && e.screen != interaction_.panLast) {
    const XY<int> delta = e.screen - interaction_.panLast;
    if (!(keyboardModifiers() & Event::controlHeld) && !(e.clickState & Event::zoomDrag)) {
      const auto w = getWindowPos();
      const XY<double> c = centre_.getValue();
      const XY<double> pixel = viewToGraphSpace(XY<double>((w.x0 + w.x1) / 2.0 + 1, (w.y0 + w.y1) / 2.0 + 1)) - c;
      setViewCentre(c.x - pixel.x * delta.x, c.y - pixel.y * delta.y);
    } else if (delta.y != 0) {
      setViewZoom(std::clamp(getZoom() + delta.y / 170.0, 0.0, 1.0));
    }
    updateScrollbars(true);
    redraw();
    interaction_.panLast = e.screen;
    return 1;
  }
  if (e.button == Event::right && !(e.clickState & Event::chordClick)) {
    endInteraction();
    redraw();
    return 0;
  }
  return 0;
}

void FXGraphView::updateScrollbars(bool redrawNow) {
  const XY<double> c = centre_.getValue();
  if (hScroll_ && !hScroll_->isThumbBeingDragged() && scale_ > 0) {
    const double visible = width() / scale_;
    const double total = (canvas_.x1 - canvas_.x0) + visible;
    hScroll_->setThumbSize(visible / total, redrawNow);
    hScroll_->setThumbPosition((c.x - canvas_.x0) / total, redrawNow);
  }
  if (vScroll_ && !vScroll_->isThumbBeingDragged() && scale_ > 0) {
    // Graph y grows upwards; the bar's position runs from the top.
    const double visible = height() / scale_;
    const double total = (canvas_.y1 - canvas_.y0) + visible;
    const double size = visible / total;
    vScroll_->setThumbSize(size, redrawNow);
    vScroll_->setThumbPosition(1 - ((c.y - canvas_.y0) / total + size), redrawNow);
  }
}

void FXGraphView::handleScrollbarMsg(ScrollBar* bar, const LightweightString<char>& msg) {
  double position = 0;
  if (!ScrollBar::parsePosition(msg, position) || scale_ <= 0) return;
  const XY<double> c = centre_.getValue();
  // The thumb formulas of updateScrollbars, solved for the centre.
  if (bar == hScroll_) {
    const double total = (canvas_.x1 - canvas_.x0) + width() / scale_;
    setViewCentre(canvas_.x0 + position * total, c.y);
  } else if (bar == vScroll_) {
    const double visible = height() / scale_;
    const double total = (canvas_.y1 - canvas_.y0) + visible;
    setViewCentre(c.x, canvas_.y0 + (1 - position - visible / total) * total);
  }
  redraw();
}

int FXGraphView::getEdgeThickness(eEdgeType type) const {
  const float raw = static_cast<float>(UifStd::getRowHeight()) / 7.0f * static_cast<float>(getZoom());
  int t = static_cast<int>(raw + 0.5f);
  if (t < 1) t = 1;
  return t + (type == eHighlightEdge ? 1 : 0);
}

XY<int> FXGraphView::getNodeSize() const {
  if (nodes_.empty()) return {static_cast<int>(0.125 * scale_), static_cast<int>(0.1 * scale_)};
  // The node's box in view pixels.
  const GraphBox b = nodes_.front()->getBounds(true);
  return {static_cast<int>(std::fabs(b.x1 - b.x0)), static_cast<int>(std::fabs(b.y1 - b.y0))};
}

bool FXGraphView::mouseInAutoScrollArea() const {
  const auto w = getWindowPos();
  const XY<int> m = XY<int>(mouse_get_current_x(), mouse_get_current_y()) - screenPos();
  return m.x < w.x0 + 20 || m.x > w.x1 - 20 || m.y > w.y1 - 20 || m.y < w.y0 + 20;
}

void FXGraphView::setAutoScrollState(bool on) {
  if (on == static_cast<bool>(autoScroll_)) return;
  autoScroll_ = on ? TimerHold(*this) : TimerHold();
}

void FXGraphView::rotateNodes(double angle) {
  for (const auto& n : nodes_) {
    const XY<double> p = rotatePointAboutOrigin(n->getPosition(), angle);
    n->setPosition(p.x, p.y, false);
  }
}

void FXGraphView::resetView(FXGraphVieweRedrawFlag redrawFlag, FXGraphViewRefitFlag refitFlag) {
  Vector<IdStamp> ids;
  getAllNodes(ids);
  const bool moved = ensureNodeListVisible(ids, refitFlag);
  if (redrawFlag == 0 || moved) {
    updateScrollbars(true);
    redraw();
  }
}

void FXGraphView::setOrientation(Orientation orientation, bool refit) {
  if (orientation == orientation_) return;
  orientation_ = orientation;
  if (auto manager = positionManager()) manager->setOrientation(orientation);
  prefs().setPreference("Video Routing : Orientation", VidRouting::Orientations::asString(orientation));
  if (nodes_.empty()) return;
  rotateNodes(orientation != 0 ? 90.0 : -90.0);
  keepCanvasAroundGraph();
  if (refit) resetView(0, 2);
}

void FXGraphView::changeOrientation(const NotifyMsg& msg) {
  const auto* change = dynamic_cast<const MenuData::Change*>(msg.object.get());
  const bool leftToRight = change && change->label == resourceStrW(11779);
  setOrientation(leftToRight ? VidRouting::Orientations::LeftToRight : VidRouting::Orientations::BottomToTop, true);
}

bool FXGraphView::ensureNodeListVisible(const Vector<IdStamp>& ids, FXGraphViewRefitFlag refitFlag) {
  const XY<double> c = centre_.getValue();
  GraphBox box{c.x, c.y, c.x, c.y};
  for (const IdStamp& id : ids) {
    Ux::Ptr<FXGraphViewNode> n = findViewRecForNode(id);
    if (!n) continue;
    if (std::fabs(box.x1 - box.x0) * std::fabs(box.y1 - box.y0) == 0) {
      box = {n->getL(), n->getB(), n->getR(), n->getT()};
    } else {
      box.x0 = std::min(box.x0, n->getL());
      box.y0 = std::min(box.y0, n->getB());
      box.x1 = std::max(box.x1, n->getR());
      box.y1 = std::max(box.y1, n->getT());
    }
  }
  const bool fits = (box.x1 - box.x0) <= width() / scale_ && (box.y1 - box.y0) <= height() / scale_;
  if (refitFlag != 0 && fits) {
    if (refitFlag != 2) return false;
  } else {
    const double z = fitViewToCanvRect(box);
    if (getZoom() > z) setViewZoom(z);
  }
  setViewCentre((box.x0 + box.x1) / 2, (box.y0 + box.y1) / 2);
  return true;
}

void FXGraphView::resize(double w, double h) {
  Glob::resize(w, h);
  placeScrollBars();
  if (edit_) keepCanvasAroundGraph();
  scale_ = calcPhysicalScale(getZoom());
  updateScrollbars(false);
}

void FXGraphView::placeScrollBars() {
  const auto win = getWindowPos();
  const int gap = UifStd::getWidgetGap();
  if (hScroll_) {
    hScroll_->resize(std::max(0, win.x1 - win.x0), ScrollBar::thickness());
    hScroll_->setPlacement(BottomLeft(win.x0, gap));
  }
  if (vScroll_) {
    vScroll_->resize(ScrollBar::thickness(), std::max(0, win.y1 - win.y0));
    vScroll_->setPlacement(BottomLeft(win.x1 + gap / 2, win.y0));
  }
  layoutChildren();
}

// The canvas rectangle bounds the centre and spans the scroll bars: it holds
// the graph's extents with half a view of room round them, and never shrinks
// to nothing. After a move by hand it only grows, so that the view does not
// jump under the mouse; the next rebuild fits it to the graph again.
void FXGraphView::keepCanvasAroundGraph(bool growOnly) {
  GraphBox e = getGraphExtents();
  const double most = std::max(1.0, maxNodeSize_ * 8.0);
  const double roomX = std::max(0.5, width() / most), roomY = std::max(0.5, height() / most);
  const GraphBox around{e.x0 - roomX, e.y0 - roomY, e.x1 + roomX, e.y1 + roomY};
  if (growOnly)
    canvas_ = {std::min(canvas_.x0, around.x0), std::min(canvas_.y0, around.y0), std::max(canvas_.x1, around.x1),
               std::max(canvas_.y1, around.y1)};
  else
    canvas_ = around;
  XY<double> c = centre_.getValue();
  constrainToCanvas(c);
  if (c != centre_.getValue()) centre_ = c;
}
