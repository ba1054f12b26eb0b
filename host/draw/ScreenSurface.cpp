#include "host/draw/ScreenSurface.h"

// Map
//   set-up and size ..... the image surface and its flipped transform
//   primitives .......... rectangles, frames, curves, discs, text, images, lines
//   output .............. snapshots, PNG, SVG
#include <algorithm>
#include <cmath>

#include <cairo-svg.h>
#include <cairo.h>
#include <pango/pangocairo.h>

#include "host/stream/AtomicFiles.h"

namespace {

void setColour(cairo_t* cr, const NormalisedRGB& c) { cairo_set_source_rgba(cr, c.r, c.g, c.b, c.a); }

Glib::PixelBox normalised(const Glib::PixelBox& b) {
  return {std::min(b.x0, b.x1), std::min(b.y0, b.y1), std::max(b.x0, b.x1), std::max(b.y0, b.y1)};
}

std::string fontFamily(const LightweightString<char>& font) {
  // "helv" is the toolkit's name for its plain sans-serif face.
  if (font.empty() || font == "helv") return ScreenSurface::defaultFont();
  return font.str();
}

} // namespace

ScreenSurface::ScreenSurface(int width, int height) : width_(0), height_(0) { resize(width, height); }

ScreenSurface::~ScreenSurface() {
  endSVG();
  if (context_) cairo_destroy(context_);
  if (surface_) cairo_surface_destroy(surface_);
}

void ScreenSurface::resize(int width, int height) {
  if (context_) cairo_destroy(context_);
  if (surface_) cairo_surface_destroy(surface_);
  width_ = std::clamp(width, 1, 16384);
  height_ = std::clamp(height, 1, 16384);
  surface_ = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width_, height_);
  context_ = cairo_create(surface_);
  // Bottom-up pixels: y grows upwards from the bottom edge.
  cairo_matrix_t flip;
  cairo_matrix_init(&flip, 1, 0, 0, -1, 0, height_);
  cairo_set_matrix(context_, &flip);
  modified_.clear();
  modified_.push_back({0, 0, width_, height_});
}

bool ScreenSurface::begin(const Glib::PixelBox& clipBox) {
  const Glib::PixelBox clip = normalised(clipBox);
  if (clip.x1 <= clip.x0 || clip.y1 <= clip.y0) return false;
  cairo_t* cr = context();
  cairo_save(cr);
  cairo_rectangle(cr, clip.x0, clip.y0, clip.x1 - clip.x0, clip.y1 - clip.y0);
  cairo_clip(cr);
  return true;
}

bool ScreenSurface::begin(const Glib::PixelBox& clipBox, const Glib::PixelBox& reach) {
  const Glib::PixelBox clip = normalised(clipBox);
  if (clip.x1 <= clip.x0 || clip.y1 <= clip.y0) return false;
  // What cannot touch the clip draws nothing; what lies wholly inside it
  // draws the same pixels without it, and setting a clip costs cairo more
  // than a short wire or a small box does.
  if (reach.x1 <= clip.x0 || reach.x0 >= clip.x1 || reach.y1 <= clip.y0 || reach.y0 >= clip.y1) return false;
  if (reach.x0 >= clip.x0 && reach.y0 >= clip.y0 && reach.x1 <= clip.x1 && reach.y1 <= clip.y1) {
    cairo_save(context());
    return true;
  }
  return begin(clip);
}

void ScreenSurface::end() { cairo_restore(context()); }

void ScreenSurface::draw(const Glib::RectDescription& d, const Glib::PixelBox& clip) {
  if (recorder_) recorder_->push_back({d, clip});
  const Glib::PixelBox b = normalised(d.box);
  if (!begin(clip, b)) return;
  cairo_t* cr = context();
  setColour(cr, d.colour);
  cairo_rectangle(cr, b.x0, b.y0, b.x1 - b.x0, b.y1 - b.y0);
  cairo_fill(cr);
  end();
}

void ScreenSurface::draw(const Glib::FrameDescription& d, const Glib::PixelBox& clip) {
  if (recorder_) recorder_->push_back({d, clip});
  const Glib::PixelBox b = normalised(d.box);
  if (!begin(clip, {b.x0 - 1, b.y0 - 1, b.x1 + 1, b.y1 + 1})) return;
  cairo_t* cr = context();
  cairo_set_line_width(cr, 1);
  if (d.style == 2) {
    // Raised: light along the top and left, dark along the bottom and right.
    const Palette p(Colour(d.colour.r, d.colour.g, d.colour.b, d.colour.a));
    setColour(cr, fromColour(p.window(1)));
    cairo_move_to(cr, b.x0 + 0.5, b.y0 + 0.5);
    cairo_line_to(cr, b.x0 + 0.5, b.y1 - 0.5);
    cairo_line_to(cr, b.x1 - 0.5, b.y1 - 0.5);
    cairo_stroke(cr);
    setColour(cr, fromColour(p.window(6)));
    cairo_move_to(cr, b.x1 - 0.5, b.y1 - 0.5);
    cairo_line_to(cr, b.x1 - 0.5, b.y0 + 0.5);
    cairo_line_to(cr, b.x0 + 0.5, b.y0 + 0.5);
    cairo_stroke(cr);
  } else {
    setColour(cr, d.colour);
    cairo_rectangle(cr, b.x0 + 0.5, b.y0 + 0.5, std::max(0, b.x1 - b.x0 - 1), std::max(0, b.y1 - b.y0 - 1));
    cairo_stroke(cr);
  }
  end();
}

void ScreenSurface::draw(const Glib::BezierCurveDescription& d, const Glib::PixelBox& clip) {
  if (recorder_) recorder_->push_back({d, clip});
  // The curve lies within its points' box; the line and its round caps
  // reach half the width past it, and smoothing a pixel more.
  const int pad = std::max<int>(1, d.thickness) + 2;
  if (!begin(clip, {std::min({d.start.x, d.end.x, d.control1.x, d.control2.x}) - pad,
                    std::min({d.start.y, d.end.y, d.control1.y, d.control2.y}) - pad,
                    std::max({d.start.x, d.end.x, d.control1.x, d.control2.x}) + pad,
                    std::max({d.start.y, d.end.y, d.control1.y, d.control2.y}) + pad}))
    return;
  cairo_t* cr = context();
  setColour(cr, d.colour);
  cairo_set_line_width(cr, std::max<int>(1, d.thickness));
  cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
  cairo_move_to(cr, d.start.x + 0.5, d.start.y + 0.5);
  cairo_curve_to(cr, d.control1.x + 0.5, d.control1.y + 0.5, d.control2.x + 0.5, d.control2.y + 0.5, d.end.x + 0.5,
                 d.end.y + 0.5);
  cairo_stroke(cr);
  end();
}

void ScreenSurface::draw(const Glib::DiscDescription& d, const Glib::PixelBox& clip) {
  if (recorder_) recorder_->push_back({d, clip});
  const int reach = d.radius + std::max<int>(1, d.thickness) + 2;
  if (d.radius <= 0 || !begin(clip, {d.centre.x - reach, d.centre.y - reach, d.centre.x + reach, d.centre.y + reach}))
    return;
  cairo_t* cr = context();
  setColour(cr, d.colour);
  const double a0 = d.startAngle * M_PI / 180.0;
  const double a1 = d.endAngle * M_PI / 180.0;
  const double cx = d.centre.x + 0.5, cy = d.centre.y + 0.5;
  if (d.outline) {
    cairo_set_line_width(cr, std::max<int>(1, d.thickness));
    cairo_arc(cr, cx, cy, d.radius - 0.5, a0, a1);
    cairo_stroke(cr);
  } else {
    if (d.endAngle - d.startAngle < 360) cairo_move_to(cr, cx, cy);
    cairo_arc(cr, cx, cy, d.radius, a0, a1);
    cairo_close_path(cr);
    cairo_fill(cr);
  }
  end();
}

void ScreenSurface::draw(const Glib::TextDescription& d, const Glib::PixelBox& clipBox) {
  if (recorder_) recorder_->push_back({d, clipBox});
  const Glib::PixelBox box = normalised(d.box);
  const Glib::PixelBox clip = normalised(clipBox);
  const Glib::PixelBox both{std::max(box.x0, clip.x0), std::max(box.y0, clip.y0), std::min(box.x1, clip.x1),
                            std::min(box.y1, clip.y1)};
  if (d.text.empty() || !begin(both)) return;
  cairo_t* cr = context();
  PangoLayout* layout = pango_cairo_create_layout(cr);
  const int height = box.y1 - box.y0;
  const int points = d.pointSize > 0 ? d.pointSize : std::max(5, std::min(defaultPointSize, height * 3 / 4));
  PangoFontDescription* font = pango_font_description_from_string(fontFamily(d.font).c_str());
  pango_font_description_set_absolute_size(font, points * PANGO_SCALE * 96.0 / 72.0);
  pango_layout_set_font_description(layout, font);
  const std::string utf8 = toUTF8(d.text).str();
  pango_layout_set_text(layout, utf8.c_str(), -1);
  pango_layout_set_ellipsize(layout, PANGO_ELLIPSIZE_END);
  pango_layout_set_width(layout, std::max(1, box.x1 - box.x0) * PANGO_SCALE);
  pango_layout_set_alignment(layout, d.alignment == 0   ? PANGO_ALIGN_LEFT
                                     : d.alignment == 2 ? PANGO_ALIGN_RIGHT
                                                        : PANGO_ALIGN_CENTER);
  int tw = 0, th = 0;
  pango_layout_get_pixel_size(layout, &tw, &th);
  // Text is laid out top-down: flip back for it, with its top at the box's
  // vertical centre plus half its height.
  cairo_save(cr);
  cairo_translate(cr, box.x0, (box.y0 + box.y1) / 2.0 + th / 2.0);
  cairo_scale(cr, 1, -1);
  setColour(cr, d.colour);
  pango_cairo_update_layout(cr, layout);
  pango_cairo_show_layout(cr, layout);
  cairo_restore(cr);
  pango_font_description_free(font);
  g_object_unref(layout);
  end();
}

XY<int> ScreenSurface::textSize(const LightweightString<wchar_t>& text, const LightweightString<char>& fontName,
                                int pointSize) {
  PangoLayout* layout = pango_cairo_create_layout(context_);
  PangoFontDescription* font = pango_font_description_from_string(fontFamily(fontName).c_str());
  pango_font_description_set_absolute_size(font,
                                           (pointSize > 0 ? pointSize : defaultPointSize) * PANGO_SCALE * 96.0 / 72.0);
  pango_layout_set_font_description(layout, font);
  const std::string utf8 = toUTF8(text).str();
  pango_layout_set_text(layout, utf8.c_str(), -1);
  int w = 0, h = 0;
  pango_layout_get_pixel_size(layout, &w, &h);
  pango_font_description_free(font);
  g_object_unref(layout);
  return {w, h};
}

void ScreenSurface::draw(const Glib::ImageDescription& d, const Glib::PixelBox& clip) {
  if (recorder_) recorder_->push_back({d, clip});
  const Glib::PixelBox b = normalised(d.box);
  if (!d.image || d.image->width() == 0 || d.image->height() == 0 || b.x1 <= b.x0 || b.y1 <= b.y0 || !begin(clip))
    return;
  cairo_t* cr = context();
  UxImage& image = *d.image;
  cairo_surface_t* src =
      cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(image.data()), CAIRO_FORMAT_ARGB32,
                                          image.width(), image.height(), image.stride());
  cairo_save(cr);
  // Image rows run top first: place the image's top at the box's top.
  cairo_translate(cr, b.x0, b.y1);
  cairo_scale(cr, double(b.x1 - b.x0) / image.width(), -double(b.y1 - b.y0) / image.height());
  cairo_set_source_surface(cr, src, 0, 0);
  cairo_pattern_set_filter(cairo_get_source(cr), CAIRO_FILTER_GOOD);
  cairo_paint(cr);
  cairo_restore(cr);
  cairo_surface_destroy(src);
  end();
}

void ScreenSurface::draw(const Glib::LineDescription& d, const Glib::PixelBox& clip) {
  if (recorder_) recorder_->push_back({d, clip});
  const int pad = std::max<int>(1, d.thickness) + 2;
  if (!begin(clip, {std::min(d.from.x, d.to.x) - pad, std::min(d.from.y, d.to.y) - pad,
                    std::max(d.from.x, d.to.x) + pad, std::max(d.from.y, d.to.y) + pad}))
    return;
  cairo_t* cr = context();
  setColour(cr, d.colour);
  cairo_set_line_width(cr, std::max<int>(1, d.thickness));
  cairo_move_to(cr, d.from.x + 0.5, d.from.y + 0.5);
  cairo_line_to(cr, d.to.x + 0.5, d.to.y + 0.5);
  cairo_stroke(cr);
  end();
}

void ScreenSurface::addModifiedArea(const Glib::PixelBox& box) {
  // A frame of a large graph touches hundreds of thousands of areas, and
  // nobody may take them (a run without a window): past a few dozen they are
  // kept as the one box round them all, so the list never grows with the graph.
  constexpr std::size_t kept = 64;
  const Glib::PixelBox b = normalised(box);
  if (modified_.size() < kept) {
    modified_.push_back(b);
    return;
  }
  Glib::PixelBox all = b;
  for (const Glib::PixelBox& m : modified_)
    all = {std::min(all.x0, m.x0), std::min(all.y0, m.y0), std::max(all.x1, m.x1), std::max(all.y1, m.y1)};
  modified_.assign(1, all);
}

std::vector<Glib::PixelBox> ScreenSurface::takeModifiedAreas() {
  std::vector<Glib::PixelBox> out;
  out.swap(modified_);
  return out;
}

Ux::Ptr<UxImage> ScreenSurface::snapshot() const {
  cairo_surface_flush(surface_);
  Ux::Ptr<UxImage> image(new UxImage(width_, height_));
  const unsigned char* src = cairo_image_surface_get_data(surface_);
  const int stride = cairo_image_surface_get_stride(surface_);
  for (int y = 0; y < height_; ++y)
    std::copy_n(reinterpret_cast<const uint32_t*>(src + static_cast<std::ptrdiff_t>(y) * stride), width_,
                image->row(y));
  return image;
}

namespace {

// Cairo writes pictures in pieces: they are gathered in memory and the
// file is written whole.
cairo_status_t gather(void* closure, const unsigned char* data, unsigned int length) {
  static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
  return CAIRO_STATUS_SUCCESS;
}

} // namespace

bool ScreenSurface::writePNG(const std::string& path, std::string* why) const {
  cairo_surface_flush(surface_);
  std::string bytes, reason;
  if (cairo_surface_write_to_png_stream(surface_, gather, &bytes) != CAIRO_STATUS_SUCCESS) {
    if (why) *why = path + ": cannot make the picture";
    return false;
  }
  if (writeFileAtomically(path, bytes, reason)) return true;
  if (why) *why = reason;
  return false;
}

bool ScreenSurface::beginSVG(const std::string& path) {
  endSVG();
  svgPath_ = path;
  svgBytes_.clear();
  svg_ = cairo_svg_surface_create_for_stream(gather, &svgBytes_, width_, height_);
  if (cairo_surface_status(svg_) != CAIRO_STATUS_SUCCESS) {
    cairo_surface_destroy(svg_);
    svg_ = nullptr;
    return false;
  }
  svgContext_ = cairo_create(svg_);
  cairo_matrix_t flip;
  cairo_matrix_init(&flip, 1, 0, 0, -1, 0, height_);
  cairo_set_matrix(svgContext_, &flip);
  return true;
}

bool ScreenSurface::endSVG(std::string* why) {
  if (!svg_) return false;
  cairo_destroy(svgContext_);
  cairo_surface_finish(svg_);
  const bool made = cairo_surface_status(svg_) == CAIRO_STATUS_SUCCESS;
  cairo_surface_destroy(svg_);
  svg_ = nullptr;
  svgContext_ = nullptr;
  std::string reason = svgPath_ + ": cannot make the picture";
  const bool ok = made && writeFileAtomically(svgPath_, svgBytes_, reason);
  if (!ok && why) *why = reason;
  svgBytes_.clear();
  return ok;
}
