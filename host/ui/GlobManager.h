#pragma once
#include <string>
#include <vector>

#include "host/FxHostApi.h"
#include "host/core/Ptr.h"
#include "host/draw/ScreenSurface.h"
#include "host/ui/Glob.h"

class configb;
class DragDropItem;

// A panel's border: a type (0 plain), a width in pixels and flags.
struct Border {
  int type = 0;
  int width = 0;
  int flags = 0;
};

// What a new root glob is made from: a size, a border and, when it is being
// restored from a saved layout, its layout record.
struct GlobCreationInfo {
  XY<int> size;
  Border border;
  const configb* config = nullptr;
};

// The one screen: its root globs in stacking order (last on top), its drawing
// surface, input routing (with the mouse captured by whoever took a press
// until the release), timers and deferred deletion.
class FXHOST_API GlobManager {
public:
  static void initialise(int width, int height);
  // Deletes every root glob and the screen.
  static void shutdown();
  // The largest screen side the host takes, in pixels; no glob is larger.
  static constexpr int largestScreenSide = 8192;
  static bool initialised();
  static ScreenSurface& surface();
  static XY<int> screenSize();
  static void resizeScreen(int width, int height);

  // Puts a root glob on the screen, on top, laid out and drawn.
  static void realize(Glob* root);
  // A root glob goes at the next processDeletions(); the caller must not use it after.
  static void requestDeletion(Glob* root);
  static void processDeletions();
  static void raise(Glob* root);
  static const std::vector<Glob*>& roots();
  // The root globs in the order they came on the screen, whatever their
  // stacking since.
  static const std::vector<Glob*>& rootsInOpeningOrder();
  // Where a new root of that size goes under a placement (on the screen).
  static XY<int> getPosForGlob(const GlobCreationInfo& info, const Glob::Placement& placement);
  // The position moved so that the glob lies on the screen.
  static XY<int> getSafePosForGlob(const Canvas& canvas, XY<int> pos, XY<int> size);
  // The toolkit's window arrangement setting: 0 lets panels come to the top when clicked.
  static int windowArrangement();

  // Input, in screen pixels. Returns whether some glob handled the event.
  static bool dispatch(Event event);
  static XY<int> mousePosition();
  static unsigned keyboardModifiers();
  static void setKeyboardModifiers(unsigned bits);
  static Glob* capturedGlob();

  // Drag and drop (host/ui/DragDrop.h): while a button is held, a glob hands
  // the screen the item it gives away; the screen keeps it until the release
  // and drops it on the DragDropDestination under the mouse. Escape or
  // cancelDrag() ends the drag without a drop. Returns false (no drag) when
  // no button is down.
  static bool startDrag(const Ux::Ptr<DragDropItem>& item);
  static DragDropItem* draggedItem();
  static void cancelDrag();

  // A pop-up root (a menu): while it is up, a click elsewhere closes it and
  // goes no further, and keys go to it first. A new pop-up closes the old.
  static void setPopup(Glob* root);
  static Glob* popup();
  // A modal root (a question): while it is up, keys go to it and presses
  // elsewhere go nowhere. Null ends it; so does its deletion.
  static void setModal(Glob* root);
  static Glob* modal();

  // Timers: globs holding the interest get a tick on each call of tick().
  static void addTimerInterest(Glob* glob);
  static void removeTimerInterest(Glob* glob);
  static bool wantsTicks();
  static void tick();
  static constexpr int tickMilliseconds = 20; // 50 Hz

  // Drawing: everything, or what was asked for since the last update.
  static void drawAll();
  static void invalidate();
  static void update();
  static void drawGlob(Glob* glob);
  static bool deferring();
  static void beginDeferral();
  static void endDeferral();
  // The screen as a picture file, written whole or not at all; false with
  // the reason when it cannot be.
  static bool writePNG(const std::string& path, std::string* why = nullptr);
  static bool writeSVG(const std::string& path, std::string* why = nullptr);

  // A glob is going: forget every reference to it.
  static void forget(Glob* glob);
};

// The place of a new window of that size: centred on the screen.
FXHOST_API XY<int> glib_getPosForWindow(int width, int height);
