#include "host/core/LightweightString.h"

#include <cstdarg>
#include <cstdio>
#include <vector>

LightweightString<char> formatTextV(const char* format, va_list args) {
  va_list again;
  va_copy(again, args);
  const int needed = std::vsnprintf(nullptr, 0, format, args);
  std::string out;
  if (needed > 0) {
    out.resize(static_cast<std::size_t>(needed) + 1);
    std::vsnprintf(out.data(), out.size(), format, again);
    out.resize(static_cast<std::size_t>(needed));
  }
  va_end(again);
  return LightweightString<char>(std::move(out));
}

LightweightString<char> formatText(const char* format, ...) {
  va_list args;
  va_start(args, format);
  LightweightString<char> text = formatTextV(format, args);
  va_end(args);
  return text;
}

LightweightString<wchar_t> toWide(std::string_view utf8) {
  std::wstring out;
  out.reserve(utf8.size());
  const auto* p = reinterpret_cast<const unsigned char*>(utf8.data());
  const auto* end = p + utf8.size();
  while (p < end) {
    unsigned c = *p++;
    unsigned extra = 0;
    if (c < 0x80) {
      out.push_back(static_cast<wchar_t>(c));
      continue;
    }
    if ((c & 0xE0) == 0xC0) {
      extra = 1;
      c &= 0x1F;
    } else if ((c & 0xF0) == 0xE0) {
      extra = 2;
      c &= 0x0F;
    } else if ((c & 0xF8) == 0xF0) {
      extra = 3;
      c &= 0x07;
    } else {
      out.push_back(L'\xFFFD');
      continue;
    }
    bool ok = static_cast<std::size_t>(end - p) >= extra;
    for (unsigned i = 0; ok && i < extra; ++i) {
      if ((p[i] & 0xC0) != 0x80)
        ok = false;
      else
        c = (c << 6) | (p[i] & 0x3F);
    }
    if (!ok) {
      out.push_back(L'\xFFFD');
      continue;
    }
    p += extra;
    // Overlong forms, surrogates and values past U+10FFFF are not characters.
    static constexpr unsigned least[4] = {0, 0x80, 0x800, 0x10000};
    if (c < least[extra] || (c >= 0xD800 && c <= 0xDFFF) || c > 0x10FFFF) c = 0xFFFD;
    out.push_back(static_cast<wchar_t>(c));
  }
  return LightweightString<wchar_t>(std::move(out));
}

LightweightString<char> toUTF8(std::wstring_view wide) {
  std::string out;
  out.reserve(wide.size());
  for (wchar_t w : wide) {
    auto c = static_cast<unsigned long>(static_cast<std::make_unsigned_t<wchar_t>>(w));
    if (c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) c = 0xFFFD;
    if (c < 0x80) {
      out.push_back(static_cast<char>(c));
    } else if (c < 0x800) {
      out.push_back(static_cast<char>(0xC0 | (c >> 6)));
      out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else if (c < 0x10000) {
      out.push_back(static_cast<char>(0xE0 | (c >> 12)));
      out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else {
      out.push_back(static_cast<char>(0xF0 | (c >> 18)));
      out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
  }
  return LightweightString<char>(std::move(out));
}
