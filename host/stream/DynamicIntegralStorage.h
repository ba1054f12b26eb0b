#pragma once
#include <cstdint>
#include <limits>

#include "host/stream/StreamFile.h"

// A compact integer: a Small value when it is below Small's maximum,
// otherwise Small's maximum followed by a Large value. The compact chunk
// headers use <uint8_t, uint16_t> for versions and <uint16_t, uint32_t> for sizes.
template <class Small, class Large>
struct DynamicIntegralStorage {
  static constexpr Large escape = std::numeric_limits<Small>::max();

  static void pack(StreamFile& s, Large value) {
    if (value < escape) {
      put(s, static_cast<Small>(value));
    } else {
      put(s, static_cast<Small>(escape));
      put(s, value);
    }
  }
  static Large unpack(StreamFile& s) {
    const Small small = get<Small>(s);
    if (small < escape) return small;
    return get<Large>(s);
  }

private:
  static void put(StreamFile& s, uint8_t v) { s.setCookedChar(v); }
  static void put(StreamFile& s, uint16_t v) { s.setUnsignedShort(v); }
  static void put(StreamFile& s, uint32_t v) { s.setUnsignedLong(v); }
  template <class T>
  static T get(StreamFile& s) {
    if constexpr (sizeof(T) == 1)
      return s.getCookedChar();
    else if constexpr (sizeof(T) == 2)
      return s.getUnsignedShort();
    else
      return s.getUnsignedLong();
  }
};
