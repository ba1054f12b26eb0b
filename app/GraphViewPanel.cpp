#include "app/GraphViewPanel.h"

#include <algorithm>
#include <cstdio>

#include "graph_tool/GraphItemCommands.h"
#include "host/config/Resources.h"
#include "host/ui/UifStd.h"

namespace fxgraph {

GraphViewPanel::GraphViewPanel(Vob* vob, XY<int> size) : StandardPanel(size), VobClient(vob, 1) {
  setMovable(true);
  setResizable(true);
  setPersistable(false);
  addStandardWidgets(titleWidget | closeWidget);
  setMinSize(320, 200);
  updateTitle();
  const PixelBox user = getUserArea();
  slider_ = new ScrollBar(ScrollBar::horizontal, std::max(40, user.x1 - user.x0 - 90));
  addChild(slider_, UserBottomLeft(UifStd::getWidgetGap(), UifStd::getWidgetGap()));
  slider_->setThumbSize(0.04, false);
  view_ = new FXGraphView(vob, {user.x1 - user.x0, std::max(0, user.y1 - user.y0 - stripHeight())}, getPalette());
  addChild(view_, UserTopLeft(0, 0));
  syncSlider();
}

GraphViewPanel::~GraphViewPanel() = default;

int GraphViewPanel::stripHeight() const { return ScrollBar::thickness() + 2 * UifStd::getWidgetGap(); }

void GraphViewPanel::updateTitle() {
  const LightweightString<wchar_t> name = getVob() && getVob()->getEdit() ? getVob()->getEdit()->getName() : L"";
  setTitle(paddedResourceStrW(11587, "", " : ") + name, UifStd::getTitleFont());
}

void GraphViewPanel::resize(double w, double h) {
  StandardPanel::resize(w, h);
  const PixelBox user = getUserArea();
  if (slider_) slider_->resize(std::max(40, user.x1 - user.x0 - 90), ScrollBar::thickness());
  if (view_) view_->resize(user.x1 - user.x0, std::max(0, user.y1 - user.y0 - stripHeight()));
  layoutChildren();
}

void GraphViewPanel::draw() {
  StandardPanel::draw();
  if (!slider_) return;
  char text[48];
  std::snprintf(text, sizeof text, "%.2f s", getVob() ? getVob()->getCurrentTime() : 0.0);
  const int x = slider_->getX() + slider_->width() + UifStd::getWidgetGap();
  drawText({x, slider_->getY() - 4, x + 80, slider_->getY() + slider_->height() + 4}, toWide(text), getPalette().text(),
           {}, 0);
}

void GraphViewPanel::syncSlider() {
  if (!slider_ || !getVob() || !getVob()->getEdit()) return;
  const double length = std::max(1e-6, getVob()->getEdit()->getEndTime());
  const double size = slider_->getThumbSize();
  slider_->setThumbPosition(std::clamp(getVob()->getCurrentTime() / length, 0.0, 1.0) * (1 - size), true);
}

bool GraphViewPanel::handleMessageEvent(const LightweightString<char>& msg, Glob* sender) {
  double position = 0;
  if (sender == slider_ && slider_ && ScrollBar::parsePosition(msg, position)) {
    if (getVob() && getVob()->getEdit()) {
      const double size = slider_->getThumbSize();
      const double t = size < 1 ? position / (1 - size) * getVob()->getEdit()->getEndTime() : 0;
      getVob()->setCurrentTime(getVob()->getEdit()->wholeFrame(t));
    }
    return true;
  }
  if (StandardPanel::handleMessageEvent(msg, sender)) return true;
  // Commands of graph items, from the view's context menu or a host menu.
  if (GraphItemCommands::handle(getVob(), msg, getPalette())) return true;
  // A message from a host menu (no sender among the panel's widgets) is the view's.
  return sender != view_ && view_ && view_->handleMessageEvent(msg, sender);
}

bool GraphViewPanel::handleKeyEvent(const Event& e) {
  if (e.type != Event::keyDown || !(e.modifiers & Event::controlHeld) || !getVob()) return false;
  if (e.key == 'z')
    getVob()->undoRequest();
  else if (e.key == 'y')
    getVob()->redoRequest();
  else
    return false;
  return true;
}

void GraphViewPanel::handleModifications(const EditModifications& mods, const VobModification& vobMod) {
  if (vobMod.flags & VobModification::closing) return;
  if (mods.includes(EditModification::name) || (vobMod.flags & VobModification::editReplaced)) updateTitle();
  syncSlider();
  redraw();
}

} // namespace fxgraph
