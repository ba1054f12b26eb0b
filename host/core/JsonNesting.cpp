#include "host/core/JsonNesting.h"

std::size_t jsonTooDeepAt(std::string_view text, std::size_t limit) {
  std::size_t depth = 0;
  bool inString = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (inString) {
      if (c == '\\')
        ++i; // the escaped character is never the string's end
      else if (c == '"')
        inString = false;
    } else if (c == '"') {
      inString = true;
    } else if (c == '[' || c == '{') {
      if (++depth > limit) return i;
    } else if ((c == ']' || c == '}') && depth > 0) {
      --depth;
    }
  }
  return std::string_view::npos;
}
