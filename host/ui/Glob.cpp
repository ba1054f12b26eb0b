#include "host/ui/Glob.h"

#include <algorithm>
#include <optional>

#include "host/config/configb.h"
#include "host/ui/GlobManager.h"
#include "host/ui/SentMessages.h"

namespace {
// Set by setupRootPos, taken by the next glob made.
std::optional<XY<int>> pendingRootPos;

void takeRootPos(int& x, int& y) {
  if (!pendingRootPos) return;
  x = pendingRootPos->x;
  y = pendingRootPos->y;
  pendingRootPos.reset();
}
} // namespace

void Glob::setupRootPos(XY<int> position) { pendingRootPos = position; }

Glob::Glob() { takeRootPos(x_, y_); }

Glob::Glob(XY<int> size) {
  takeRootPos(x_, y_);
  resize(size.x, size.y);
}

Glob::~Glob() {
  if (timerHolds_ > 0) GlobManager::removeTimerInterest(this);
  GlobManager::forget(this);
  // Children go first, last added first. A child still knows its parent
  // while it goes, so that one docked in another can tell.
  while (!children_.empty()) {
    Glob* child = children_.back();
    children_.pop_back();
    delete child;
  }
}

Glob* Glob::addChild(Glob* child, const Placement& placement) {
  if (!child || child == this || child->parent_) return child;
  child->parent_ = this;
  child->placement_ = placement;
  children_.push_back(child);
  layoutChildren();
  return child;
}

Glob* Glob::addWidgetRelative(Glob* child, const Glob* relative, int gap, int relativity, bool, int) {
  Placement p = RightOf(gap, relative);
  if (relativity == 1)
    p = LeftOf(gap, relative);
  else if (relativity == 3)
    p = Above(gap, relative);
  else if (relativity == 4)
    p = Below(gap, relative);
  return addChild(child, p);
}

bool Glob::removeChild(Glob* child, bool destroy) {
  auto it = std::find(children_.begin(), children_.end(), child);
  if (it == children_.end()) return false;
  children_.erase(it);
  child->parent_ = nullptr;
  // Placements relative to the removed child fall back to the parent's corner.
  for (Glob* c : children_)
    if (c->placement_.relative == child) c->placement_ = BottomLeft(c->x_, c->y_);
  if (destroy) delete child;
  return true;
}

Glob* Glob::getRootParent() {
  Glob* g = this;
  while (g->parent_) g = g->parent_;
  return g;
}

void Glob::setPos(int x, int y) {
  x_ = x;
  y_ = y;
  updateCanvas();
}

XY<int> Glob::screenPos() const {
  XY<int> p{x_, y_};
  for (const Glob* g = parent_; g; g = g->parent_) p = p + XY<int>{g->x_, g->y_};
  return p;
}

void Glob::resize(double w, double h) {
  w_ = static_cast<uint16_t>(std::clamp(w, 0.0, 65535.0));
  h_ = static_cast<uint16_t>(std::clamp(h, 0.0, 65535.0));
  updateCanvas();
  layoutChildren();
}

void Glob::layoutChildren() {
  const PixelBox user = getUserArea();
  for (Glob* c : children_) {
    const Placement& p = c->placement_;
    const int cw = c->w_, ch = c->h_;
    int x = c->x_, y = c->y_;
    const Glob* r = p.relative;
    switch (p.kind) {
    case Placement::absolute:
    case Placement::bottomLeft:
      x = p.dx;
      y = p.dy;
      break;
    case Placement::topLeft:
      x = p.dx;
      y = h_ - p.dy - ch;
      break;
    case Placement::topRight:
      x = w_ - p.dx - cw;
      y = h_ - p.dy - ch;
      break;
    case Placement::bottomRight:
      x = w_ - p.dx - cw;
      y = p.dy;
      break;
    case Placement::rightOf:
      if (r) x = r->x_ + r->w_ + p.dx, y = r->y_;
      break;
    case Placement::leftOf:
      if (r) x = r->x_ - p.dx - cw, y = r->y_;
      break;
    case Placement::above:
      if (r) x = r->x_, y = r->y_ + r->h_ + p.dx;
      break;
    case Placement::below:
      if (r) x = r->x_, y = r->y_ - p.dx - ch;
      break;
    case Placement::userTopLeft:
      x = user.x0 + p.dx;
      y = user.y1 - p.dy - ch;
      break;
    case Placement::userBottomLeft:
      x = user.x0 + p.dx;
      y = user.y0 + p.dy;
      break;
    case Placement::userTopRight:
      x = user.x1 - p.dx - cw;
      y = user.y1 - p.dy - ch;
      break;
    case Placement::centre:
      x = (w_ - cw) / 2 + p.dx;
      y = (h_ - ch) / 2 + p.dy;
      break;
    }
    c->x_ = x;
    c->y_ = y;
    c->updateCanvas();
  }
}

void Glob::updateCanvas() {
  ScreenSurface* surface = GlobManager::initialised() ? &GlobManager::surface() : nullptr;
  canvas_.place(screenPos(), {w_, h_}, surface);
  for (Glob* c : children_) c->updateCanvas();
}

bool Glob::containsScreenPoint(XY<int> p) const {
  const XY<int> s = screenPos();
  return p.x >= s.x && p.x < s.x + w_ && p.y >= s.y && p.y < s.y + h_;
}

void Glob::setActive(bool on, bool redrawNow) {
  if (active_ == on) return;
  active_ = on;
  if (redrawNow) redraw();
}

bool Glob::sendMessage(const LightweightString<char>& msg) {
  bool handled = false;
  for (Glob* g = parent_; g && !handled; g = g->parent_) handled = g->handleMessageEvent(msg, this);
  SentMessages::record(msg, handled);
  return handled;
}

bool Glob::sendDataMessage(const LightweightString<char>& msg, const void* data) {
  for (Glob* g = parent_; g; g = g->parent_)
    if (g->handleDataMessageEvent(msg, this, data)) return true;
  return false;
}

void Glob::enableTimerInterest() {
  if (timerHolds_++ == 0) GlobManager::addTimerInterest(this);
}

void Glob::disableTimerInterest() {
  if (timerHolds_ == 0) return;
  if (--timerHolds_ == 0) GlobManager::removeTimerInterest(this);
}

void Glob::draw() { drawRect({0, 0, w_, h_}, palette_.window(3)); }

void Glob::drawTree() {
  if (!visible_) return;
  updateCanvas();
  draw();
  for (Glob* c : children_) c->drawTree();
}

void Glob::redraw() { GlobManager::drawGlob(this); }

void Glob::reshapeAndDraw(XY<int> size) {
  if (size.x == -1234 && size.y == -1234)
    resize(w_, h_);
  else
    resize(size.x, size.y);
  redraw();
}

void Glob::popToTop(bool redrawNow) {
  Glob* root = getRootParent();
  GlobManager::raise(root);
  if (redrawNow) root->redraw();
}

void Glob::drawRect(const PixelBox& box, const Colour& c) {
  CanvasRenderer r = canvas_.renderer();
  r.renderPrimitive(Glib::RectDescription{box, fromColour(c)});
  r.addModifiedArea(box);
}

void Glob::drawFrame(const PixelBox& box, const Colour& c, int style) {
  CanvasRenderer r = canvas_.renderer();
  r.renderPrimitive(Glib::FrameDescription{box, fromColour(c), style});
  r.addModifiedArea(box);
}

void Glob::drawText(const PixelBox& box, const LightweightString<wchar_t>& text, const Colour& c,
                    const LightweightString<char>& font, int alignment, int pointSize) {
  CanvasRenderer r = canvas_.renderer();
  Glib::TextDescription d;
  d.box = box;
  d.text = text;
  d.font = font;
  d.pointSize = pointSize;
  d.colour = fromColour(c);
  d.alignment = alignment;
  r.renderPrimitive(d);
  r.addModifiedArea(box);
}

void Glob::dump(configb& record) const {
  record.set("X", x_);
  record.set("Y", y_);
  record.set("W", static_cast<int>(w_));
  record.set("H", static_cast<int>(h_));
  record.set("TYPE", idstring());
}

namespace {
int redrawHolds = 0;
}

void Drawable::disableRedraws() { ++redrawHolds; }

void Drawable::enableRedraws() {
  if (redrawHolds == 0) return;
  if (--redrawHolds == 0) GlobManager::update();
}

bool Drawable::redrawsEnabled() { return redrawHolds == 0; }

Glib::UpdateDeferrer::UpdateDeferrer() { GlobManager::beginDeferral(); }

Glib::UpdateDeferrer::~UpdateDeferrer() { GlobManager::endDeferral(); }
