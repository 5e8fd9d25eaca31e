// SPDX-License-Identifier: MIT
// The text encodings of byte arrays.
#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "bytearray.h"

namespace bytearray_encoding_test {

namespace {

// Every byte value once, in ascending order.
ByteArray allBytes() {
  ByteArray result;
  EXPECT_TRUE(result.reserve(256));
  for (unsigned int i = 0; i < 256; i++) {
    result[i] = static_cast<unsigned char>(i);
  }
  return result;
}

// The bytes as space-separated decimal numbers, for comparisons that do not use
// the encodings under test.
std::string bytesOf(const ByteArray& array) {
  std::string result;
  for (unsigned int i = 0; i < array.size(); i++) {
    result += (i == 0 ? "" : " ") + std::to_string(array.data()[i]);
  }
  return result;
}

struct decodeCase {
  const char* text;
  unsigned int radix;
  bool okay;
  const char* bytes;  // as from bytesOf; only compared when okay
};

void checkDecoding(const decodeCase& expected) {
  SCOPED_TRACE(testing::Message() << "text \"" << expected.text << "\" radix " << expected.radix);
  ByteArray array;
  EXPECT_EQ(array.set(expected.text, expected.radix), expected.okay);
  const ByteArray constructed(expected.text, expected.radix);
  if (expected.okay) {
    EXPECT_EQ(bytesOf(array), expected.bytes);
    EXPECT_EQ(bytesOf(constructed), expected.bytes);
  } else {
    EXPECT_EQ(constructed.size(), 0U) << "a text that does not decode makes an empty array";
  }
}

TEST(ByteArraySetRadix16, ReadsTheLeadingRunOfHexadecimalDigits) {
  const decodeCase cases[] = {
      {"", 16, true, ""},
      {"0", 16, true, "0"},
      {"f", 16, true, "15"},
      {"41", 16, true, "65"},
      {"abc", 16, true, "10 188"},
      {"ABC", 16, true, "10 188"},
      {"AbCdEf", 16, true, "171 205 239"},
      {"12345", 16, true, "1 35 69"},
      {"00ff7F80", 16, true, "0 255 127 128"},
      {"deadbeef", 16, true, "222 173 190 239"},
      {"41 42", 16, true, "65"},
      {"4142\n43", 16, true, "65 66"},
      {"0x41", 16, true, "0"},
      {"123g", 16, true, "1 35"},
      {"41=", 16, true, "65"},
      {"g", 16, true, ""},
      {" 41", 16, true, ""},
      {"-1", 16, true, ""},
      {"\xe9", 16, true, ""},
      {"41\xe9", 16, true, "65"},
  };
  for (const decodeCase& expected : cases) {
    checkDecoding(expected);
  }
}

TEST(ByteArraySetRadix16, EndsTheRunAtEveryOtherCharacter) {
  const std::string digits = "0123456789abcdefABCDEF";
  for (int c = 1; c < 256; c++) {
    SCOPED_TRACE(testing::Message() << "character " << c);
    const char character = static_cast<char>(static_cast<unsigned char>(c));
    const std::string text = std::string("41") + character + "1";
    ByteArray array;
    EXPECT_TRUE(array.set(text.c_str(), 16));
    EXPECT_EQ(array.size(), digits.find(character) == std::string::npos ? 1U : 2U);
  }
}

// Decoding reads long runs in blocks.
TEST(ByteArraySetRadix16, EndsALongRunAtAnyPlace) {
  std::string digits;
  for (int i = 0; i < 100; i++) {
    digits += "5a";
  }
  for (const char other : {'g', '/', ':', '@', '`', '\xb0', '\xe1'}) {
    for (std::size_t place = 0; place < digits.size(); place++) {
      SCOPED_TRACE(testing::Message() << "character " << int{other} << " at " << place);
      std::string text = digits;
      text[place] = other;
      ByteArray array;
      ASSERT_TRUE(array.set(text.c_str(), 16));
      // The first of an odd number of digits is a byte alone.
      const std::string expected =
          place % 2 == 0 ? std::string(place / 2, '\x5a') : '\x05' + std::string(place / 2, '\xa5');
      ASSERT_EQ(std::string(reinterpret_cast<const char*>(array.data()), array.size()), expected);
    }
  }
  EXPECT_EQ(ByteArray(digits.c_str(), 16), ByteArray(100, std::string(100, '\x5a').c_str()));
}

TEST(ByteArraySetRadix64, DecodesARunAndItsPadding) {
  const decodeCase cases[] = {
      {"", 64, true, ""},
      {"QUJD", 64, true, "65 66 67"},
      {"QUI=", 64, true, "65 66"},
      {"QQ==", 64, true, "65"},
      {"QUJDRUZH", 64, true, "65 66 67 69 70 71"},
      {"QUJDQQ==", 64, true, "65 66 67 65"},
      {"QUJDQUI=", 64, true, "65 66 67 65 66"},
      {"AAAA", 64, true, "0 0 0"},
      {"////", 64, true, "255 255 255"},
      {"+/+/", 64, true, "251 255 191"},
      {"Zm9vYmFy", 64, true, "102 111 111 98 97 114"},
      // Bits that no byte needs do not matter.
      {"QR==", 64, true, "65"},
      {"QUJ=", 64, true, "65 66"},
      // Hexadecimal digits are base64 characters like any other.
      {"1234", 64, true, "215 109 248"},
      {"abcd", 64, true, "105 183 29"},
  };
  for (const decodeCase& expected : cases) {
    checkDecoding(expected);
  }
}

TEST(ByteArraySetRadix64, IgnoresWhatFollowsThePadding) {
  const decodeCase cases[] = {
      {"QUJD\nRUZH", 64, true, "65 66 67"},
      {"QUJD RUZH", 64, true, "65 66 67"},
      {"QUJD?a=1", 64, true, "65 66 67"},
      {"QQ==RUZH", 64, true, "65"},
      {"QQ==xyz", 64, true, "65"},
      {"QUI=\xe9", 64, true, "65 66"},
      {"-_-_", 64, true, ""},
      {"?a=1", 64, true, ""},
      {"\xe9QUJD", 64, true, ""},
  };
  for (const decodeCase& expected : cases) {
    checkDecoding(expected);
  }
}

TEST(ByteArraySetRadix64, FailsForIncompleteGroupsAndTooMuchPadding) {
  const decodeCase cases[] = {
      {"Q", 64, false, ""},        {"QU", 64, false, ""},       {"QUJ", 64, false, ""},
      {"QQ=", 64, false, ""},      {"Q=", 64, false, ""},       {"Q==", 64, false, ""},
      {"Q===", 64, false, ""},     {"=", 64, false, ""},        {"==", 64, false, ""},
      {"===", 64, false, ""},      {"====", 64, false, ""},     {"QUJD=", 64, false, ""},
      {"QUJD==", 64, false, ""},   {"QUJD===", 64, false, ""},  {"QUJD====", 64, false, ""},
      {"QQ===", 64, false, ""},    {"QQ======", 64, false, ""}, {"QUI==", 64, false, ""},
      {"QUI=====", 64, false, ""}, {"QUJDR", 64, false, ""},    {"QUJDR===", 64, false, ""},
      {"QUJ\nD", 64, false, ""},   {"=QUJ", 64, false, ""},
  };
  for (const decodeCase& expected : cases) {
    checkDecoding(expected);
  }
}

TEST(ByteArraySetRadix64, KnowsTheAlphabetAndNoOtherCharacter) {
  const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  for (int c = 1; c < 256; c++) {
    SCOPED_TRACE(testing::Message() << "character " << c);
    const char character = static_cast<char>(static_cast<unsigned char>(c));
    const std::string text = std::string("QUJD") + character + "AAA";
    ByteArray array;
    const bool okay = array.set(text.c_str(), 64);
    if (character == '=') {
      EXPECT_FALSE(okay);
      continue;
    }
    EXPECT_TRUE(okay);
    const std::string::size_type value = alphabet.find(character);
    ASSERT_EQ(array.size(), value == std::string::npos ? 3U : 6U);
    if (value != std::string::npos) {
      EXPECT_EQ(array[3], value * 4) << "the six most significant bits of the second group";
    }
  }
}

TEST(ByteArraySetRadix64, ReadsTheWholeAlphabetInItsOrder) {
  const ByteArray array("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/", 64);
  EXPECT_EQ(bytesOf(array),
            "0 16 131 16 81 135 32 146 139 48 211 143 65 20 147 81 85 151 97 150 155 113 215 159 "
            "130 24 163 146 89 167 162 154 171 178 219 175 195 28 179 211 93 183 227 158 187 243 "
            "223 191");
}

TEST(ByteArraySetRadix0, DetectsTheRadix) {
  const decodeCase cases[] = {
      {"", 0, true, ""},
      {"deadbeef", 0, true, "222 173 190 239"},
      {"DEADBEEF", 0, true, "222 173 190 239"},
      {"12", 0, true, "18"},
      {"ABCD", 0, true, "171 205"},
      {"1234", 0, true, "18 52"},
      {"QUJD", 0, true, "65 66 67"},
      {"QQ==", 0, true, "65"},
      {"QUI=", 0, true, "65 66"},
      {"abcg", 0, true, "105 183 32"},
      {"+/+/", 0, true, "251 255 191"},
      {"QQ==QQ==", 0, true, "65"},
      {"12==34", 0, true, "215"},
  };
  for (const decodeCase& expected : cases) {
    checkDecoding(expected);
  }
}

TEST(ByteArraySetRadix0, FailsForOddLengthsAndForeignCharacters) {
  const decodeCase cases[] = {
      {"a", 0, false, ""},
      {"abc", 0, false, ""},
      {"QUJDR", 0, false, ""},
      {"QUJD\nRUZ", 0, false, ""},
      {"QUJD\nRUZH", 0, false, ""},
      {"ab cd ", 0, false, ""},
      {"ab-c", 0, false, ""},
      {"QUJ?", 0, false, ""},
      {"QUJ\xe9", 0, false, ""},
      // An even number of the right characters, but not base64.
      {"gg", 0, false, ""},
      {"QUJDRE", 0, false, ""},
      {"Q===", 0, false, ""},
      {"==", 0, false, ""},
      {"====", 0, false, ""},
      {"1234==", 0, false, ""},
  };
  for (const decodeCase& expected : cases) {
    checkDecoding(expected);
  }
}

TEST(ByteArraySet, FailsForEveryOtherRadix) {
  const unsigned int radixes[] = {1, 2, 8, 10, 15, 17, 32, 63, 65, 128, 256, UINT_MAX};
  for (const unsigned int radix : radixes) {
    checkDecoding({"41424344", radix, false, ""});
    checkDecoding({"", radix, false, ""});
  }
}

TEST(ByteArraySet, FailsForNull) {
  const unsigned int radixes[] = {0, 16, 64, 10};
  for (const unsigned int radix : radixes) {
    SCOPED_TRACE(testing::Message() << "radix " << radix);
    ByteArray array;
    EXPECT_FALSE(array.set(nullptr, radix));
    EXPECT_EQ(ByteArray(static_cast<const char*>(nullptr), radix).size(), 0U);
  }
}

TEST(ByteArraySet, ReplacesWhatWasThere) {
  ByteArray array("0102030405", 16);
  ASSERT_TRUE(array.set("ff", 16));
  EXPECT_EQ(bytesOf(array), "255");
  ASSERT_TRUE(array.set("QUJDRUZH", 64));
  EXPECT_EQ(bytesOf(array), "65 66 67 69 70 71");
  ASSERT_TRUE(array.set("", 0));
  EXPECT_TRUE(array.empty());
}

TEST(ByteArrayFormat, WritesBothRadixes) {
  const struct {
    const char* bytes;
    unsigned int size;
    const char* radix16;
    const char* radix64;
  } cases[] = {
      {"", 0, "", ""},
      {"A", 1, "41", "QQ=="},
      {"AB", 2, "4142", "QUI="},
      {"ABC", 3, "414243", "QUJD"},
      {"ABCD", 4, "41424344", "QUJDRA=="},
      {"f", 1, "66", "Zg=="},
      {"fo", 2, "666f", "Zm8="},
      {"foo", 3, "666f6f", "Zm9v"},
      {"foob", 4, "666f6f62", "Zm9vYg=="},
      {"fooba", 5, "666f6f6261", "Zm9vYmE="},
      {"foobar", 6, "666f6f626172", "Zm9vYmFy"},
      {"\0\0\0", 3, "000000", "AAAA"},
      {"\xff\xff\xff", 3, "ffffff", "////"},
      {"\xfb\xff\xbf", 3, "fbffbf", "+/+/"},
      {"\0", 1, "00", "AA=="},
      {"\xab\xcd", 2, "abcd", "q80="},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(testing::Message() << "bytes " << expected.radix16);
    const ByteArray array(expected.size, expected.bytes);
    EXPECT_EQ(array.format(16), expected.radix16);
    EXPECT_EQ(array.format(64), expected.radix64);
  }
}

TEST(ByteArrayFormat, WritesEveryByteWithoutLineBreaks) {
  EXPECT_EQ(
      allBytes().format(64),
      "AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8gISIjJCUmJygpKissLS4vMDEyMzQ1Njc4OTo7PD0+P0BB"
      "QkNERUZHSElKS0xNTk9QUVJTVFVWV1hZWltcXV5fYGFiY2RlZmdoaWprbG1ub3BxcnN0dXZ3eHl6e3x9fn+AgYKD"
      "hIWGh4iJiouMjY6PkJGSk5SVlpeYmZqbnJ2en6ChoqOkpaanqKmqq6ytrq+wsbKztLW2t7i5uru8vb6/wMHCw8TF"
      "xsfIycrLzM3Oz9DR0tPU1dbX2Nna29zd3t/g4eLj5OXm5+jp6uvs7e7v8PHy8/T19vf4+fr7/P3+/w==");
  EXPECT_EQ(allBytes().format(16),
            "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f"
            "202122232425262728292a2b2c2d2e2f303132333435363738393a3b3c3d3e3f"
            "404142434445464748494a4b4c4d4e4f505152535455565758595a5b5c5d5e5f"
            "606162636465666768696a6b6c6d6e6f707172737475767778797a7b7c7d7e7f"
            "808182838485868788898a8b8c8d8e8f909192939495969798999a9b9c9d9e9f"
            "a0a1a2a3a4a5a6a7a8a9aaabacadaeafb0b1b2b3b4b5b6b7b8b9babbbcbdbebf"
            "c0c1c2c3c4c5c6c7c8c9cacbcccdcecfd0d1d2d3d4d5d6d7d8d9dadbdcdddedf"
            "e0e1e2e3e4e5e6e7e8e9eaebecedeeeff0f1f2f3f4f5f6f7f8f9fafbfcfdfeff");
}

TEST(ByteArrayFormat, IsReadBackBySet) {
  const ByteArray all = allBytes();
  for (const unsigned int radix : {16U, 64U}) {
    for (unsigned int size = 0; size <= 256; size++) {
      SCOPED_TRACE(testing::Message() << "radix " << radix << " size " << size);
      const ByteArray array(size, all.data());
      const ByteArray back(array.format(radix).c_str(), radix);
      EXPECT_EQ(back.size(), size);
      EXPECT_TRUE(back == array);
    }
  }
}

TEST(ByteArrayFormat, IsEmptyForEveryOtherRadix) {
  const ByteArray array("414243", 16);
  const unsigned int radixes[] = {0, 1, 2, 8, 10, 15, 17, 32, 63, 65, 256, UINT_MAX};
  for (const unsigned int radix : radixes) {
    EXPECT_EQ(array.format(radix), "") << "radix " << radix;
  }
}

TEST(ByteArrayOMBRformat, WritesTheSizeAndTheBytes) {
  const struct {
    const char* hex;
    int width;
    const char* expected;
  } cases[] = {
      {"010203", 1, "03010203"},
      {"010203", 2, "0003010203"},
      {"010203", 3, "000003010203"},
      {"010203", 4, "00000003010203"},
      {"abCDef", 1, "03abcdef"},
      {"", 1, "00"},
      {"", 2, "0000"},
      {"", 4, "00000000"},
      {"000102030405060708090a", 1, "0b000102030405060708090a"},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(testing::Message() << expected.hex << " width " << expected.width);
    EXPECT_EQ(ByteArray(expected.hex, 16).OMBRformat(expected.width), expected.expected);
  }
}

TEST(ByteArrayOMBRformat, RepeatsTheLowDigitsOfTheSizeBeyondFourBytes) {
  const struct {
    unsigned int size;
    int width;
    const char* prefix;
  } cases[] = {
      {3, 5, "0300000003"},       {3, 6, "000300000003"},       {3, 7, "00000300000003"},
      {3, 8, "0000000300000003"}, {3, 9, "030000000300000003"}, {291, 5, "2300000123"},
      {291, 6, "012300000123"},   {4660, 5, "3400001234"},      {74565, 7, "01234500012345"},
      {0, 5, "0000000000"},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(testing::Message() << "size " << expected.size << " width " << expected.width);
    const std::string bytes(expected.size, 'z');
    const std::string text = ByteArray(expected.size, bytes.data()).OMBRformat(expected.width);
    const std::string::size_type digits = static_cast<unsigned int>(expected.width) * 2;
    ASSERT_EQ(text.size(), digits + expected.size * 2);
    EXPECT_EQ(text.substr(0, digits), expected.prefix);
    if (expected.size != 0) {
      EXPECT_EQ(text.substr(digits, 2), "7a");
      EXPECT_EQ(text.substr(text.size() - 2), "7a");
    }
  }
}

TEST(ByteArrayOMBRformat, IsEmptyWhenTheSizeDoesNotFit) {
  const struct {
    unsigned int size;
    int width;
    const char* prefix;  // empty when it does not fit
  } cases[] = {
      {255, 1, "ff"},
      {256, 1, ""},
      {257, 1, ""},
      {65535, 1, ""},
      {256, 2, "0100"},
      {65535, 2, "ffff"},
      {65536, 2, ""},
      {65536, 3, "010000"},
      {16777215, 3, "ffffff"},
      {16777216, 3, ""},
      {16777216, 4, "01000000"},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(testing::Message() << "size " << expected.size << " width " << expected.width);
    const std::string bytes(expected.size, 'z');
    const std::string text = ByteArray(expected.size, bytes.data()).OMBRformat(expected.width);
    const std::string prefix = expected.prefix;
    EXPECT_EQ(text.substr(0, prefix.size()), prefix);
    EXPECT_EQ(text.size(), prefix.empty() ? 0U : prefix.size() + expected.size * 2U);
  }
}

TEST(ByteArrayOMBRformat, IsEmptyWithoutAPrefix) {
  for (const int width : {0, -1, -4, INT_MIN}) {
    EXPECT_EQ(ByteArray("010203", 16).OMBRformat(width), "") << "width " << width;
    EXPECT_EQ(ByteArray().OMBRformat(width), "") << "width " << width;
  }
}

}  // namespace

}  // namespace bytearray_encoding_test
