#pragma once
#include <array>
#include <compare>
#include <cstdint>

#include "host/FxHostApi.h"
#include "host/core/LightweightString.h"

// Identifier of an edit: a 16-byte identifier plus two 16-bit values.
// Text form: the identifier as 32 lower-case hex digits, ".", then the two
// values in decimal joined by ".". The all-zero cookie is invalid_cookie.
class FXHOST_API Cookie {
public:
  using Bytes = std::array<uint8_t, 16>;
  // The host's kinds of cookie (the first of the two values).
  static constexpr uint16_t editKind = 1;
  static constexpr uint16_t materialKind = 2;
  static constexpr uint16_t effectGraphKind = 3;

  constexpr Cookie() noexcept = default;
  constexpr Cookie(const Bytes& id, uint16_t kind, uint16_t sub) noexcept : id_(id), kind_(kind), sub_(sub) {}

  // A new random identifier with the given values.
  static Cookie generate(uint16_t kind = 0, uint16_t sub = 0);

  bool valid() const noexcept;
  bool isEffectGraph() const noexcept { return kind_ == effectGraphKind; }
  // The cookie without its suffix (the second value).
  Cookie stripped() const noexcept { return Cookie(id_, kind_, 0); }
  const Bytes& id() const noexcept { return id_; }
  uint16_t kind() const noexcept { return kind_; }
  uint16_t sub() const noexcept { return sub_; }

  LightweightString<char> asString() const;
  // Parses the text form; false leaves `out` alone.
  static bool fromString(std::string_view text, Cookie& out);

  friend constexpr auto operator<=>(const Cookie&, const Cookie&) = default;
  friend constexpr bool operator==(const Cookie&, const Cookie&) = default;

private:
  Bytes id_{};
  uint16_t kind_ = 0;
  uint16_t sub_ = 0;
};

FXHOST_API extern const Cookie invalid_cookie;
