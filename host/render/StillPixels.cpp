#include "host/render/StillPixels.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include <cairo.h>
#include <pango/pangocairo.h>

namespace Render::Pixels {
namespace {

struct Rgba {
  double r, g, b, a;
};
Rgba unpack(uint32_t p) {
  return {((p >> 16) & 255) / 255.0, ((p >> 8) & 255) / 255.0, (p & 255) / 255.0, ((p >> 24) & 255) / 255.0};
}
uint32_t pack(const Rgba& c) {
  auto byte = [](double v) { return static_cast<uint32_t>(std::lround(std::clamp(v, 0.0, 1.0) * 255.0)); };
  return byte(c.a) << 24 | byte(c.r) << 16 | byte(c.g) << 8 | byte(c.b);
}

// Draws a picture into a box of a frame (x, y from the top-left, in pixels).
void paste(UxImage& frame, const UxImage& picture, double x, double y, double w, double h) {
  if (w <= 0 || h <= 0 || picture.width() == 0 || picture.height() == 0) return;
  cairo_surface_t* dst =
      cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(frame.data()), CAIRO_FORMAT_ARGB32,
                                          frame.width(), frame.height(), frame.stride());
  cairo_surface_t* src =
      cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(const_cast<uint32_t*>(picture.data())),
                                          CAIRO_FORMAT_ARGB32, picture.width(), picture.height(), picture.stride());
  cairo_t* cr = cairo_create(dst);
  cairo_translate(cr, x, y);
  cairo_scale(cr, w / picture.width(), h / picture.height());
  cairo_set_source_surface(cr, src, 0, 0);
  cairo_pattern_set_filter(cairo_get_source(cr), CAIRO_FILTER_GOOD);
  cairo_paint(cr);
  cairo_destroy(cr);
  cairo_surface_flush(dst);
  cairo_surface_destroy(src);
  cairo_surface_destroy(dst);
}

} // namespace

Image blank(int w, int h) {
  Image image(new UxImage(w, h));
  image->fill(Colour(0, 0, 0, 1));
  return image;
}

// -- sources ------------------------------------------------------------------

Image testCard(const std::string& pattern, int w, int h) {
  Image image(new UxImage(w, h));
  if (pattern == "grid") {
    image->fill(Colour(0.2, 0.2, 0.22));
    const int step = std::max(2, w / 16);
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x)
        if (x % step == 0 || y % step == 0) image->setPixel(x, y, Colour(0.85, 0.85, 0.85));
  } else if (pattern == "ramp") {
    for (int x = 0; x < w; ++x) {
      const double v = w > 1 ? double(x) / (w - 1) : 0;
      for (int y = 0; y < h; ++y) image->setPixel(x, y, Colour(v, v, v));
    }
  } else if (pattern.starts_with("solid:")) {
    double c[3] = {0, 0, 0};
    const char* p = pattern.c_str() + 6;
    for (double& v : c) {
      char* end = nullptr;
      v = std::clamp(std::strtod(p, &end), 0.0, 1.0);
      p = *end == ',' ? end + 1 : end;
    }
    image->fill(Colour(c[0], c[1], c[2]));
  } else {
    // Colour bars, left to right; anything unknown shows bars too.
    static const Colour bars[] = {{1, 1, 1}, {1, 1, 0}, {0, 1, 1}, {0, 1, 0}, {1, 0, 1}, {1, 0, 0}, {0, 0, 1}};
    for (int x = 0; x < w; ++x) {
      const Colour& c = bars[std::min(6, x * 7 / std::max(1, w))];
      for (int y = 0; y < h; ++y) image->setPixel(x, y, c);
    }
  }
  return image;
}

Image fitted(const Image& picture, int w, int h, double aspect, const ARCSettings& arc, bool clearGround) {
  Image frame = clearGround ? Image(new UxImage(w, h)) : blank(w, h);
  if (!picture || picture->width() == 0 || picture->height() == 0) return frame;
  if (arc.fit == ARCSettings::stretch) {
    paste(*frame, *picture, 0, 0, w, h);
    return frame;
  }
  // Shapes compared on screen; the frame's pixels need not be square.
  const double pictureAspect = double(picture->width()) / picture->height();
  const bool fullWidth = (pictureAspect > aspect) == (arc.fit == ARCSettings::letterbox);
  const double pw = fullWidth ? w : w * pictureAspect / aspect;
  const double ph = fullWidth ? h * aspect / pictureAspect : h;
  paste(*frame, *picture, (w - pw) / 2, (h - ph) / 2, pw, ph);
  return frame;
}

Image offline(const std::string& name, int w, int h) {
  Image image(new UxImage(w, h));
  image->fill(Colour(0.22, 0.06, 0.07));
  cairo_surface_t* surface = cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(image->data()),
                                                                 CAIRO_FORMAT_ARGB32, w, h, image->stride());
  cairo_t* cr = cairo_create(surface);
  // Stripes along the edges, so that the card is not taken for a dark frame.
  cairo_set_source_rgb(cr, 0.55, 0.12, 0.12);
  cairo_set_line_width(cr, std::max(2.0, h / 30.0));
  cairo_rectangle(cr, 0, 0, w, h);
  cairo_stroke(cr);
  // The file's name without its folders, which would crowd the card.
  const auto slash = name.find_last_of('/');
  const std::string shown = slash == std::string::npos ? name : name.substr(slash + 1);
  const struct {
    const char* text;
    double size, y;
  } lines[] = {{"Media offline", h / 8.0, 0.42}, {shown.c_str(), h / 16.0, 0.62}};
  for (const auto& line : lines) {
    if (!*line.text || line.size < 3) continue;
    PangoLayout* layout = pango_cairo_create_layout(cr);
    PangoFontDescription* font = pango_font_description_from_string("Sans Bold");
    pango_font_description_set_absolute_size(font, line.size * PANGO_SCALE);
    pango_layout_set_font_description(layout, font);
    pango_font_description_free(font);
    pango_layout_set_text(layout, line.text, -1);
    pango_layout_set_width(layout, static_cast<int>(w * 0.9 * PANGO_SCALE));
    pango_layout_set_ellipsize(layout, PANGO_ELLIPSIZE_MIDDLE);
    pango_layout_set_alignment(layout, PANGO_ALIGN_CENTER);
    int lw = 0, lh = 0;
    pango_layout_get_pixel_size(layout, &lw, &lh);
    cairo_set_source_rgb(cr, 1, 0.92, 0.9);
    cairo_move_to(cr, w * 0.05, h * line.y - lh / 2.0);
    pango_cairo_show_layout(cr, layout);
    g_object_unref(layout);
  }
  cairo_destroy(cr);
  cairo_surface_flush(surface);
  cairo_surface_destroy(surface);
  return image;
}

Image matte(bool flat, const Colour& bottom, const Colour& top, int w, int h) {
  Image image(new UxImage(w, h));
  if (flat) {
    image->fill(bottom);
    return image;
  }
  // From the first colour at the bottom to the second at the top; rows run top first.
  for (int y = 0; y < h; ++y) {
    const double k = h > 1 ? double(h - 1 - y) / (h - 1) : 0;
    const Colour c(bottom.r + (top.r - bottom.r) * k, bottom.g + (top.g - bottom.g) * k,
                   bottom.b + (top.b - bottom.b) * k);
    for (int x = 0; x < w; ++x) image->setPixel(x, y, c);
  }
  return image;
}

// -- effects ------------------------------------------------------------------

Image mix(const Image& a, const Image& b, double amount) {
  amount = std::clamp(amount, 0.0, 1.0);
  Image out(new UxImage(a->width(), a->height()));
  const std::size_t n = static_cast<std::size_t>(a->width()) * a->height();
  for (std::size_t i = 0; i < n; ++i) {
    const Rgba p = unpack(a->data()[i]), q = unpack(b->data()[i]);
    out->data()[i] = pack({p.r + (q.r - p.r) * amount, p.g + (q.g - p.g) * amount, p.b + (q.b - p.b) * amount,
                           p.a + (q.a - p.a) * amount});
  }
  return out;
}

Image wipe(const Image& a, const Image& b, double position) {
  Image out(new UxImage(a->width(), a->height()));
  const int split = static_cast<int>(std::lround(std::clamp(position, 0.0, 1.0) * a->width()));
  for (int y = 0; y < a->height(); ++y)
    for (int x = 0; x < a->width(); ++x) out->row(y)[x] = (x < split ? a : b)->row(y)[x];
  return out;
}

Image pictureInPicture(const Image& fg, const Image& bg, double x, double y, double scale) {
  Image out(new UxImage(bg->width(), bg->height()));
  std::copy_n(bg->data(), static_cast<std::size_t>(bg->width()) * bg->height(), out->data());
  scale = std::clamp(scale, 0.0, 1.0);
  const double w = fg->width() * scale, h = fg->height() * scale;
  paste(*out, *fg, x * bg->width() - w / 2, (1 - y) * bg->height() - h / 2, w, h);
  return out;
}

Image colourCorrect(const Image& in, const std::vector<double>& gain) {
  const double gr = gain.size() > 0 ? gain[0] : 1, gg = gain.size() > 1 ? gain[1] : gr,
               gb = gain.size() > 2 ? gain[2] : gr;
  Image out(new UxImage(in->width(), in->height()));
  const std::size_t n = static_cast<std::size_t>(in->width()) * in->height();
  for (std::size_t i = 0; i < n; ++i) {
    const Rgba p = unpack(in->data()[i]);
    out->data()[i] = pack({std::min(p.a, p.r * gr), std::min(p.a, p.g * gg), std::min(p.a, p.b * gb), p.a});
  }
  return out;
}

// The table maps colour levels, so a pixel that is not opaque is looked up
// without its opacity and premultiplied again.
Image withLUT(const UxImage& image, const ViewLUT& lut) {
  Image out(new UxImage(image.width(), image.height()));
  const std::size_t n = static_cast<std::size_t>(image.width()) * image.height();
  for (std::size_t i = 0; i < n; ++i) {
    const uint32_t p = image.data()[i];
    const uint32_t a = p >> 24;
    if (a == 0) {
      out->data()[i] = p;
      continue;
    }
    auto level = [&](int channel, int shift) {
      uint32_t v = (p >> shift) & 255;
      if (a < 255) v = std::min<uint32_t>(255, (v * 255 + a / 2) / a);
      v = lut.table[static_cast<std::size_t>(channel)][v];
      return (a < 255 ? (v * a + 127) / 255 : v) << shift;
    };
    out->data()[i] = (p & 0xFF000000u) | level(0, 16) | level(1, 8) | level(2, 0);
  }
  return out;
}

} // namespace Render::Pixels
