#include "host/draw/Canvas.h"

#include <algorithm>

CanvasRenderer Canvas::renderer() const { return CanvasRenderer(*this); }

Glib::PixelBox CanvasRenderer::screenClip() const {
  Glib::PixelBox area{0, 0, canvas_.size().x, canvas_.size().y};
  const Glib::PixelBox& clip = canvas_.getClipRect();
  if (clip.x1 > clip.x0 && clip.y1 > clip.y0)
    area = {std::max(area.x0, clip.x0), std::max(area.y0, clip.y0), std::min(area.x1, clip.x1),
            std::min(area.y1, clip.y1)};
  return toScreen(area);
}

void CanvasRenderer::addModifiedArea(const Glib::PixelBox& box) {
  if (canvas_.surface()) canvas_.surface()->addModifiedArea(toScreen(box));
}

XY<int> CanvasRenderer::textSize(const LightweightString<wchar_t>& text, const LightweightString<char>& font,
                                 int pointSize) const {
  return canvas_.surface() ? canvas_.surface()->textSize(text, font, pointSize) : XY<int>();
}
