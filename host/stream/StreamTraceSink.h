#pragma once
#include <cstdint>

#include "host/FxHostApi.h"
#include "host/core/LightweightString.h"

// An observer of the layer reader: told of every chunk header it reads and of
// how each chunk ended. Used by diagnostics to show the chunk tree exactly as
// the reader saw it. Calls nest: the chunks of an object stored inside
// another layer's own data arrive between that layer's header and its end.
class FXHOST_API StreamTraceSink {
public:
  struct Header {
    uint64_t offset = 0;          // where the header starts
    uint64_t dataStart = 0;       // where the layer's own data starts
    LightweightString<char> name; // the short name read
    unsigned major = 0, minor = 0;
    uint32_t ownSize = 0, totalSize = 0;
    int format = 0;                        // header encoding in force after the header
    LightweightString<char> expectedLayer; // printable name of the layer being read
  };
  virtual ~StreamTraceSink();
  virtual void chunkHeader(const Header& header) = 0;
  // The result code of the chunk and the position at which it ended.
  virtual void chunkEnd(int resultCode, uint64_t position) = 0;
};
