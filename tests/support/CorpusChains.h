#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "host/core/Cookie.h"
#include "host/core/IdStamp.h"
#include "tests/support/Bytes.h"

namespace testsupport {

// Byte images of layer chains, stated by hand so that tests compare the
// writer's output (and feed the reader) independently of the writer.

struct LayerImage {
  std::string name;
  uint8_t major = 1;
  uint8_t minor = 0;
  std::vector<uint8_t> own;
};

// A chain with raw headers and consistent sizes: each total runs from the end
// of its header to the end of the chain.
inline std::vector<uint8_t> chainImage(const std::vector<LayerImage>& layers) {
  std::vector<uint8_t> rest;
  for (auto it = layers.rbegin(); it != layers.rend(); ++it) {
    ByteWriter w;
    w.header(it->name, it->major, it->minor, static_cast<uint32_t>(it->own.size()),
             static_cast<uint32_t>(it->own.size() + rest.size()));
    w.raw(it->own).raw(rest);
    rest = std::move(w.bytes);
  }
  return rest;
}

// The same with compact headers (8-bit versions and 16-bit sizes, each
// escaping to the wider value at 255 / 65535), as old files have them.
inline std::vector<uint8_t> compactChainImage(const std::vector<LayerImage>& layers) {
  std::vector<uint8_t> rest;
  for (auto it = layers.rbegin(); it != layers.rend(); ++it) {
    ByteWriter w;
    auto small = [&w](unsigned v) {
      if (v < 255)
        w.u8(static_cast<uint8_t>(v));
      else
        w.u8(255).u16(static_cast<uint16_t>(v));
    };
    auto size = [&w](uint64_t v) {
      if (v < 65535)
        w.u16(static_cast<uint16_t>(v));
      else
        w.u16(65535).u32(static_cast<uint32_t>(v));
    };
    w.str(it->name);
    small(it->major);
    small(it->minor);
    size(it->own.size());
    size(it->own.size() + rest.size());
    w.raw(it->own).raw(rest);
    rest = std::move(w.bytes);
  }
  return rest;
}

// A cookie for records written in tests, and its text form.
inline const char* const cookieText = "5f1c0a3e9b7d4e21a8c6f0b2d4e6a8c0.1.0";
inline Cookie sampleCookie() {
  Cookie c;
  Cookie::fromString(cookieText, c);
  return c;
}

// One position record as it travels.
struct PosRecImage {
  IdStamp node;
  std::string cookie; // text form
  double drawX = 0, drawY = 0, manualX = 0, manualY = 0;
  uint8_t flag = 0;
};

// Own data of "L": IdStamp encoding 2, the id, and from 1.1 the cookie text.
inline std::vector<uint8_t> recBaseOwn(const PosRecImage& r, bool withCookie = true) {
  ByteWriter w;
  w.u8(2).u32(r.node.first()).u32(r.node.second()).u32(r.node.third());
  if (withCookie) w.str(r.cookie);
  return w.bytes;
}

// Own data of "K": four doubles and the flag, 33 bytes.
inline std::vector<uint8_t> posOwn(const PosRecImage& r) {
  return ByteWriter().f64(r.drawX).f64(r.drawY).f64(r.manualX).f64(r.manualY).u8(r.flag).bytes;
}

inline std::vector<LayerImage> posRecLayers(const PosRecImage& r) {
  return {{"$", 2, 0, {}}, {"L", 1, 1, recBaseOwn(r)}, {"K", 1, 0, posOwn(r)}};
}

inline std::vector<uint8_t> posRecChain(const PosRecImage& r) { return chainImage(posRecLayers(r)); }

// A position manager: "$" "T" "N" (count, then each record chain) "J".
inline std::vector<uint8_t> posManagerChain(const std::vector<std::vector<uint8_t>>& records) {
  ByteWriter n;
  n.u32(static_cast<uint32_t>(records.size()));
  for (const auto& r : records) n.raw(r);
  return chainImage({{"$", 2, 0, {}}, {"T", 1, 0, {}}, {"N", 1, 0, n.bytes}, {"J", 1, 0, {}}});
}

} // namespace testsupport
