#pragma once
#include <cstddef>
#include <cstdint>
#include <string>

#include "host/FxHostApi.h"
#include "host/core/Ptr.h"
#include "host/draw/UxImage.h"

// The media files pictures are read from, shared by every thread of the
// process. A few files are kept open (the least recently used closed first),
// each decoding for one thread at a time while other files decode beside it;
// decoded frames are kept to a byte budget, so thumbnails along a clip cost
// a decode once. A file that changes on disk is read again; one that cannot
// be read is not tried again until it changes.
class FXHOST_API MediaFiles {
public:
  static constexpr std::size_t maxOpenFiles = 8;
  static constexpr std::size_t frameBytes = std::size_t(64) << 20;

  struct Frame {
    Ux::Ptr<UxImage> image; // shared: not to be drawn on
    std::string why;        // why there is no image
  };
  // The frame of the file shown at a time (MediaDecoder::frameAt).
  static Frame frameAt(const std::string& path, double seconds);
  // Closes every file and forgets every frame and failure.
  static void clear();

  struct Stats {
    // Totals since the process started.
    int64_t opens = 0; // files opened, or tried
    int64_t seeks = 0;
    int64_t framesDecoded = 0;
    int64_t framesConverted = 0;
    int64_t cacheHits = 0; // frames given from those kept
    // Now.
    std::size_t openFiles = 0;
    std::size_t keptFrames = 0;
    std::size_t keptBytes = 0;
  };
  static Stats stats();
};
