#pragma once
#include "host/FxHostApi.h"
#include "host/draw/Primitives.h"
#include "host/draw/ScreenSurface.h"

class CanvasRenderer;

// Where one glob draws: its place on the screen, whether it may draw at all,
// and a clip rectangle in its own pixels (empty: its whole area).
class FXHOST_API Canvas {
public:
  bool isDrawable() const noexcept { return drawable_ && surface_ != nullptr; }
  void setDrawable(bool on) noexcept { drawable_ = on; }
  const Glib::PixelBox& getClipRect() const noexcept { return clip_; }
  void setClipRect(const Glib::PixelBox& box) noexcept { clip_ = box; }
  void resetClipRect() noexcept { clip_ = {}; }

  // The glob's bottom-left corner on the screen and its size.
  XY<int> origin() const noexcept { return origin_; }
  XY<int> size() const noexcept { return size_; }
  void place(XY<int> origin, XY<int> size, ScreenSurface* surface) noexcept {
    origin_ = origin;
    size_ = size;
    surface_ = surface;
  }
  ScreenSurface* surface() const noexcept { return surface_; }

  CanvasRenderer renderer() const;

private:
  bool drawable_ = true;
  Glib::PixelBox clip_;
  XY<int> origin_;
  XY<int> size_;
  ScreenSurface* surface_ = nullptr;
};

// Draws primitives given in a canvas's own pixels, kept inside the canvas and
// its clip rectangle; nothing is drawn on a canvas that is not drawable.
class FXHOST_API CanvasRenderer {
public:
  explicit CanvasRenderer(const Canvas& canvas) : canvas_(canvas) {}

  template <class Description>
  void renderPrimitive(Description d) {
    if (!canvas_.isDrawable()) return;
    shift(d);
    canvas_.surface()->draw(d, screenClip());
  }
  // Reports an area (canvas pixels) as changed on the screen.
  void addModifiedArea(const Glib::PixelBox& box);
  XY<int> textSize(const LightweightString<wchar_t>& text, const LightweightString<char>& font = {},
                   int pointSize = 0) const;

private:
  Glib::PixelBox toScreen(const Glib::PixelBox& b) const {
    const XY<int> o = canvas_.origin();
    return {b.x0 + o.x, b.y0 + o.y, b.x1 + o.x, b.y1 + o.y};
  }
  XY<int> toScreen(XY<int> p) const { return p + canvas_.origin(); }
  Glib::PixelBox screenClip() const;
  void shift(Glib::RectDescription& d) const { d.box = toScreen(d.box); }
  void shift(Glib::FrameDescription& d) const { d.box = toScreen(d.box); }
  void shift(Glib::TextDescription& d) const { d.box = toScreen(d.box); }
  void shift(Glib::ImageDescription& d) const { d.box = toScreen(d.box); }
  void shift(Glib::DiscDescription& d) const { d.centre = toScreen(d.centre); }
  void shift(Glib::LineDescription& d) const {
    d.from = toScreen(d.from);
    d.to = toScreen(d.to);
  }
  void shift(Glib::BezierCurveDescription& d) const {
    d.start = toScreen(d.start);
    d.end = toScreen(d.end);
    d.control1 = toScreen(d.control1);
    d.control2 = toScreen(d.control2);
  }

  const Canvas& canvas_;
};
