#pragma once
#include <compare>
#include <cstdint>
#include <functional>

#include "host/FxHostApi.h"
#include "host/core/LightweightString.h"

class StreamFile;

// Identifier of an edit object (a graph node, a channel). Three unsigned
// 32-bit numbers; (0, 0, 0) is the invalid id. Text form "a.b.c".
class FXHOST_API IdStamp {
public:
  // The encoding byte written before pack()'s numbers.
  static constexpr unsigned char currentEncoding = 2;

  constexpr IdStamp() noexcept = default;
  constexpr IdStamp(uint32_t a, uint32_t b, uint32_t c) noexcept : a_(a), b_(b), c_(c) {}

  constexpr bool valid() const noexcept { return a_ != 0 || b_ != 0 || c_ != 0; }
  constexpr uint32_t first() const noexcept { return a_; }
  constexpr uint32_t second() const noexcept { return b_; }
  constexpr uint32_t third() const noexcept { return c_; }

  LightweightString<char> asString() const;
  // Parses "a.b.c" (decimal, each within 32 bits); false leaves `out` alone.
  static bool fromString(std::string_view text, IdStamp& out);

  // Writes the three numbers (the caller writes the encoding byte first).
  // Defined with the streams (host/stream/IdStampPacking.cpp).
  void pack(StreamFile& s) const;
  // Reads the numbers of the given encoding; an unknown encoding sets the
  // stream's error with a message and leaves the id unchanged.
  void unpack(StreamFile& s, unsigned char encoding);

  friend constexpr auto operator<=>(const IdStamp&, const IdStamp&) = default;
  friend constexpr bool operator==(const IdStamp&, const IdStamp&) = default;

private:
  uint32_t a_ = 0, b_ = 0, c_ = 0;
};

template <>
struct std::hash<IdStamp> {
  std::size_t operator()(const IdStamp& id) const noexcept {
    std::size_t h = id.first();
    h = h * 1000003u ^ id.second();
    return h * 1000003u ^ id.third();
  }
};
