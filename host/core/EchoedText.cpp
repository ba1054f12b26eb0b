#include "host/core/EchoedText.h"

#include <cstdio>

std::string echoedText(std::string_view text) {
  std::string out = "\"";
  std::size_t shown = 0;
  for (std::size_t i = 0; i < text.size() && shown < 80; ++shown) {
    const auto c = static_cast<unsigned char>(text[i]);
    // A whole UTF-8 sequence passes as it is; anything else is escaped.
    const std::size_t length = c < 0x80 ? 1 : (c >> 5) == 0x6 ? 2 : (c >> 4) == 0xE ? 3 : (c >> 3) == 0x1E ? 4 : 0;
    bool whole = length > 0 && i + length <= text.size() && (c >= 0x20 && c != 0x7f);
    for (std::size_t k = 1; whole && k < length; ++k) whole = (static_cast<unsigned char>(text[i + k]) >> 6) == 0x2;
    if (whole) {
      out.append(text.substr(i, length));
      i += length;
    } else {
      char hex[8];
      std::snprintf(hex, sizeof hex, "\\x%02x", c);
      out += hex;
      ++i;
    }
    if (shown + 1 == 80 && i < text.size()) out += "...";
  }
  return out + "\"";
}
