#include "app/WindowLoop.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>

#include <SDL.h>

#include "graph_tool/FXGraphTool.h"
#include "graph_tool/UnsavedChanges.h"
#include "graph_view/Framing.h"
#include "host/edit/Vob.h"
#include "host/ui/GlobManager.h"
#include "host/ui/HostClock.h"

namespace fxgraph {
namespace {

// SDL counts y down from the top; the host's pixels count up from the bottom.
XY<int> toScreen(int x, int y) { return {x, GlobManager::screenSize().y - 1 - y}; }

unsigned modifiersOf(Uint16 mod) {
  unsigned bits = 0;
  if (mod & KMOD_CTRL) bits |= Event::controlHeld;
  if (mod & KMOD_SHIFT) bits |= Event::shiftHeld;
  return bits;
}

Event::Button buttonOf(Uint8 b) {
  switch (b) {
  case SDL_BUTTON_LEFT:
    return Event::left;
  case SDL_BUTTON_RIGHT:
    return Event::right;
  case SDL_BUTTON_MIDDLE:
    return Event::middle;
  default:
    return Event::noButton;
  }
}

// The editor's transport, for keys that no panel took: left and right step
// the play machine's time by a second, Home goes to the start.
void moveTime(SDL_Keycode key) {
  Vob* vob = Vob::getPlayMachine();
  if (!vob || !vob->getEdit()) return;
  const double end = vob->getEdit()->getEndTime();
  double t = vob->getCurrentTime();
  if (key == SDLK_LEFT)
    t -= 1;
  else if (key == SDLK_RIGHT)
    t += 1;
  else if (key == SDLK_HOME)
    t = 0;
  else
    return;
  vob->setCurrentTime(vob->getEdit()->wholeFrame(std::clamp(t, 0.0, std::max(0.0, end))));
}

// A termination signal (the session ends, a kill) cannot wait for an
// answer: the program ends as on exit, without asking.
volatile std::sig_atomic_t terminated = 0;
extern "C" void onTerminate(int) { terminated = 1; }

// A window system that neither opens the window nor says why (a session
// half set up) would leave the program sitting with nothing on the screen:
// if the window has not shown within the time, the program says so and ends.
class StartWatch {
public:
  explicit StartWatch(std::chrono::seconds limit)
      : thread_([this, limit] {
          std::unique_lock lock(mutex_);
          if (!shown_.wait_for(lock, limit, [this] { return done_; })) {
            std::fprintf(stderr, "fxgraph: the window did not come up within %d s; is the display usable?\n",
                         static_cast<int>(limit.count()));
            std::_Exit(1);
          }
        }) {}
  ~StartWatch() { done(); }
  void done() {
    {
      std::lock_guard lock(mutex_);
      done_ = true;
    }
    shown_.notify_all();
    if (thread_.joinable()) thread_.join();
  }

private:
  std::mutex mutex_;
  std::condition_variable shown_;
  bool done_ = false;
  std::thread thread_;
};

// The window's close asked for: every tool closes as its close box closes
// it, asking first where changes are not saved. The window stays while a
// question is open; it closes once no tool is left, and quitting is given
// up when a tool stays (the question was cancelled).
class Quitting {
public:
  void request() {
    asked_ = true;
    for (FXGraphTool* tool : FXGraphTool::allPanels_.as<FXGraphTool>()) tool->requestClose();
    GlobManager::processDeletions();
  }
  // False when the window is to close.
  bool keepOpen() {
    if (!asked_) return true;
    if (FXGraphTool::allPanels_.empty()) return false;
    bool asking = false;
    for (FXGraphTool* tool : FXGraphTool::allPanels_.as<FXGraphTool>())
      asking = asking || tool->unsavedChanges().asking();
    if (!asking) asked_ = false;
    return true;
  }

private:
  bool asked_ = false;
};

Quitting& quitting() {
  static Quitting q;
  return q;
}

// The tool fills the program's window, as a tool docked in an editor fills
// its place: the panel follows the window's size.
void fillWindow() {
  const XY<int> size = GlobManager::screenSize();
  for (FXGraphTool* tool : FXGraphTool::allPanels_.as<FXGraphTool>()) {
    if (tool->isDocked()) continue;
    tool->setPos(0, 0);
    tool->resize(size.x, size.y);
    tool->updateCanvas();
  }
  GlobManager::invalidate();
}

// Turns one SDL event into host events; false when the window is to close.
bool translate(const SDL_Event& e) {
  Event h;
  h.time = msecsNow();
  switch (e.type) {
  case SDL_QUIT:
    quitting().request();
    break;
  case SDL_MOUSEBUTTONDOWN:
  case SDL_MOUSEBUTTONUP:
    h.type = e.type == SDL_MOUSEBUTTONDOWN ? Event::mouseDown : Event::mouseUp;
    h.button = buttonOf(e.button.button);
    h.screen = toScreen(e.button.x, e.button.y);
    GlobManager::setKeyboardModifiers(modifiersOf(SDL_GetModState()));
    GlobManager::dispatch(h);
    break;
  case SDL_MOUSEMOTION:
    h.type = Event::mouseMove;
    h.screen = toScreen(e.motion.x, e.motion.y);
    GlobManager::setKeyboardModifiers(modifiersOf(SDL_GetModState()));
    GlobManager::dispatch(h);
    break;
  case SDL_MOUSEWHEEL: {
    int x = 0, y = 0;
    SDL_GetMouseState(&x, &y);
    h.type = Event::wheel;
    h.screen = toScreen(x, y);
    h.wheelSteps = e.wheel.direction == SDL_MOUSEWHEEL_FLIPPED ? -e.wheel.y : e.wheel.y;
    GlobManager::dispatch(h);
    break;
  }
  case SDL_KEYDOWN:
  case SDL_KEYUP:
    h.type = e.type == SDL_KEYDOWN ? Event::keyDown : Event::keyUp;
    h.key = static_cast<int>(e.key.keysym.sym);
    GlobManager::setKeyboardModifiers(modifiersOf(e.key.keysym.mod));
    h.modifiers = modifiersOf(e.key.keysym.mod);
    if (!GlobManager::dispatch(h) && e.type == SDL_KEYDOWN) moveTime(e.key.keysym.sym);
    break;
  case SDL_WINDOWEVENT:
    if (e.window.event == SDL_WINDOWEVENT_SIZE_CHANGED) {
      GlobManager::resizeScreen(e.window.data1, e.window.data2);
      fillWindow();
    } else if (e.window.event == SDL_WINDOWEVENT_EXPOSED)
      GlobManager::invalidate();
    break;
  default:
    break;
  }
  return true;
}

class Window {
public:
  bool open(std::string& why) {
    if (SDL_Init(SDL_INIT_VIDEO | SDL_INIT_TIMER) != 0) {
      why = SDL_GetError();
      return false;
    }
    const XY<int> size = GlobManager::screenSize();
    window_ = SDL_CreateWindow("fxgraph", SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED, size.x, size.y,
                               SDL_WINDOW_RESIZABLE);
    if (window_) renderer_ = SDL_CreateRenderer(window_, -1, 0);
    if (!window_ || !renderer_) {
      why = SDL_GetError();
      return false;
    }
    return true;
  }
  ~Window() {
    if (texture_) SDL_DestroyTexture(texture_);
    if (renderer_) SDL_DestroyRenderer(renderer_);
    if (window_) SDL_DestroyWindow(window_);
    SDL_Quit();
  }
  // Copies the screen surface into the window.
  void present() {
    Ux::Ptr<UxImage> picture = GlobManager::surface().snapshot();
    if (!texture_ || textureSize_.x != picture->width() || textureSize_.y != picture->height()) {
      if (texture_) SDL_DestroyTexture(texture_);
      texture_ = SDL_CreateTexture(renderer_, SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_STREAMING, picture->width(),
                                   picture->height());
      textureSize_ = {picture->width(), picture->height()};
    }
    SDL_UpdateTexture(texture_, nullptr, picture->data(), picture->stride());
    SDL_RenderClear(renderer_);
    SDL_RenderCopy(renderer_, texture_, nullptr, nullptr);
    SDL_RenderPresent(renderer_);
  }

private:
  SDL_Window* window_ = nullptr;
  SDL_Renderer* renderer_ = nullptr;
  SDL_Texture* texture_ = nullptr;
  XY<int> textureSize_;
};

} // namespace

bool runWindowLoop(std::string& why) {
  if (!std::getenv("DISPLAY") && !std::getenv("WAYLAND_DISPLAY")) {
    why = "no display";
    return false;
  }
  // SDL would turn these into a close of the window, which may ask.
  SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
  std::signal(SIGTERM, onTerminate);
  std::signal(SIGINT, onTerminate);
  StartWatch watch(std::chrono::seconds(10));
  Window window;
  if (!window.open(why)) return false;
  fillWindow();
  // The graph in the middle of the grown view.
  for (FXGraphTool* tool : FXGraphTool::allPanels_.as<FXGraphTool>())
    if (tool->getView()) Framing::frame(*tool->getView(), Framing::Zoom::kept);
  GlobManager::drawAll();
  GlobManager::surface().takeModifiedAreas();
  window.present();
  watch.done();
  uint64_t nextTick = msecsNow() + GlobManager::tickMilliseconds;
  for (bool running = true; running && !GlobManager::roots().empty();) {
    SDL_Event e;
    // Wait for input, but no longer than the next timer tick when one is wanted.
    const int wait =
        GlobManager::wantsTicks() ? static_cast<int>(nextTick > msecsNow() ? nextTick - msecsNow() : 0) : 100;
    if (SDL_WaitEventTimeout(&e, wait)) {
      do running = translate(e) && running;
      while (SDL_PollEvent(&e));
    }
    if (GlobManager::wantsTicks() && msecsNow() >= nextTick) {
      GlobManager::tick();
      nextTick = msecsNow() + GlobManager::tickMilliseconds;
    }
    GlobManager::update();
    running = running && quitting().keepOpen() && !terminated;
    if (!GlobManager::surface().takeModifiedAreas().empty()) window.present();
  }
  return true;
}

} // namespace fxgraph
