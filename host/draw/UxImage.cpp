#include "host/draw/UxImage.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include <cairo.h>

namespace {
uint8_t channel(double v) { return static_cast<uint8_t>(std::lround(std::clamp(v, 0.0, 1.0) * 255.0)); }
} // namespace

UxImage::UxImage(int width, int height)
    : width_(std::max(0, width)), height_(std::max(0, height)),
      pixels_(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_), 0u) {}

UxImage::~UxImage() = default;

Colour UxImage::pixel(int x, int y) const {
  if (x < 0 || y < 0 || x >= width_ || y >= height_) return {};
  const uint32_t p = row(y)[x];
  const double a = ((p >> 24) & 255) / 255.0;
  if (a == 0) return Colour(0, 0, 0, 0);
  return Colour(((p >> 16) & 255) / 255.0 / a, ((p >> 8) & 255) / 255.0 / a, (p & 255) / 255.0 / a, a);
}

void UxImage::setPixel(int x, int y, const Colour& c) {
  if (x < 0 || y < 0 || x >= width_ || y >= height_) return;
  row(y)[x] = uint32_t(channel(c.a)) << 24 | uint32_t(channel(c.r * c.a)) << 16 | uint32_t(channel(c.g * c.a)) << 8 |
              uint32_t(channel(c.b * c.a));
}

void UxImage::fill(const Colour& c) {
  if (pixels_.empty()) return;
  setPixel(0, 0, c);
  std::fill(pixels_.begin(), pixels_.end(), pixels_.front());
}

Ux::Ptr<UxImage> UxImage::loadPNG(const std::string& path, std::string* why) {
  cairo_surface_t* s = cairo_image_surface_create_from_png(path.c_str());
  if (cairo_surface_status(s) != CAIRO_STATUS_SUCCESS) {
    if (why) *why = path + ": " + cairo_status_to_string(cairo_surface_status(s));
    cairo_surface_destroy(s);
    return nullptr;
  }
  // Whatever format the file had, draw it onto ARGB.
  const int w = cairo_image_surface_get_width(s);
  const int h = cairo_image_surface_get_height(s);
  Ux::Ptr<UxImage> image(new UxImage(w, h));
  cairo_surface_t* target = cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(image->data()),
                                                                CAIRO_FORMAT_ARGB32, w, h, image->stride());
  cairo_t* cr = cairo_create(target);
  cairo_set_source_surface(cr, s, 0, 0);
  cairo_set_operator(cr, CAIRO_OPERATOR_SOURCE);
  cairo_paint(cr);
  cairo_destroy(cr);
  cairo_surface_flush(target);
  cairo_surface_destroy(target);
  cairo_surface_destroy(s);
  return image;
}

bool UxImage::savePNG(const std::string& path) const {
  cairo_surface_t* s = cairo_image_surface_create_for_data(
      reinterpret_cast<unsigned char*>(const_cast<uint32_t*>(data())), CAIRO_FORMAT_ARGB32, width_, height_, stride());
  const bool ok = cairo_surface_write_to_png(s, path.c_str()) == CAIRO_STATUS_SUCCESS;
  cairo_surface_destroy(s);
  return ok;
}

Ux::Ptr<UxImage> UxImage::resized(int width, int height) const {
  Ux::Ptr<UxImage> out(new UxImage(width, height));
  if (width_ == 0 || height_ == 0 || width <= 0 || height <= 0) return out;
  cairo_surface_t* src = cairo_image_surface_create_for_data(
      reinterpret_cast<unsigned char*>(const_cast<uint32_t*>(data())), CAIRO_FORMAT_ARGB32, width_, height_, stride());
  cairo_surface_t* dst = cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(out->data()),
                                                             CAIRO_FORMAT_ARGB32, width, height, out->stride());
  cairo_t* cr = cairo_create(dst);
  cairo_scale(cr, double(width) / width_, double(height) / height_);
  cairo_set_source_surface(cr, src, 0, 0);
  cairo_pattern_set_filter(cairo_get_source(cr), CAIRO_FILTER_BILINEAR);
  cairo_pattern_set_extend(cairo_get_source(cr), CAIRO_EXTEND_PAD);
  cairo_set_operator(cr, CAIRO_OPERATOR_SOURCE);
  cairo_paint(cr);
  cairo_destroy(cr);
  cairo_surface_flush(dst);
  cairo_surface_destroy(dst);
  cairo_surface_destroy(src);
  return out;
}
