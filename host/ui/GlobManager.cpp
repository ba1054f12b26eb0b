#include "host/ui/GlobManager.h"

#include <algorithm>
#include <memory>

#include "host/notify/Diagnostics.h"
#include "host/ui/DragDrop.h"
#include "host/ui/HostClock.h"
#include "host/ui/MessageBox.h"

namespace {

constexpr int escapeKey = 27;

struct Screen {
  std::unique_ptr<ScreenSurface> surface;
  std::vector<Glob*> roots;  // bottom to top
  std::vector<Glob*> opened; // the same, in the order they came on the screen
  std::vector<Glob*> doomed;
  std::vector<Glob*> timed;
  Glob* captured = nullptr;
  Glob* focus = nullptr;
  Glob* popup = nullptr;
  Glob* modal = nullptr;
  bool swallowRelease = false; // the press closed the pop-up; its release goes nowhere
  Ux::Ptr<DragDropItem> dragged;
  Glob* dragHover = nullptr; // the destination the item is over
  XY<int> mouse;
  XY<int> pressAt;
  unsigned modifiers = 0;
  unsigned clickState = 0;
  Event::Button pressed = Event::noButton;
  bool invalid = true;
  int deferrals = 0;
};
Screen* screen = nullptr;

// The deepest visible glob under a screen point, top roots first.
Glob* globAt(XY<int> p) {
  for (auto it = screen->roots.rbegin(); it != screen->roots.rend(); ++it) {
    Glob* g = *it;
    if (!g->isVisible() || !g->containsScreenPoint(p)) continue;
    for (bool deeper = true; deeper;) {
      deeper = false;
      const auto& kids = g->children();
      for (auto k = kids.rbegin(); k != kids.rend(); ++k)
        if ((*k)->isVisible() && (*k)->containsScreenPoint(p)) {
          g = *k;
          deeper = true;
          break;
        }
    }
    return g;
  }
  return nullptr;
}

Event localTo(const Glob* g, Event e) {
  e.position = e.screen - g->screenPos();
  return e;
}

// The deepest glob under a point that takes drops, and that glob as a destination.
std::pair<Glob*, DragDropDestination*> destinationAt(XY<int> p) {
  for (Glob* g = globAt(p); g; g = g->parent())
    if (auto* d = dynamic_cast<DragDropDestination*>(g)) return {g, d};
  return {nullptr, nullptr};
}

void hoverDrag(XY<int> p) {
  const auto [glob, destination] = destinationAt(p);
  if (screen->dragHover && screen->dragHover != glob)
    dynamic_cast<DragDropDestination*>(screen->dragHover)->dragHover(nullptr, {});
  screen->dragHover = glob;
  if (destination) destination->dragHover(screen->dragged.get(), p - glob->screenPos());
}

void endDrag(bool drop, XY<int> p) {
  const Ux::Ptr<DragDropItem> item = std::move(screen->dragged);
  if (screen->dragHover) dynamic_cast<DragDropDestination*>(screen->dragHover)->dragHover(nullptr, {});
  screen->dragHover = nullptr;
  if (!drop || !item) return;
  const auto [glob, destination] = destinationAt(p);
  const XY<int> local = glob ? p - glob->screenPos() : p;
  if (destination && destination->canAcceptDrop(*item, local)) destination->acceptDrop(*item, local);
}

// Offers the event to the glob and then its parents; returns who took it.
Glob* offer(Glob* g, const Event& e) {
  for (; g; g = g->parent())
    if ((e.type == Event::keyDown || e.type == Event::keyUp ? g->handleKeyEvent(localTo(g, e))
                                                            : g->handleMouseEvent(localTo(g, e))))
      return g;
  return nullptr;
}

} // namespace

void GlobManager::initialise(int width, int height) {
  if (!screen) screen = new Screen;
  screen->surface = std::make_unique<ScreenSurface>(width, height);
  screen->invalid = true;
  // What model code has to tell the user comes up in a message box.
  Diagnostics::setUserMessageHandler(
      [](const LightweightString<wchar_t>& text, const Palette& palette) { makeMessage(text, palette); });
}

void GlobManager::shutdown() {
  if (!screen) return;
  processDeletions();
  while (!screen->roots.empty()) {
    Glob* g = screen->roots.back();
    screen->roots.pop_back();
    std::erase(screen->opened, g);
    delete g;
  }
  delete screen;
  screen = nullptr;
  Diagnostics::setUserMessageHandler(nullptr);
}

bool GlobManager::initialised() { return screen && screen->surface; }

ScreenSurface& GlobManager::surface() { return *screen->surface; }

XY<int> GlobManager::screenSize() {
  return initialised() ? XY<int>{screen->surface->width(), screen->surface->height()} : XY<int>{};
}

void GlobManager::resizeScreen(int width, int height) {
  screen->surface->resize(width, height);
  for (Glob* g : screen->roots) g->updateCanvas();
  invalidate();
}

void GlobManager::realize(Glob* root) {
  if (!screen || !root || std::find(screen->roots.begin(), screen->roots.end(), root) != screen->roots.end()) return;
  screen->roots.push_back(root);
  screen->opened.push_back(root);
  root->updateCanvas();
  root->layoutChildren();
  drawGlob(root);
}

void GlobManager::requestDeletion(Glob* root) {
  if (screen && root && std::find(screen->doomed.begin(), screen->doomed.end(), root) == screen->doomed.end())
    screen->doomed.push_back(root);
}

void GlobManager::processDeletions() {
  if (!screen) return;
  while (!screen->doomed.empty()) {
    Glob* g = screen->doomed.back();
    screen->doomed.pop_back();
    std::erase(screen->roots, g);
    std::erase(screen->opened, g);
    delete g;
    screen->invalid = true;
  }
}

void GlobManager::raise(Glob* root) {
  if (!screen) return;
  auto it = std::find(screen->roots.begin(), screen->roots.end(), root);
  if (it == screen->roots.end() || it + 1 == screen->roots.end()) return;
  screen->roots.erase(it);
  screen->roots.push_back(root);
  screen->invalid = true;
}

const std::vector<Glob*>& GlobManager::roots() { return screen->roots; }

const std::vector<Glob*>& GlobManager::rootsInOpeningOrder() { return screen->opened; }

XY<int> GlobManager::getPosForGlob(const GlobCreationInfo& info, const Glob::Placement& placement) {
  const XY<int> s = screenSize();
  switch (placement.kind) {
  case Glob::Placement::centre:
    return {(s.x - info.size.x) / 2 + placement.dx, (s.y - info.size.y) / 2 + placement.dy};
  case Glob::Placement::topLeft:
    return {placement.dx, s.y - placement.dy - info.size.y};
  default:
    return {placement.dx, placement.dy};
  }
}

XY<int> GlobManager::getSafePosForGlob(const Canvas&, XY<int> pos, XY<int> size) {
  const XY<int> s = screenSize();
  pos.x = std::clamp(pos.x, 0, std::max(0, s.x - size.x));
  pos.y = std::clamp(pos.y, 0, std::max(0, s.y - size.y));
  return pos;
}

int GlobManager::windowArrangement() { return 0; }

bool GlobManager::dispatch(Event e) {
  if (!screen) return false;
  if (e.isMouse()) screen->mouse = e.screen;
  e.modifiers |= screen->modifiers;
  Glob* taker = nullptr;
  switch (e.type) {
  case Event::mouseDown:
    if (screen->pressed != Event::noButton && screen->captured) {
      // A second button during a press: the first keeps the capture.
      if (e.button == Event::right && screen->pressed == Event::left) screen->clickState |= Event::chordClick;
      e.clickState = screen->clickState;
      e.sinceDown = e.screen - screen->pressAt;
      return screen->captured->handleMouseEvent(localTo(screen->captured, e));
    }
    if (screen->modal && !screen->modal->containsScreenPoint(e.screen)) {
      // The rest of the screen waits for the answer.
      screen->pressed = e.button;
      screen->captured = nullptr;
      screen->swallowRelease = true;
      return true;
    }
    if (screen->popup && !screen->popup->containsScreenPoint(e.screen)) {
      GlobManager::setPopup(nullptr);
      screen->pressed = e.button;
      screen->captured = nullptr;
      screen->swallowRelease = true;
      update();
      return true;
    }
    screen->pressed = e.button;
    screen->pressAt = e.screen;
    screen->clickState = (e.modifiers & Event::shiftHeld) ? Event::zoomDrag : 0;
    e.clickState = screen->clickState;
    taker = offer(globAt(e.screen), e);
    screen->captured = taker;
    if (taker) screen->focus = taker;
    break;
  case Event::mouseMove:
    e.button = screen->pressed;
    e.clickState = screen->clickState;
    if (screen->pressed != Event::noButton) e.sinceDown = e.screen - screen->pressAt;
    taker = screen->captured
                ? (screen->captured->handleMouseEvent(localTo(screen->captured, e)) ? screen->captured : nullptr)
                : offer(globAt(e.screen), e);
    if (screen->dragged) hoverDrag(e.screen);
    break;
  case Event::mouseUp:
    e.clickState = screen->clickState;
    e.sinceDown = e.screen - screen->pressAt;
    if (screen->swallowRelease && e.button == screen->pressed) {
      screen->swallowRelease = false;
      screen->pressed = Event::noButton;
      update();
      return true;
    }
    if (screen->dragged && e.button == screen->pressed) endDrag(true, e.screen);
    if (screen->captured) {
      Glob* g = screen->captured;
      if (e.button == screen->pressed) screen->captured = nullptr;
      taker = g->handleMouseEvent(localTo(g, e)) ? g : nullptr;
    } else {
      taker = offer(globAt(e.screen), e);
    }
    if (e.button == screen->pressed) {
      screen->pressed = Event::noButton;
      screen->clickState = 0;
    }
    break;
  case Event::wheel:
    taker = offer(globAt(e.screen), e);
    break;
  case Event::keyDown:
  case Event::keyUp:
    if (screen->dragged && e.type == Event::keyDown && e.key == escapeKey) {
      endDrag(false, {});
      taker = screen->captured;
      break;
    }
    {
      // Keys go to the popup, else to whoever took the last press, else to
      // what is under the mouse, else to the topmost panel: the window has
      // the keyboard even when the mouse is elsewhere.
      Glob* to = screen->modal   ? screen->modal
                 : screen->popup ? screen->popup
                 : screen->focus ? screen->focus
                                 : globAt(screen->mouse);
      if (!to && !screen->roots.empty()) to = screen->roots.back();
      taker = offer(to, e);
    }
    break;
  default:
    break;
  }
  update();
  return taker != nullptr;
}

XY<int> GlobManager::mousePosition() { return screen ? screen->mouse : XY<int>{}; }

unsigned GlobManager::keyboardModifiers() { return screen ? screen->modifiers : 0; }

void GlobManager::setKeyboardModifiers(unsigned bits) {
  if (screen) screen->modifiers = bits;
}

Glob* GlobManager::capturedGlob() { return screen ? screen->captured : nullptr; }

bool GlobManager::startDrag(const Ux::Ptr<DragDropItem>& item) {
  if (!screen || !item || screen->pressed == Event::noButton) return false;
  if (screen->dragged) endDrag(false, {});
  screen->dragged = item;
  hoverDrag(screen->mouse);
  return true;
}

DragDropItem* GlobManager::draggedItem() { return screen ? screen->dragged.get() : nullptr; }

void GlobManager::cancelDrag() {
  if (screen && screen->dragged) endDrag(false, {});
}

void GlobManager::setPopup(Glob* root) {
  if (!screen || screen->popup == root) return;
  if (screen->popup) requestDeletion(screen->popup);
  screen->popup = root;
}

Glob* GlobManager::popup() { return screen ? screen->popup : nullptr; }

void GlobManager::setModal(Glob* root) {
  if (screen) screen->modal = root;
}

Glob* GlobManager::modal() { return screen ? screen->modal : nullptr; }

void GlobManager::addTimerInterest(Glob* glob) {
  if (std::find(screen->timed.begin(), screen->timed.end(), glob) == screen->timed.end()) screen->timed.push_back(glob);
}

void GlobManager::removeTimerInterest(Glob* glob) {
  if (screen) std::erase(screen->timed, glob);
}

bool GlobManager::wantsTicks() { return screen && !screen->timed.empty(); }

void GlobManager::tick() {
  if (!screen) return;
  Event e;
  e.type = Event::timer;
  e.time = msecsNow();
  // A glob may give its interest back while ticking.
  const std::vector<Glob*> ticking = screen->timed;
  for (Glob* g : ticking)
    if (std::find(screen->timed.begin(), screen->timed.end(), g) != screen->timed.end()) g->handleTimerEvent(e);
  update();
}

void GlobManager::drawAll() {
  if (!initialised()) return;
  const XY<int> s = screenSize();
  screen->surface->draw(Glib::RectDescription{{0, 0, s.x, s.y}, fromColour(Colour(0.25, 0.26, 0.28))},
                        {0, 0, s.x, s.y});
  screen->surface->addModifiedArea({0, 0, s.x, s.y});
  for (Glob* g : screen->roots) g->drawTree();
  screen->invalid = false;
}

void GlobManager::invalidate() {
  if (screen) screen->invalid = true;
}

void GlobManager::update() {
  if (!initialised() || !Drawable::redrawsEnabled() || screen->deferrals > 0) return;
  processDeletions();
  if (screen->invalid) drawAll();
}

void GlobManager::drawGlob(Glob* glob) {
  if (!initialised()) return;
  if (!Drawable::redrawsEnabled() || screen->deferrals > 0 || screen->invalid) {
    screen->invalid = true;
    update();
    return;
  }
  Glob* root = glob->getRootParent();
  auto it = std::find(screen->roots.begin(), screen->roots.end(), root);
  if (it == screen->roots.end()) return; // not on the screen
  glob->drawTree();
  // Roots above it that overlap are painted again, keeping the stacking order.
  const XY<int> p = glob->screenPos();
  for (++it; it != screen->roots.end(); ++it) {
    Glob* above = *it;
    const XY<int> q = above->screenPos();
    if (q.x < p.x + glob->width() && p.x < q.x + above->width() && q.y < p.y + glob->height() &&
        p.y < q.y + above->height())
      above->drawTree();
  }
}

bool GlobManager::deferring() { return screen && screen->deferrals > 0; }

void GlobManager::beginDeferral() {
  if (screen) ++screen->deferrals;
}

void GlobManager::endDeferral() {
  if (!screen || screen->deferrals == 0) return;
  if (--screen->deferrals == 0) update();
}

bool GlobManager::writePNG(const std::string& path, std::string* why) {
  if (!initialised()) return false;
  update();
  return screen->surface->writePNG(path, why);
}

bool GlobManager::writeSVG(const std::string& path, std::string* why) {
  if (!initialised() || !screen->surface->beginSVG(path)) return false;
  drawAll();
  return screen->surface->endSVG(why);
}

void GlobManager::forget(Glob* glob) {
  if (!screen) return;
  if (screen->captured == glob) screen->captured = nullptr;
  if (screen->focus == glob) screen->focus = nullptr;
  if (screen->popup == glob) screen->popup = nullptr;
  if (screen->modal == glob) screen->modal = nullptr;
  if (screen->dragHover == glob) screen->dragHover = nullptr;
  std::erase(screen->timed, glob);
  std::erase(screen->roots, glob);
  std::erase(screen->opened, glob);
  std::erase(screen->doomed, glob);
}

XY<int> glib_getPosForWindow(int width, int height) {
  const XY<int> s = GlobManager::screenSize();
  return {(s.x - width) / 2, (s.y - height) / 2};
}
