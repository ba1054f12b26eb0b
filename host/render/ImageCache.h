#pragma once
#include <string>

#include "host/FxHostApi.h"
#include "host/core/Ptr.h"
#include "host/draw/UxImage.h"
#include "host/render/VideoFormats.h"

// The process-wide cache of picture files (PNG), by path and size. A file is
// read once while it is unchanged on disk (same modification time and
// length); asking for another size resizes the picture read. The least
// recently used pictures go first beyond a byte budget. Pictures handed out
// are shared: callers must not change them.
class FXHOST_API ImageCache {
public:
  // Pixel bytes kept at most.
  static constexpr std::size_t byteBudget = std::size_t(128) << 20;

  // The file's picture at the size (0 x 0: as stored); null, with a warning
  // in the host log (once until the file changes), when the file is missing,
  // is not a PNG picture, or is larger than DigitalVideoFormats::maxSide a
  // side; null for an absurd size. Every picture is 8-bit ARGB, whatever
  // `format` asks.
  static Ux::Ptr<UxImage> loadImage(const std::string& file, const VideoFormat* format, int width, int height);
  static void clear();
  // Makes the cache now: what is made after it (the stills workers that
  // read through it) is torn down before it at exit.
  static void makeNow();
};
