#include "host/render/VideoFormats.h"

#include <algorithm>

const std::vector<VideoFormat>& DigitalVideoFormats::all() {
  static const std::vector<VideoFormat> formats{
      {"1080p", 1920, 1080, 16.0 / 9.0}, {"720p", 1280, 720, 16.0 / 9.0}, {"576p", 1024, 576, 16.0 / 9.0},
      {"480p", 640, 480, 4.0 / 3.0},     {"thumb", 160, 90, 16.0 / 9.0},
  };
  return formats;
}

const VideoFormat* DigitalVideoFormats::findByUID(const std::string& uid) {
  for (const VideoFormat& f : all())
    if (f.uid == uid) return &f;
  return nullptr;
}

VideoFormat DigitalVideoFormats::makeSquarePixelFormat(int width, int height, double aspect) {
  VideoFormat f;
  f.uid = "square:" + std::to_string(width) + "x" + std::to_string(height);
  f.width = std::clamp(width, 0, maxSide);
  f.height = std::clamp(height, 0, maxSide);
  f.aspect = aspect > 0 ? aspect : 16.0 / 9.0;
  return f;
}

Ux::Ptr<UxImage> ImageConverter::resize(const Ux::Ptr<UxImage>& image, int width, int height) {
  if (!image || width <= 0 || height <= 0 || width > DigitalVideoFormats::maxSide ||
      height > DigitalVideoFormats::maxSide)
    return nullptr;
  if (image->width() == width && image->height() == height) return image;
  return image->resized(width, height);
}

Ux::Ptr<UxImage> convertVideo(const Ux::Ptr<UxImage>& image, const VideoFormat& format, bool, bool) {
  if (!format.valid()) return nullptr;
  return ImageConverter::resize(image, format.width, format.height);
}
