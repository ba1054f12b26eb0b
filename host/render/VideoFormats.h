#pragma once
#include <string>
#include <vector>

#include "host/FxHostApi.h"
#include "host/core/Ptr.h"
#include "host/draw/UxImage.h"

// A picture format: a size in pixels and the picture's aspect ratio.
struct FXHOST_API VideoFormat {
  std::string uid;
  int width = 0;
  int height = 0;
  double aspect = 16.0 / 9.0;
  bool valid() const noexcept { return width > 0 && height > 0; }
};

// The picture formats the host knows, by id, and conversions between them.
class FXHOST_API DigitalVideoFormats {
public:
  // The largest side a picture may have; bigger requests are refused.
  static constexpr int maxSide = 8192;

  static const VideoFormat* findByUID(const std::string& uid);
  static const std::vector<VideoFormat>& all();
  // A format of that size whose pixels are square for the given aspect.
  static VideoFormat makeSquarePixelFormat(int width, int height, double aspect);
};

// The picture converted into a format (resized); null for an invalid format.
// Polarity and scan mode do not arise with the host's progressive pictures.
FXHOST_API Ux::Ptr<UxImage> convertVideo(const Ux::Ptr<UxImage>& image, const VideoFormat& format, bool keepPolarity,
                                         bool keepScanMode);

struct FXHOST_API ImageConverter {
  // A copy at the size (null for an absurd size); the same image when it already is.
  static Ux::Ptr<UxImage> resize(const Ux::Ptr<UxImage>& image, int width, int height);
};
