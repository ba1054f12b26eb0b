#include "host/core/IdStamp.h"

#include <charconv>

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
