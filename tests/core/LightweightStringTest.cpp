#include "host/core/LightweightString.h"

#include <string>
#include <unordered_set>

#include <gtest/gtest.h>

namespace {

std::wstring wide(std::string_view utf8) { return toWide(utf8).str(); }
std::string narrow(std::wstring_view text) { return toUTF8(text).str(); }

TEST(LightweightStringTest, AbsentBufferReadsAsEmptyText) {
  const NarrowString none;
  const NarrowString fromNull(static_cast<const char*>(nullptr));
  const NarrowString empty("");
  for (const NarrowString* s : {&none, &fromNull}) {
    EXPECT_TRUE(s->isNull());
    EXPECT_TRUE(s->empty());
    EXPECT_EQ(s->size(), 0u);
    ASSERT_NE(s->c_str(), nullptr);
    EXPECT_STREQ(s->c_str(), "");
    EXPECT_EQ(s->str(), "");
    EXPECT_EQ(*s, empty);
    EXPECT_EQ(*s, "");
    EXPECT_FALSE(s->startsWith("a"));
    EXPECT_EQ(s->find('a'), NarrowString::npos);
    EXPECT_TRUE(s->substr(3).empty());
  }
  EXPECT_FALSE(empty.isNull());
  EXPECT_EQ(std::hash<NarrowString>()(none), std::hash<NarrowString>()(empty));
  EXPECT_EQ(none + "x", "x");
  EXPECT_EQ("x" + none, "x");
  NarrowString grown;
  grown += static_cast<const char*>(nullptr);
  grown += 'y';
  EXPECT_EQ(grown, "y");
}

TEST(LightweightStringTest, CopiesShareOneBufferUntilOneChanges) {
  const NarrowString original("shared text");
  NarrowString copy = original;
  EXPECT_EQ(copy.c_str(), original.c_str());

  copy += " and more";
  EXPECT_EQ(original, "shared text");
  EXPECT_EQ(copy, "shared text and more");
  EXPECT_NE(copy.c_str(), original.c_str());

  const NarrowString again = original;
  EXPECT_EQ(again.c_str(), original.c_str());
}

TEST(LightweightStringTest, KeepsEmbeddedZerosAndOrdersByContent) {
  const NarrowString withZero("a\0b", 3);
  EXPECT_EQ(withZero.size(), 3u);
  EXPECT_NE(withZero, NarrowString("a"));
  EXPECT_LT(NarrowString("abc"), NarrowString("abd"));
  EXPECT_LT(NarrowString(), NarrowString("a"));
  EXPECT_EQ(NarrowString("prefix:rest").substr(7), "rest");
  const std::unordered_set<NarrowString> set{"one", "two", "one"};
  EXPECT_EQ(set.size(), 2u);
}

TEST(LightweightStringTest, FormatTextHandlesLongAndEmptyResults) {
  EXPECT_EQ(formatText("%s", ""), "");
  const std::string big(5000, 'z');
  EXPECT_EQ(formatText("<%s>%d", big.c_str(), 42).str(), "<" + big + ">42");
}

TEST(LightweightStringTest, Utf8AndWideRoundTrip) {
  // One code point of each encoded length: 1, 2, 3 and 4 bytes.
  const std::string utf8 = "A\xC3\xA9\xE2\x82\xAC\xF0\x9D\x84\x9E";
  const WideString w = toWide(NarrowString(utf8));
  EXPECT_EQ(w.str(), (std::wstring{L'A', wchar_t(0xE9), wchar_t(0x20AC), wchar_t(0x1D11E)}));
  EXPECT_EQ(toUTF8(w).str(), utf8);

  const std::wstring edges{wchar_t(0x7F),   wchar_t(0x80),    wchar_t(0x7FF),   wchar_t(0x800),
                           wchar_t(0xFFFF), wchar_t(0x10000), wchar_t(0x10FFFF)};
  EXPECT_EQ(wide(narrow(edges)), edges);
  EXPECT_TRUE(toWide(NarrowString()).empty());
}

TEST(LightweightStringTest, BrokenSequencesBecomeReplacementCharacters) {
  const wchar_t bad = wchar_t(0xFFFD);
  EXPECT_EQ(wide("\x80"), std::wstring(1, bad));                // stray continuation byte
  EXPECT_EQ(wide("\xFF"), std::wstring(1, bad));                // never a lead byte
  EXPECT_EQ(wide("a\xC3"), (std::wstring{L'a', bad}));          // cut off at the end
  const std::wstring cut = wide(std::string("\xE2\x82") + "b"); // cut off before ASCII
  ASSERT_FALSE(cut.empty());
  EXPECT_EQ(cut.back(), L'b');
  EXPECT_EQ(cut.find_first_not_of(bad), cut.size() - 1);
}

// Malformed input must never decode to some other character, least of all to
// ASCII, which is how path and quote characters get smuggled past checks.
TEST(LightweightStringTest, OverlongSurrogateAndOutOfRangeSequencesAreMalformed) {
  struct Case {
    const char* what;
    std::string bytes;
  };
  const Case cases[] = {
      {"overlong '/' in two bytes", "\xC0\xAF"},
      {"overlong NUL in two bytes", std::string("\xC0\x80", 2)},
      {"overlong '/' in three bytes", "\xE0\x80\xAF"},
      {"overlong U+FFFF in four bytes", "\xF0\x8F\xBF\xBF"},
      {"UTF-16 surrogate U+D800", "\xED\xA0\x80"},
      {"beyond U+10FFFF", "\xF4\x90\x80\x80"},
      {"lead byte F5", "\xF5\x80\x80\x80"},
  };
  for (const Case& c : cases) {
    const std::wstring w = wide(c.bytes);
    ASSERT_FALSE(w.empty()) << c.what;
    EXPECT_EQ(w.find_first_not_of(wchar_t(0xFFFD)), std::wstring::npos)
        << c.what << " decoded to U+" << std::hex << static_cast<unsigned>(w[0]);
  }
}

TEST(LightweightStringTest, ToUtf8AlwaysWritesWellFormedText) {
  const std::string replacement = "\xEF\xBF\xBD";
  EXPECT_EQ(narrow(std::wstring(1, wchar_t(0x110000))), replacement);
  EXPECT_EQ(narrow(std::wstring(1, static_cast<wchar_t>(-1))), replacement);
  EXPECT_EQ(narrow(std::wstring(1, wchar_t(0xD800))), replacement) << "a lone surrogate has no UTF-8 form";
}

} // namespace
