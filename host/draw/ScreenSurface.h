#pragma once
#include <string>
#include <variant>
#include <vector>

#include "host/FxHostApi.h"
#include "host/draw/Primitives.h"

typedef struct _cairo cairo_t;
typedef struct _cairo_surface cairo_surface_t;

// The drawing surface of the whole screen: a cairo image surface (or an SVG
// surface while the screen is written as SVG) on which primitives are drawn in
// bottom-up screen pixels. The flip to cairo's top-down space happens here,
// once. Remembers the areas drawn since they were last taken.
class FXHOST_API ScreenSurface {
public:
  ScreenSurface(int width, int height);
  ~ScreenSurface();
  ScreenSurface(const ScreenSurface&) = delete;
  ScreenSurface& operator=(const ScreenSurface&) = delete;

  int width() const noexcept { return width_; }
  int height() const noexcept { return height_; }
  // A new size; the picture is cleared.
  void resize(int width, int height);

  // Every primitive is clipped to `clip` (screen pixels); an empty clip draws nothing.
  void draw(const Glib::RectDescription& d, const Glib::PixelBox& clip);
  void draw(const Glib::FrameDescription& d, const Glib::PixelBox& clip);
  void draw(const Glib::BezierCurveDescription& d, const Glib::PixelBox& clip);
  void draw(const Glib::DiscDescription& d, const Glib::PixelBox& clip);
  void draw(const Glib::TextDescription& d, const Glib::PixelBox& clip);
  void draw(const Glib::ImageDescription& d, const Glib::PixelBox& clip);
  void draw(const Glib::LineDescription& d, const Glib::PixelBox& clip);

  // The pixel size of a text in a font (empty: the default) at a point size.
  XY<int> textSize(const LightweightString<wchar_t>& text, const LightweightString<char>& font, int pointSize);

  // What was drawn, kept while a recorder is set (for comparing a frame with
  // the same primitives drawn another way).
  using Primitive =
      std::variant<Glib::RectDescription, Glib::FrameDescription, Glib::BezierCurveDescription, Glib::DiscDescription,
                   Glib::TextDescription, Glib::ImageDescription, Glib::LineDescription>;
  struct Recorded {
    Primitive primitive;
    Glib::PixelBox clip;
  };
  void setRecorder(std::vector<Recorded>* recorder) noexcept { recorder_ = recorder; }

  void addModifiedArea(const Glib::PixelBox& box);
  // The areas drawn since the last call (at most a few dozen: beyond that,
  // the box round them), and forgets them.
  std::vector<Glib::PixelBox> takeModifiedAreas();

  // The picture as it is now (rows top first).
  Ux::Ptr<UxImage> snapshot() const;
  // Writes the picture as a PNG file whole or not at all; false with the
  // reason when it cannot.
  bool writePNG(const std::string& path, std::string* why = nullptr) const;

  // Draws into an SVG document instead of the image until endSVG(), which
  // writes it to the file whole or not at all (false, with the reason, when
  // it cannot); the caller draws the whole screen in between.
  bool beginSVG(const std::string& path);
  bool endSVG(std::string* why = nullptr);

  // The default font family and the size of text in widgets.
  static const char* defaultFont() noexcept { return "Sans"; }
  static constexpr int defaultPointSize = 9;

private:
  cairo_t* context() const noexcept { return svg_ ? svgContext_ : context_; }
  bool begin(const Glib::PixelBox& clip);
  // The same for a primitive that reaches no further than `reach` (normalised).
  bool begin(const Glib::PixelBox& clip, const Glib::PixelBox& reach);
  void end();

  int width_;
  int height_;
  cairo_surface_t* surface_ = nullptr;
  cairo_t* context_ = nullptr;
  cairo_surface_t* svg_ = nullptr;
  cairo_t* svgContext_ = nullptr;
  std::string svgPath_, svgBytes_;
  std::vector<Glib::PixelBox> modified_;
  std::vector<Recorded>* recorder_ = nullptr;
};
