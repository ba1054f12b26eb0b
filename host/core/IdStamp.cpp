#include "host/core/IdStamp.h"

#include <charconv>

#include "host/stream/StreamFile.h"

LightweightString<char> IdStamp::asString() const { return formatText("%u.%u.%u", a_, b_, c_); }

bool IdStamp::fromString(std::string_view text, IdStamp& out) {
  uint32_t parts[3] = {};
  const char* p = text.data();
  const char* end = text.data() + text.size();
  for (int i = 0; i < 3; ++i) {
    if (p == end || *p < '0' || *p > '9') return false;
    auto [next, ec] = std::from_chars(p, end, parts[i]);
    if (ec != std::errc()) return false;
    p = next;
    if (i < 2) {
      if (p == end || *p != '.') return false;
      ++p;
    }
  }
  if (p != end) return false;
  out = IdStamp(parts[0], parts[1], parts[2]);
  return true;
}

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
