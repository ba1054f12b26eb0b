#pragma once
// A headless screen for toolkit tests, events sent to it in screen pixels,
// and a root glob that records what its children tell it.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/ui/GlobManager.h"
#include "host/ui/MenuGlob.h"
#include "host/ui/MenuItem.h"

namespace testsupport {

// The screen for the length of a test.
class ScopedScreen {
public:
  explicit ScopedScreen(int width = 640, int height = 480) { GlobManager::initialise(width, height); }
  ~ScopedScreen() { GlobManager::shutdown(); }
  ScopedScreen(const ScopedScreen&) = delete;
  ScopedScreen& operator=(const ScopedScreen&) = delete;
};

inline bool sendMouse(Event::Type type, XY<int> at, Event::Button button = Event::left, int wheelSteps = 0) {
  Event e;
  e.type = type;
  e.button = button;
  e.screen = at;
  e.wheelSteps = wheelSteps;
  return GlobManager::dispatch(e);
}
inline bool press(XY<int> at, Event::Button b = Event::left) { return sendMouse(Event::mouseDown, at, b); }
inline bool release(XY<int> at, Event::Button b = Event::left) { return sendMouse(Event::mouseUp, at, b); }
inline bool moveTo(XY<int> at) { return sendMouse(Event::mouseMove, at); }
inline bool click(XY<int> at, Event::Button b = Event::left) {
  const bool taken = press(at, b);
  return release(at, b) || taken;
}
inline bool wheel(XY<int> at, int steps) { return sendMouse(Event::wheel, at, Event::noButton, steps); }
inline bool key(int code) {
  Event e;
  e.type = Event::keyDown;
  e.key = code;
  return GlobManager::dispatch(e);
}

// The middle of a child glob, on the screen.
inline XY<int> centreOf(const Glob& g) { return g.screenPos() + XY<int>{g.width() / 2, g.height() / 2}; }
// A point of a glob's own pixels, on the screen.
inline XY<int> onScreen(const Glob& g, XY<int> local) { return g.screenPos() + local; }

// A root glob that records the messages its children send, takes the data
// of the data messages it knows, and offers a context menu when given items.
class RecordingGlob : public Glob {
public:
  struct Heard {
    std::string message;
    Glob* sender;
  };

  explicit RecordingGlob(XY<int> size) : Glob(size) {}

  bool handleMessageEvent(const LightweightString<char>& msg, Glob* sender) override {
    messages.push_back({msg.str(), sender});
    return true;
  }
  bool handleDataMessageEvent(const LightweightString<char>& msg, Glob* sender, const void* data) override {
    dataMessages.push_back({msg.str(), sender});
    if (msg == MenuData::changeMsg) {
      const auto* c = static_cast<const MenuData::Change*>(data);
      menuChange = {c->label.str(), c->index, c->tag.str()};
    }
    return true;
  }
  MenuItems getMenuItems(const Event*) override { return menu; }
  bool handleMouseEvent(const Event& e) override { return MenuGlob::processRightMouseClicks(this, e); }

  std::vector<Heard> messages;
  std::vector<Heard> dataMessages;
  struct {
    std::wstring label;
    int index = -1;
    std::string tag;
  } menuChange;
  MenuItems menu;
};

// A 500 x 400 screen holding a 460 x 360 recording root at (20, 20).
struct UiTest : ::testing::Test {
  ScopedScreen screen{500, 400};
  RecordingGlob* root = new RecordingGlob({460, 360});
  UiTest() {
    root->setPos(20, 20);
    GlobManager::realize(root);
  }
};

} // namespace testsupport
