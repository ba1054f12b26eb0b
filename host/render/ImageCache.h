#pragma once
#include <string>

#include "host/FxHostApi.h"
#include "host/core/Ptr.h"
#include "host/draw/UxImage.h"
#include "host/render/VideoFormats.h"

// The process-wide cache of picture files, by path and size. A picture is
// read once; asking for another size resizes the one read.
class FXHOST_API ImageCache {
public:
  // The file's picture at the size (0 x 0: as stored); null, with a warning
  // in the host log, when the file cannot be read.
  static Ux::Ptr<UxImage> loadImage(const std::string& file, const VideoFormat* format, int width, int height);
  static void clear();
  // Files read from disk so far (each file once while cached).
  static unsigned filesRead();
};
