#include "host/core/LightweightString.h"

#include <string>
#include <unordered_set>

#include <gtest/gtest.h>

namespace {

std::wstring wide(std::string_view utf8) { return toWide(utf8).str(); }
std::string narrow(std::wstring_view text) { return toUTF8(text).str(); }

TEST(LightweightStringTest, AbsentBufferReadsAsEmptyText) {
  const NarrowString none, fromNull(static_cast<const char*>(nullptr)), empty("");
  for (const NarrowString* s : {&none, &fromNull}) {
    EXPECT_TRUE(s->isNull());
    ASSERT_NE(s->c_str(), nullptr);
    EXPECT_STREQ(s->c_str(), "");
    EXPECT_EQ(*s, empty);
    EXPECT_EQ(s->find('a'), NarrowString::npos);
    EXPECT_TRUE(s->substr(3).empty());
  }
  EXPECT_FALSE(empty.isNull());
  EXPECT_EQ(std::hash<NarrowString>()(none), std::hash<NarrowString>()(empty));
  EXPECT_EQ("x" + none, "x");
  NarrowString grown;
  grown += static_cast<const char*>(nullptr);
  grown += 'y';
  EXPECT_EQ(grown, "y");
}

TEST(LightweightStringTest, CopiesShareOneBufferUntilOneChangesAndTextFormatsAtAnyLength) {
  const NarrowString original("shared text");
  NarrowString copy = original;
  EXPECT_EQ(copy.c_str(), original.c_str());
  copy += " and more";
  EXPECT_EQ(original, "shared text");
  EXPECT_EQ(copy, "shared text and more");

  const NarrowString withZero("a\0b", 3);
  EXPECT_EQ(withZero.size(), 3u);
  EXPECT_NE(withZero, NarrowString("a"));
  EXPECT_LT(NarrowString("abc"), NarrowString("abd"));
  EXPECT_EQ(std::unordered_set<NarrowString>({"one", "two", "one"}).size(), 2u);

  // Formatted text of any length, empty too.
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

  // Code points UTF-8 cannot hold become the replacement character.
  for (wchar_t c : {wchar_t(0x110000), static_cast<wchar_t>(-1), wchar_t(0xD800)})
    EXPECT_EQ(narrow(std::wstring(1, c)), "\xEF\xBF\xBD") << std::hex << static_cast<unsigned>(c);
}

// Malformed input must never decode to some other character, least of all to
// ASCII, which is how path and quote characters get smuggled past checks.
TEST(LightweightStringTest, MalformedSequencesBecomeReplacementCharacters) {
  for (const std::string& bytes :
       {std::string("\x80"), std::string("\xFF"), std::string("\xC3"), std::string("\xC0\xAF"),
        std::string("\xC0\x80", 2), std::string("\xE0\x80\xAF"), std::string("\xF0\x8F\xBF\xBF"),
        std::string("\xED\xA0\x80"), std::string("\xF4\x90\x80\x80"), std::string("\xF5\x80\x80\x80")}) {
    const std::wstring w = wide(bytes);
    ASSERT_FALSE(w.empty());
    EXPECT_EQ(w.find_first_not_of(wchar_t(0xFFFD)), std::wstring::npos)
        << "decoded to U+" << std::hex << static_cast<unsigned>(w[0]);
  }
  const std::wstring cut = wide(std::string("a\xE2\x82") + "b"); // cut off before ASCII
  EXPECT_EQ(cut.front(), L'a');
  EXPECT_EQ(cut.back(), L'b');
  EXPECT_EQ(cut.find_first_not_of(wchar_t(0xFFFD), 1), cut.size() - 1);
}

} // namespace
