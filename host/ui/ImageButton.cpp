#include "host/ui/ImageButton.h"

#include <algorithm>
#include <map>
#include <mutex>

#include "host/notify/Log.h"

ImageButton::ImageButton(const LightweightString<char>& iconPath, const LightweightString<char>& message, int side)
    : Button({side, side}, message), iconPath_(iconPath), image_(loadIcon(iconPath)) {}

Ux::Ptr<UxImage> ImageButton::loadIcon(const LightweightString<char>& path) {
  static std::mutex mutex;
  static std::map<std::string, Ux::Ptr<UxImage>> cache; // a failed read is kept as null
  std::lock_guard lock(mutex);
  auto it = cache.find(path.str());
  if (it != cache.end()) return it->second;
  std::string why;
  Ux::Ptr<UxImage> image = UxImage::loadPNG(path.str(), &why);
  if (!image) Log::printf("icon %s cannot be read: %s", path.c_str(), why.c_str());
  cache.emplace(path.str(), image);
  return image;
}

void ImageButton::draw() {
  const int w = width(), h = height();
  drawFace({0, 0, w, h});
  const int inset = std::max(2, std::min(w, h) / 8);
  // A pressed face moves its icon down and right by a pixel.
  const int shift = isPressed() ? 1 : 0;
  const PixelBox box{inset + shift, inset - shift, w - inset + shift, h - inset - shift};
  CanvasRenderer r = canvas().renderer();
  if (image_) {
    r.renderPrimitive(Glib::ImageDescription{box, image_});
  } else {
    const NormalisedRGB ink = fromColour(inkColour());
    r.renderPrimitive(Glib::FrameDescription{box, ink, 1});
    r.renderPrimitive(Glib::LineDescription{{box.x0, box.y0}, {box.x1 - 1, box.y1 - 1}, ink, 1});
    r.renderPrimitive(Glib::LineDescription{{box.x0, box.y1 - 1}, {box.x1 - 1, box.y0}, ink, 1});
  }
  // Greyed: the face colour washed over the icon.
  if (!isActive()) {
    Colour wash = getPalette().window(2);
    wash.a = 0.6;
    r.renderPrimitive(Glib::RectDescription{box, fromColour(wash)});
  }
  r.addModifiedArea({0, 0, w, h});
}
