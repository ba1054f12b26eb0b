#pragma once
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace testsupport {

// Builds a byte image by hand, little-endian, the way the stream writes it:
// so that tests state the wire layout independently of the writer.
class ByteWriter {
public:
  ByteWriter& u8(uint8_t v) {
    bytes.push_back(v);
    return *this;
  }
  ByteWriter& u16(uint16_t v) { return le(v, 2); }
  ByteWriter& u32(uint32_t v) { return le(v, 4); }
  ByteWriter& f64(double v) {
    uint64_t bits;
    std::memcpy(&bits, &v, 8);
    return le(bits, 8);
  }
  ByteWriter& str(const std::string& s) {
    u32(static_cast<uint32_t>(s.size()));
    bytes.insert(bytes.end(), s.begin(), s.end());
    return *this;
  }
  ByteWriter& raw(const std::vector<uint8_t>& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
    return *this;
  }
  // A raw (format 2) chunk header.
  ByteWriter& header(const std::string& name, uint8_t major, uint8_t minor, uint32_t own, uint32_t total) {
    return str(name).u8(major).u8(minor).u32(own).u32(total);
  }

  std::vector<uint8_t> bytes;

private:
  ByteWriter& le(uint64_t v, int n) {
    for (int i = 0; i < n; ++i) bytes.push_back(static_cast<uint8_t>(v >> (8 * i)));
    return *this;
  }
};

// Reads a little-endian 32-bit value at an offset.
inline uint32_t u32At(const std::vector<uint8_t>& b, std::size_t at) {
  return uint32_t(b[at]) | uint32_t(b[at + 1]) << 8 | uint32_t(b[at + 2]) << 16 | uint32_t(b[at + 3]) << 24;
}

// The path of a file in the source tree.
inline std::string sourcePath(const std::string& relative) { return std::string(FXGRAPH_SOURCE_DIR) + "/" + relative; }

} // namespace testsupport
