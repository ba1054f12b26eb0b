#pragma once
#include <cstddef>
#include <string_view>

#include "host/FxHostApi.h"

// Readers of JSON refuse text nested deeper than any file of theirs is
// before a parser builds it: a parser's memory can grow with the square of
// the depth. Brackets inside strings do not count.
constexpr std::size_t maxJsonNesting = 256;

// The offset of the first bracket that opens a level deeper than `limit`,
// or std::string_view::npos when the text stays within it.
FXHOST_API std::size_t jsonTooDeepAt(std::string_view text, std::size_t limit = maxJsonNesting);
