// IdStamp's stream form lives with the streams: the core type knows nothing
// of them.
#include "host/core/IdStamp.h"
#include "host/stream/StreamFile.h"

void IdStamp::pack(StreamFile& s) const {
  s.setUnsignedLong(a_);
  s.setUnsignedLong(b_);
  s.setUnsignedLong(c_);
}

void IdStamp::unpack(StreamFile& s, unsigned char encoding) {
  if (encoding != currentEncoding) {
    s.failRead(formatText(" Unknown IdStamp encoding %u.", static_cast<unsigned>(encoding)));
    return;
  }
  const uint32_t a = s.getUnsignedLong();
  const uint32_t b = s.getUnsignedLong();
  const uint32_t c = s.getUnsignedLong();
  if (!s.error()) *this = IdStamp(a, b, c);
}
