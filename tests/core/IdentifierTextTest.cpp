#include <string>

#include <gtest/gtest.h>

#include "host/core/Cookie.h"
#include "host/core/IdStamp.h"

namespace {

TEST(IdStampTest, TextFormRoundTripsOrdersAndRefusesMalformedText) {
  const IdStamp ids[] = {IdStamp(), IdStamp(1, 2, 3), IdStamp(4294967295u, 0, 4294967295u)};
  const char* texts[] = {"0.0.0", "1.2.3", "4294967295.0.4294967295"};
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(ids[i].asString(), texts[i]);
    IdStamp back(9, 9, 9);
    ASSERT_TRUE(IdStamp::fromString(texts[i], back)) << texts[i];
    EXPECT_EQ(back, ids[i]);
  }
  EXPECT_FALSE(IdStamp().valid());
  EXPECT_TRUE(IdStamp(0, 0, 1).valid());
  EXPECT_LT(IdStamp(1, 9, 9), IdStamp(2, 0, 0));
  EXPECT_LT(IdStamp(1, 2, 9), IdStamp(1, 3, 0));
  EXPECT_LT(IdStamp(1, 2, 3), IdStamp(1, 2, 4));

  // Malformed text is refused and leaves the id alone.
  for (const std::string_view text : std::initializer_list<std::string_view>{
           "", "1.2", "1.2.3.4", "1..3", "1.2.", "a.b.c", "-1.2.3", "+1.2.3", " 1.2.3", "1.2.3 ", "0x1.2.3",
           "4294967296.0.0", "0.0.99999999999999999999", std::string_view("1.2.3\0", 6)}) {
    IdStamp id(7, 8, 9);
    EXPECT_FALSE(IdStamp::fromString(text, id)) << '"' << text << '"';
    EXPECT_EQ(id, IdStamp(7, 8, 9)) << text;
  }
}

Cookie::Bytes countingBytes() {
  Cookie::Bytes b{};
  for (int i = 0; i < 16; ++i) b[i] = static_cast<uint8_t>(i * 17); // 00 11 22 ... ff
  return b;
}

TEST(CookieTest, TextFormIsLowerCaseHexThenTwoDecimalValuesRoundTripsAndRefusesMalformedText) {
  EXPECT_EQ(Cookie(countingBytes(), 7, 65535).asString(), "00112233445566778899aabbccddeeff.7.65535");
  EXPECT_EQ(invalid_cookie.asString(), "00000000000000000000000000000000.0.0");
  EXPECT_FALSE(invalid_cookie.valid());
  // Only the identifier being zero does not make a cookie invalid.
  EXPECT_TRUE(Cookie(Cookie::Bytes{}, 1, 0).valid());
  const Cookie a = Cookie::generate(3, 4);
  EXPECT_NE(a, Cookie::generate(3, 4));
  EXPECT_EQ(std::pair(a.kind(), a.sub()), std::pair(uint16_t(3), uint16_t(4)));
  for (const Cookie& c : {invalid_cookie, Cookie(countingBytes(), 65535, 1), a}) {
    Cookie back = Cookie::generate();
    ASSERT_TRUE(Cookie::fromString(c.asString().view(), back)) << c.asString().c_str();
    EXPECT_EQ(back, c);
  }

  // Malformed text is refused and leaves the cookie alone.
  const std::string hex = "00112233445566778899aabbccddeeff";
  const Cookie before(countingBytes(), 5, 6);
  for (const std::string& text :
       {std::string(), hex, hex + ".1", hex + ".1.", hex + "..1", hex + ".1.2.3", hex + ".65536.0", hex + ".-1.0",
        hex + ".+1.0", hex + ".1.0 ", hex + ":1.0", hex.substr(1) + ".1.0", hex + "0.1.0",
        "0g" + hex.substr(2) + ".1.0", std::string("{00112233-4455-6677-8899-aabbccddeeff}.1.0")}) {
    Cookie c = before;
    EXPECT_FALSE(Cookie::fromString(text, c)) << '"' << text << '"';
    EXPECT_EQ(c, before) << text;
  }
}

} // namespace
