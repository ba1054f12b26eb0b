#pragma once
// The toolkit's retained tree of globs.
//
// Map
//   Glob::Placement ..... where a child sits in its parent, re-applied on resize
//   Glob ................ tree, geometry, palette and canvas, events, messages,
//                         timers, drawing, saved layout
//   Drawable, Glib::StateSaver, Glib::UpdateDeferrer ... redraw control
#include <string>
#include <vector>

#include "host/FxHostApi.h"
#include "host/core/Box.h"
#include "host/core/LightweightString.h"
#include "host/core/Palette.h"
#include "host/core/XY.h"
#include "host/draw/Canvas.h"
#include "host/ui/Event.h"
#include "host/ui/MenuItem.h"

class configb;

// A node of the user-interface tree: a rectangle with a parent, children, a
// palette and a canvas. Positions are bottom-up pixels in the parent (root
// globs: on the screen). A parent owns its children and deletes them.
class FXHOST_API Glob {
public:
  using PixelBox = Ux::Box<int, Ux::BottomUpTraits>;

  // Where a child sits in its parent; re-applied whenever the parent lays out.
  struct Placement {
    enum Kind {
      absolute,    // (dx, dy) is the bottom-left corner
      topLeft,     // top-left corner dx from the left, dy from the top
      topRight,    // top-right corner dx from the right, dy from the top
      bottomLeft,  // bottom-left corner at (dx, dy)
      bottomRight, // bottom-right corner dx from the right, dy up
      rightOf,     // dx to the right of `relative`, bottoms aligned
      leftOf,      // dx to the left of `relative`, bottoms aligned
      above,       // dx above `relative`, left edges aligned
      below,       // dx below `relative`, left edges aligned
      userTopLeft, // as topLeft, bottomLeft, topRight, in the user area
      userBottomLeft,
      userTopRight,
      centre, // centred, moved by (dx, dy)
    };
    Kind kind = absolute;
    int dx = 0;
    int dy = 0;
    const Glob* relative = nullptr;
  };
  static Placement TopLeft(int dx, int dy) { return {Placement::topLeft, dx, dy}; }
  static Placement TopRight(int dx, int dy) { return {Placement::topRight, dx, dy}; }
  static Placement BottomLeft(int dx, int dy) { return {Placement::bottomLeft, dx, dy}; }
  static Placement BottomLeft(XY<int> p) { return {Placement::bottomLeft, p.x, p.y}; }
  static Placement BottomRight(int dx, int dy) { return {Placement::bottomRight, dx, dy}; }
  static Placement RightOf(int gap, const Glob* g) { return {Placement::rightOf, gap, 0, g}; }
  static Placement LeftOf(int gap, const Glob* g) { return {Placement::leftOf, gap, 0, g}; }
  static Placement Above(int gap, const Glob* g) { return {Placement::above, gap, 0, g}; }
  static Placement Below(int gap, const Glob* g) { return {Placement::below, gap, 0, g}; }
  static Placement UserTopLeft(int dx, int dy) { return {Placement::userTopLeft, dx, dy}; }
  static Placement UserTopRight(int dx, int dy) { return {Placement::userTopRight, dx, dy}; }
  static Placement UserBottomLeft(int dx, int dy) { return {Placement::userBottomLeft, dx, dy}; }
  // Alignment 2 centres on both axes (the only alignment here).
  static Placement Centre(int dx, int dy, int) { return {Placement::centre, dx, dy}; }

  Glob();
  explicit Glob(XY<int> size);
  // The screen position that the next glob made takes, so that a root glob
  // is in its place while its constructor lays it out.
  static void setupRootPos(XY<int> position);
  Glob(const Glob&) = delete;
  Glob& operator=(const Glob&) = delete;
  virtual ~Glob();

  // Tree. The parent takes ownership of an added child.
  Glob* addChild(Glob* child, const Placement& placement);
  // Relativity: 1 left of, 2 right of, 3 above, 4 below `relative`.
  Glob* addWidgetRelative(Glob* child, const Glob* relative, int gap, int relativity, bool surround, int alignment);
  // Takes a child out; with `destroy` it is deleted, otherwise the caller owns it.
  bool removeChild(Glob* child, bool destroy);
  Glob* parent() const noexcept { return parent_; }
  const std::vector<Glob*>& children() const noexcept { return children_; }
  Glob* getRootParent();
  bool isChildGlob() const noexcept { return parent_ != nullptr; }

  // Geometry.
  int getX() const noexcept { return x_; }
  int getY() const noexcept { return y_; }
  void setPos(int x, int y);
  XY<int> screenPos() const;
  uint16_t width() const noexcept { return w_; }
  uint16_t height() const noexcept { return h_; }
  // Sizes the glob (clamped to 0..65535) and lays out its children.
  virtual void resize(double w, double h);
  // The area that user-area placements refer to, in the glob's pixels.
  virtual PixelBox getUserArea() const { return {0, 0, w_, h_}; }
  // Re-applies every child's placement.
  void layoutChildren();
  void setPlacement(const Placement& p) { placement_ = p; }
  const Placement& placement() const noexcept { return placement_; }
  bool containsScreenPoint(XY<int> p) const;

  bool isVisible() const noexcept { return visible_; }
  void setVisible(bool on) { visible_ = on; }
  const Palette& getPalette() const noexcept { return palette_; }
  void setPalette(const Palette& p) { palette_ = p; }
  // The glob's default colour (its palette's base).
  Colour getCol() const { return palette_.base(); }
  Canvas& canvas() noexcept { return canvas_; }
  const Canvas& canvas() const noexcept { return canvas_; }
  // Widgets that are not active show greyed and ignore the mouse.
  bool isActive() const noexcept { return active_; }
  void setActive(bool on, bool redrawNow = true);
  // The text shown while the mouse rests on the glob.
  void setContextString(const LightweightString<wchar_t>& text) { context_ = text; }
  const LightweightString<wchar_t>& getContextString() const noexcept { return context_; }

  // Events. Return true when handled; unhandled mouse events go to the parent.
  virtual bool handleMouseEvent(const Event&) { return false; }
  virtual bool handleKeyEvent(const Event&) { return false; }
  virtual bool handleTimerEvent(const Event&) { return false; }
  // A text message from a child (or a host menu). Unhandled messages go up.
  virtual bool handleMessageEvent(const LightweightString<char>&, Glob*) { return false; }
  // A message with data attached (a tab change, a menu choice).
  virtual bool handleDataMessageEvent(const LightweightString<char>&, Glob*, const void*) { return false; }
  // Sends a message up the tree until someone handles it.
  bool sendMessage(const LightweightString<char>& msg);
  bool sendDataMessage(const LightweightString<char>& msg, const void* data);
  // The context menu that the glob offers for an event (a right click);
  // none by default. MenuGlob::processRightMouseClicks shows it.
  virtual MenuItems getMenuItems(const Event*) { return {}; }

  // The timer interest 4096: while any glob holds it, ticks arrive at 50 Hz.
  static constexpr int timerInterest = 4096;
  void enableTimerInterest();
  void disableTimerInterest();
  int timerInterestCount() const noexcept { return timerHolds_; }

  // Drawing. draw() paints the glob itself (by default, its palette's window
  // colour); children paint over it.
  virtual void draw();
  // Paints the glob and its children now (or at the end of a deferral).
  void redraw();
  // Lays out again at a new size (the unset point (-1234, -1234): the same
  // size) and redraws.
  void reshapeAndDraw(XY<int> size = {-1234, -1234});
  // Raises the glob's root to the top of the screen.
  void popToTop(bool redrawNow);

  // Convenience drawing in the glob's pixels.
  void drawRect(const PixelBox& box, const Colour& c);
  void drawFrame(const PixelBox& box, const Colour& c, int style);
  void drawText(const PixelBox& box, const LightweightString<wchar_t>& text, const Colour& c,
                const LightweightString<char>& font = {}, int alignment = 1, int pointSize = 0);

  virtual LightweightString<char> idstring() const { return "Glob"; }
  // Saves the glob's place and size in a layout record.
  virtual void dump(configb& record) const;

  // Paints this glob's subtree (used by the screen).
  void drawTree();
  // Brings the canvas in line with the glob's place on the screen.
  void updateCanvas();

private:
  Glob* parent_ = nullptr;
  std::vector<Glob*> children_;
  Placement placement_;
  int x_ = 0, y_ = 0;
  uint16_t w_ = 0, h_ = 0;
  bool visible_ = true;
  bool active_ = true;
  int timerHolds_ = 0;
  Palette palette_;
  Canvas canvas_;
  LightweightString<wchar_t> context_;
};

// Redraws can be held off while many changes are made; they are done when
// the last hold is released.
struct FXHOST_API Drawable {
  static void disableRedraws();
  static void enableRedraws();
  static bool redrawsEnabled();
};

namespace Glib {
// Keeps the drawing state (clip, origin) as it was for the scope.
class FXHOST_API StateSaver {
public:
  StateSaver() = default;
  StateSaver(const StateSaver&) = delete;
  StateSaver& operator=(const StateSaver&) = delete;
};
// Defers putting drawing on the screen until the last deferrer ends.
class FXHOST_API UpdateDeferrer {
public:
  UpdateDeferrer();
  ~UpdateDeferrer();
  UpdateDeferrer(const UpdateDeferrer&) = delete;
  UpdateDeferrer& operator=(const UpdateDeferrer&) = delete;
};
} // namespace Glib
