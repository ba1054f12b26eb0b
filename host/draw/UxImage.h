#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "host/FxHostApi.h"
#include "host/core/Colour.h"
#include "host/core/Ptr.h"
#include "host/core/iObject.h"

// A picture in memory: premultiplied ARGB, 32 bits a pixel, rows top first
// (the layout cairo's image surfaces use).
class FXHOST_API UxImage : public iObject {
public:
  UxImage(int width, int height);
  ~UxImage() override;

  int width() const noexcept { return width_; }
  int height() const noexcept { return height_; }
  int stride() const noexcept { return width_ * 4; }
  // The bytes the pixels take, as caches count them.
  std::size_t pixelBytes() const noexcept { return pixels_.size() * sizeof(uint32_t); }
  uint32_t* row(int y) noexcept {
    return pixels_.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width_);
  }
  const uint32_t* row(int y) const noexcept {
    return pixels_.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width_);
  }
  uint32_t* data() noexcept { return pixels_.data(); }
  const uint32_t* data() const noexcept { return pixels_.data(); }

  // The colour at a pixel, x from the left and y from the top, un-premultiplied.
  Colour pixel(int x, int y) const;
  void setPixel(int x, int y, const Colour& c);
  void fill(const Colour& c);

  // Reads a PNG file; null (and the reason) when it cannot.
  static Ux::Ptr<UxImage> loadPNG(const std::string& path, std::string* why = nullptr);
  bool savePNG(const std::string& path) const;
  // A copy scaled to a size (bilinear).
  Ux::Ptr<UxImage> resized(int width, int height) const;

private:
  int width_;
  int height_;
  std::vector<uint32_t> pixels_;
};

// Wraps pixels as an image for drawing.
struct FXHOST_API UxImageWrapper {
  static Ux::Ptr<UxImage> create(const Ux::Ptr<UxImage>& pixels) { return pixels; }
};
