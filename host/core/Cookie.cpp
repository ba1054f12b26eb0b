#include "host/core/Cookie.h"

#include <charconv>
#include <random>

const Cookie invalid_cookie{};

Cookie Cookie::generate(uint16_t kind, uint16_t sub) {
  static std::mt19937_64 engine{std::random_device{}()};
  Bytes id{};
  do {
    for (auto& b : id) b = static_cast<uint8_t>(engine());
  } while (id == Bytes{});
  return Cookie(id, kind, sub);
}

bool Cookie::valid() const noexcept { return *this != invalid_cookie; }

LightweightString<char> Cookie::asString() const {
  static const char digits[] = "0123456789abcdef";
  std::string text;
  text.reserve(44);
  for (uint8_t b : id_) {
    text.push_back(digits[b >> 4]);
    text.push_back(digits[b & 15]);
  }
  text += '.';
  text += std::to_string(kind_);
  text += '.';
  text += std::to_string(sub_);
  return LightweightString<char>(std::move(text));
}

bool Cookie::fromString(std::string_view text, Cookie& out) {
  if (text.size() < 32 + 4) return false;
  Bytes id{};
  auto hex = [](char c) -> int {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
  };
  for (std::size_t i = 0; i < 16; ++i) {
    const int hi = hex(text[2 * i]);
    const int lo = hex(text[2 * i + 1]);
    if (hi < 0 || lo < 0) return false;
    id[i] = static_cast<uint8_t>(hi * 16 + lo);
  }
  if (text[32] != '.') return false;
  const char* p = text.data() + 33;
  const char* end = text.data() + text.size();
  uint16_t values[2] = {};
  for (int i = 0; i < 2; ++i) {
    if (p == end || *p < '0' || *p > '9') return false;
    auto [next, ec] = std::from_chars(p, end, values[i]);
    if (ec != std::errc()) return false;
    p = next;
    if (i == 0) {
      if (p == end || *p != '.') return false;
      ++p;
    }
  }
  if (p != end) return false;
  out = Cookie(id, values[0], values[1]);
  return true;
}
