// SPDX-License-Identifier: MIT
// Texts whose length does not fit 32 bits.  A machine of 32 bits has no such texts.
#include <gtest/gtest.h>

#include <cstdint>

#if SIZE_MAX > 4294967295

#include <string>

#include "DistName.h"
#include "bytearray.h"
#include "conversion.h"
#include "html_escape.h"
#include "huge_text.h"
#include "regexpr.h"
#include "uri.h"

namespace {

// Unknown to the compiler: clang 14 tries to make such texts itself for C++23, and ends.
volatile std::uint64_t one = 1;
const std::uint64_t FOUR_GIB = one << 32;
constexpr unsigned int LARGEST = 4294967295U;

// Each text is just a little longer than its array may be.
struct tooLong {
  unsigned int radix;
  std::uint64_t size;
};

class ByteArrayOfARunThatIsTooLong : public testing::TestWithParam<tooLong> {};

TEST_P(ByteArrayOfARunThatIsTooLong, FailsAndIsEmpty) {
  NEEDS_GIGABYTES(1);
  hugeText digits(GetParam().size, 'A');
  if (digits.text() == nullptr) {
    GTEST_SKIP() << "the text cannot be mapped";
  }
  ByteArray array(3, "abc");
  EXPECT_FALSE(array.set(digits.text(), GetParam().radix));
  EXPECT_EQ(array.size(), 0U);
  EXPECT_TRUE(array.empty());
  EXPECT_EQ(ByteArray(digits.text(), GetParam().radix).size(), 0U);
}

INSTANTIATE_TEST_SUITE_P(EachRadix, ByteArrayOfARunThatIsTooLong,
                         testing::Values(tooLong{16, 8589934591}, tooLong{16, 8589934592},
                                         tooLong{0, 8589934592}, tooLong{64, 5726623064}));

TEST(ByteArrayOfALongRun, HoldsAsManyHexadecimalBytesAsFit) {
  NEEDS_GIGABYTES(6);
  hugeText digits(8589934588, 'A', "12 and more");
  if (digits.text() == nullptr) {
    GTEST_SKIP() << "the text cannot be mapped";
  }
  ByteArray array;
  ASSERT_TRUE(array.set(digits.text(), 16));
  EXPECT_EQ(array.size(), LARGEST);
  EXPECT_EQ(array[0], 0xAA);
  EXPECT_EQ(array[LARGEST - 2], 0xAA);
  EXPECT_EQ(array[LARGEST - 1], 0x12);
}

TEST(ByteArrayOfALongRun, HoldsAsManyRadix64BytesAsFit) {
  NEEDS_GIGABYTES(6);
  hugeText digits(5726623056, 'A', "QUJD\nand more");
  if (digits.text() == nullptr) {
    GTEST_SKIP() << "the text cannot be mapped";
  }
  ByteArray array;
  ASSERT_TRUE(array.set(digits.text(), 64));
  EXPECT_EQ(array.size(), LARGEST);
  EXPECT_EQ(array[0], 0);
  EXPECT_EQ(array[LARGEST - 3], 'A');
  EXPECT_EQ(array[LARGEST - 1], 'C');
}

TEST(ByteArrayOfALongRun, IsNotCutTo32Bits) {
  NEEDS_GIGABYTES(5);
  hugeText digits(FOUR_GIB, 'A', "QUJD");
  if (digits.text() == nullptr) {
    GTEST_SKIP() << "the text cannot be mapped";
  }
  ByteArray array;
  ASSERT_TRUE(array.set(digits.text(), 64));
  EXPECT_EQ(array.size(), 3221225475U);
  EXPECT_EQ(array[3221225474U], 'C');
}

TEST(ByteArrayOfAShortRun, IgnoresHoweverMuchFollows) {
  NEEDS_GIGABYTES(1);
  for (const std::uint64_t size :
       {FOUR_GIB - 5, FOUR_GIB - 1, FOUR_GIB, FOUR_GIB + 1, 2 * FOUR_GIB - 6, 2 * FOUR_GIB + 3}) {
    hugeText text(size, 'A');
    if (text.text() == nullptr) {
      GTEST_SKIP() << "the text cannot be mapped";
    }
    // The text has shared pieces, so there is a blank in each of them from here on.
    text.text()[8] = ' ';
    ByteArray array;
    EXPECT_TRUE(array.set(text.text(), 16)) << size;
    EXPECT_EQ(array.format(16), "aaaaaaaa") << size;
    EXPECT_TRUE(array.set(text.text(), 64)) << size;
    EXPECT_EQ(array.format(64), "AAAAAAAA") << size;
    EXPECT_FALSE(array.set(text.text(), 0)) << size;
  }
}

TEST(NameOkay, ReadsAllOfATextOver4GiB) {
  NEEDS_GIGABYTES(7);
  std::string text(FOUR_GIB + 2, 'a');
  EXPECT_TRUE(DistName::nameOkay(text));
  text.back() = '\n';
  EXPECT_FALSE(DistName::nameOkay(text));
  text.back() = '\xC3';
  EXPECT_FALSE(DistName::nameOkay(text)) << "cut in a character";
  // From here on the length is negative as 32 bits, where a zero would end the text.
  text.resize(FOUR_GIB / 2 + 2);
  EXPECT_TRUE(DistName::nameOkay(text));
  text[1] = '\0';
  EXPECT_FALSE(DistName::nameOkay(text));
}

TEST(URIunEscape, ReadsAllOfAStringOver4GiB) {
  NEEDS_GIGABYTES(12);
  const std::string result = URIunEscape(std::string(FOUR_GIB, 'a') + "%42");
  EXPECT_EQ(result.size(), FOUR_GIB + 1);
  EXPECT_EQ(result.back(), 'B');
}

TEST(HTMLescape, ReadsAllOfAStringOver4GiB) {
  NEEDS_GIGABYTES(16);
  const std::string result = HTMLescape(std::string(FOUR_GIB, 'a') + "<\xC3\xA9", false);
  EXPECT_EQ(result.size(), FOUR_GIB + 10);
  EXPECT_EQ(result.substr(FOUR_GIB), "&lt;&#233;");
}

TEST(UTF8size, CountsCharactersWhose4GiBAreLeft) {
  NEEDS_GIGABYTES(6);
  // Exactly 4 GiB are left before the second character, which are 0 as 32 bits.
  std::string text = "a";
  text.resize(FOUR_GIB + 1, '\xE9');
  text.replace(1, 4, "\xC3\xA9\xC3\xA9");
  EXPECT_EQ(UTF8size(text), LARGEST) << "each other byte is malformed and counts as one";
}

TEST(RegExpr, FindsNothingInATextThatTheCLibraryCannotSearch) {
  NEEDS_GIGABYTES(6);
  const RegExpr expression("b", true);
  std::string text(FOUR_GIB / 2, 'a');
  text[7] = 'b';
  EXPECT_FALSE(expression.matchs(text));
  EXPECT_FALSE(expression.matchsAt(text, 7));
  EXPECT_EQ(expression.match(text).length, 0U);
  EXPECT_EQ(expression.matchText(text), "");
  text[9] = '\0';
  EXPECT_TRUE(expression.matchs(text)) << "read up to the first zero";
  EXPECT_TRUE(expression.matchsAt(text, 7));
  EXPECT_EQ(expression.match(text).start, 7U);
}

TEST(URI, ReadsALinkOver4GiB) {
  NEEDS_GIGABYTES(16);
  std::string link = "vnc://h/?a=";
  link.resize(FOUR_GIB + 20, 'b');
  URI uri;
  EXPECT_EQ(uri.parse(link).stop, US_COMPLETE);
  EXPECT_EQ(uri.parameters["a"].size(), FOUR_GIB + 9);
}

}  // namespace

#endif
