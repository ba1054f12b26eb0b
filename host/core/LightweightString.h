#pragma once
#include <cstdarg>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "host/FxHostApi.h"

// Counted, copy-shared text. Copies share one immutable buffer; a change makes
// a buffer of its own. An absent buffer reads as empty text.
// Narrow text is UTF-8; wide text holds one code point per wchar_t.
template <class C>
class LightweightString {
public:
  using char_type = C;
  using string_type = std::basic_string<C>;
  static constexpr std::size_t npos = string_type::npos;

  LightweightString() noexcept = default;
  LightweightString(const C* text) {
    if (text) buf_ = std::make_shared<const string_type>(text);
  }
  LightweightString(const C* text, std::size_t length) {
    if (text) buf_ = std::make_shared<const string_type>(text, length);
  }
  LightweightString(std::basic_string_view<C> text) : buf_(std::make_shared<const string_type>(text)) {}
  LightweightString(string_type text) : buf_(std::make_shared<const string_type>(std::move(text))) {}

  // True when no buffer is held at all (as opposed to an empty one).
  bool isNull() const noexcept { return !buf_; }
  bool empty() const noexcept { return !buf_ || buf_->empty(); }
  std::size_t size() const noexcept { return buf_ ? buf_->size() : 0; }
  std::size_t length() const noexcept { return size(); }
  const C* c_str() const noexcept { return buf_ ? buf_->c_str() : emptyText(); }
  const string_type& str() const noexcept { return buf_ ? *buf_ : emptyString(); }
  std::basic_string_view<C> view() const noexcept { return str(); }
  C operator[](std::size_t i) const noexcept { return str()[i]; }

  bool startsWith(std::basic_string_view<C> prefix) const noexcept { return view().starts_with(prefix); }
  bool endsWith(std::basic_string_view<C> suffix) const noexcept { return view().ends_with(suffix); }
  std::size_t find(std::basic_string_view<C> what, std::size_t from = 0) const noexcept {
    return view().find(what, from);
  }
  std::size_t find(C what, std::size_t from = 0) const noexcept { return view().find(what, from); }
  LightweightString substr(std::size_t from, std::size_t count = npos) const {
    if (from >= size()) return LightweightString(string_type());
    return LightweightString(string_type(view().substr(from, count)));
  }

  LightweightString& operator+=(std::basic_string_view<C> more) {
    string_type s = str();
    s.append(more);
    buf_ = std::make_shared<const string_type>(std::move(s));
    return *this;
  }
  LightweightString& operator+=(const LightweightString& more) { return *this += more.view(); }
  LightweightString& operator+=(const C* more) { return *this += std::basic_string_view<C>(more ? more : emptyText()); }
  LightweightString& operator+=(C more) { return *this += std::basic_string_view<C>(&more, 1); }

  friend LightweightString operator+(const LightweightString& a, const LightweightString& b) {
    LightweightString r(a);
    return r += b;
  }
  friend LightweightString operator+(const LightweightString& a, const C* b) {
    LightweightString r(a);
    return r += b;
  }
  friend LightweightString operator+(const C* a, const LightweightString& b) {
    LightweightString r(a ? a : emptyText());
    return r += b;
  }
  friend bool operator==(const LightweightString& a, const LightweightString& b) noexcept {
    return a.view() == b.view();
  }
  friend bool operator==(const LightweightString& a, const C* b) noexcept {
    return a.view() == std::basic_string_view<C>(b ? b : emptyText());
  }
  friend auto operator<=>(const LightweightString& a, const LightweightString& b) noexcept {
    return a.view() <=> b.view();
  }

private:
  static const C* emptyText() noexcept {
    static const C nothing[1] = {C(0)};
    return nothing;
  }
  static const string_type& emptyString() noexcept {
    static const string_type nothing;
    return nothing;
  }
  std::shared_ptr<const string_type> buf_;
};

using NarrowString = LightweightString<char>;
using WideString = LightweightString<wchar_t>;

// printf-style formatting into narrow text.
FXHOST_API LightweightString<char> formatText(const char* format, ...) __attribute__((format(printf, 1, 2)));
FXHOST_API LightweightString<char> formatTextV(const char* format, va_list args);

// UTF-8 <-> wide conversions; malformed UTF-8 becomes U+FFFD.
FXHOST_API LightweightString<wchar_t> toWide(std::string_view utf8);
FXHOST_API LightweightString<char> toUTF8(std::wstring_view wide);
inline LightweightString<wchar_t> toWide(const LightweightString<char>& s) { return toWide(s.view()); }
inline LightweightString<wchar_t> toWide(const std::string& s) { return toWide(std::string_view(s)); }
inline LightweightString<wchar_t> toWide(const char* s) { return toWide(std::string_view(s ? s : "")); }
inline LightweightString<char> toUTF8(const std::wstring& s) { return toUTF8(std::wstring_view(s)); }
inline LightweightString<char> toUTF8(const LightweightString<wchar_t>& s) { return toUTF8(s.view()); }

template <class C>
struct std::hash<LightweightString<C>> {
  std::size_t operator()(const LightweightString<C>& s) const noexcept {
    return std::hash<std::basic_string_view<C>>()(s.view());
  }
};
