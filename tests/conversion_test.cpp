// SPDX-License-Identifier: MIT
// Numbers and byte buffers.
#include "conversion.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>

namespace conversion_test {

using std::string_literals::operator""s;

TEST(Decimal2Int, ReadsANumberAndMovesBehindIt) {
  const struct {
    const char* text;
    int expected;
    std::ptrdiff_t moved;
  } cases[] = {
      {"0", 0, 1},
      {"7", 7, 1},
      {"12", 12, 2},
      {"12ab", 12, 2},
      {"12 34", 12, 2},
      {"5-6", 5, 1},
      {"0x10", 0, 1},
      {"007", 7, 3},
      {"00000000000000000001", 1, 20},
      {"1234567890", 1234567890, 10},
      {"2147483639", 2147483639, 10},
      {"2147483640", 2147483640, 10},
      {"2147483646", 2147483646, 10},
      {"2147483647", 2147483647, 10},
      {"2147483647:1", 2147483647, 10},
      {"002147483647", 2147483647, 12},
      // From here on nothing is read, and the pointer stays.
      {"2147483648", -1, 0},
      {"2147483649", -1, 0},
      {"2147483650", -1, 0},
      {"2999999999", -1, 0},
      {"4294967295", -1, 0},
      {"4294967296", -1, 0},
      {"4294967301", -1, 0},
      {"9999999999", -1, 0},
      {"21474836470", -1, 0},
      {"18446744073709551617", -1, 0},
      {"99999999999999999999999999999999", -1, 0},
      {"", -1, 0},
      {"-5", -1, 0},
      {"+5", -1, 0},
      {" 5", -1, 0},
      {"a5", -1, 0},
      {"/", -1, 0},
      {":", -1, 0},
      {"\xb2", -1, 0},
      {"\xb0"
       "1",
       -1, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE("the text '"s + c.text + "'");
    const char* moving = c.text;
    EXPECT_EQ(decimal2Int(moving), c.expected);
    EXPECT_EQ(moving - c.text, c.moved);

    const char* const fixed = c.text;
    EXPECT_EQ(decimal2Int(fixed), c.expected);
    EXPECT_EQ(decimal2Int(std::string(c.text)), c.expected);
  }
}

TEST(Decimal2Int, ReadsAStringUpToItsFirstNULByte) {
  EXPECT_EQ(decimal2Int("12\0"
                        "34"s),
            12);
  EXPECT_EQ(decimal2Int("\0"
                        "34"s),
            -1);
}

TEST(Decimal2Int, GivesMinusOneForANullPointer) {
  const char* moving = nullptr;
  const char* const fixed = nullptr;
  EXPECT_EQ(decimal2Int(moving), -1);
  EXPECT_EQ(moving, nullptr);
  EXPECT_EQ(decimal2Int(fixed), -1);
}

TEST(Decimal2Int, StopsAtTheTerminatingZero) {
  const auto text = std::make_unique<char[]>(3);
  std::memcpy(text.get(), "42", 3);
  const char* moving = text.get();
  EXPECT_EQ(decimal2Int(moving), 42);
  EXPECT_EQ(moving, text.get() + 2);
}

TEST(Int2Decimal, WritesANumber) {
  const struct {
    int value;
    const char* expected;
  } cases[] = {
      {0, "0"},
      {1, "1"},
      {9, "9"},
      {10, "10"},
      {42, "42"},
      {99, "99"},
      {100, "100"},
      {1005, "1005"},
      {1000000000, "1000000000"},
      {1234567890, "1234567890"},
      {2147483647, "2147483647"},
      {-1, "-1"},
      {-9, "-9"},
      {-10, "-10"},
      {-42, "-42"},
      {-1000000000, "-1000000000"},
      {-2147483647, "-2147483647"},
      {INT_MIN, "-2147483648"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.expected);
    EXPECT_EQ(int2decimal(c.value), c.expected);
    std::string appended = "x=";
    int2decimal(appended, c.value);
    EXPECT_EQ(appended, "x="s + c.expected);
  }
}

TEST(Int2Decimal, PadsToAWidth) {
  const struct {
    int value, width;
    const char* expected;
  } cases[] = {
      {7, 3, "007"},
      {7, 1, "7"},
      {7, 0, "7"},
      {7, -5, "7"},
      {123, 2, "123"},
      {123, 3, "123"},
      {123, 4, "0123"},
      {0, 0, "0"},
      {0, 1, "0"},
      {0, 4, "0000"},
      {-7, 3, "-07"},
      {-7, 2, "-7"},
      {-7, 1, "-7"},
      {-7, 0, "-7"},
      {-7, 6, "-00007"},
      {-123, 4, "-123"},
      {-123, 3, "-123"},
      {2147483647, 12, "002147483647"},
      {INT_MIN, 11, "-2147483648"},
      {INT_MIN, 13, "-002147483648"},
      {5, 40, "0000000000000000000000000000000000000005"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.value) + " in " + std::to_string(c.width));
    EXPECT_EQ(int2decimal(c.value, c.width), c.expected);
  }
}

TEST(Int2Hex, WritesANumber) {
  const struct {
    int value;
    const char* expected;
  } cases[] = {
      {0, "0"},
      {9, "9"},
      {10, "A"},
      {11, "B"},
      {12, "C"},
      {13, "D"},
      {14, "E"},
      {15, "F"},
      {16, "10"},
      {255, "FF"},
      {256, "100"},
      {0x12345678, "12345678"},
      {0xabcdef, "ABCDEF"},
      {2147483647, "7FFFFFFF"},
      {-1, "-1"},
      {-10, "-A"},
      {-255, "-FF"},
      {-2147483647, "-7FFFFFFF"},
      {INT_MIN, "-80000000"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.expected);
    EXPECT_EQ(int2hex(c.value), c.expected);
    EXPECT_EQ(int2hex(c.value, 1), c.expected);
    std::string appended = "0x";
    int2hex(appended, c.value);
    EXPECT_EQ(appended, "0x"s + c.expected);
  }
}

TEST(Int2Hex, PadsToANumberOfDigits) {
  const struct {
    int value, digits;
    const char* expected;
  } cases[] = {
      {255, 4, "00FF"},
      {255, 2, "FF"},
      {255, 1, "FF"},
      {255, 0, "FF"},
      {255, -3, "FF"},
      {0, 0, "0"},
      {0, 2, "00"},
      {10, 2, "0A"},
      {-1, 1, "-1"},
      {-1, 2, "-1"},
      {-1, 4, "-001"},
      {-255, 5, "-00FF"},
      {2147483647, 10, "007FFFFFFF"},
      {INT_MIN, 9, "-80000000"},
      {INT_MIN, 10, "-080000000"},
      {1, 40, "0000000000000000000000000000000000000001"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.value) + " in " + std::to_string(c.digits));
    EXPECT_EQ(int2hex(c.value, c.digits), c.expected);
  }
}

TEST(HexDigit, ReadsDigitsOfEitherCase) {
  const struct {
    char digit;
    int expected;
  } cases[] = {
      {'0', 0},  {'1', 1},  {'2', 2},  {'3', 3},  {'4', 4},  {'5', 5},  {'6', 6},  {'7', 7},
      {'8', 8},  {'9', 9},  {'A', 10}, {'B', 11}, {'C', 12}, {'D', 13}, {'E', 14}, {'F', 15},
      {'a', 10}, {'b', 11}, {'c', 12}, {'d', 13}, {'e', 14}, {'f', 15},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.digit);
    EXPECT_EQ(hexDigit(static_cast<signed char>(c.digit)), c.expected);
  }
}

TEST(HexDigit, GivesMinusOneForEveryOtherByte) {
  const std::string digits = "0123456789ABCDEFabcdef";
  for (int byte = -128; byte < 128; byte++) {
    if (digits.find(static_cast<char>(byte)) != std::string::npos) continue;
    EXPECT_EQ(hexDigit(static_cast<signed char>(byte)), -1) << "the byte " << byte;
  }
}

TEST(AllNumeric, AcceptsNothingButDigits) {
  const struct {
    const char* text;
    bool expected;
  } cases[] = {
      {nullptr, false},
      {"", false},
      {"0", true},
      {"9", true},
      {"0123456789", true},
      {"12a", false},
      {"a12", false},
      {"1a2", false},
      {"-1", false},
      {"+1", false},
      {" 1", false},
      {"1 ", false},
      {"1.5", false},
      {"1/", false},
      {"1:", false},
      {"\xb2", false},
      {"1\xb2", false},
      {"1\n", false},
      {"99999999999999999999999999", true},
      {"\xd9\xa3", false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.text));
    EXPECT_EQ(allNumeric(c.text), c.expected);
  }
}

TEST(ByteBuffers, HoldFourBytesWithTheMostSignificantFirst) {
  static_assert(std::is_same_v<decltype(getU32(nullptr)), std::uint32_t>);
  const struct {
    unsigned char bytes[4];
    unsigned int value;
  } cases[] = {
      {{0, 0, 0, 0}, 0},
      {{0, 0, 0, 1}, 1},
      {{0, 0, 1, 0}, 256},
      {{0, 1, 0, 0}, 65536},
      {{1, 0, 0, 0}, 16777216},
      {{0x12, 0x34, 0x56, 0x78}, 0x12345678},
      {{0x7f, 0xff, 0xff, 0xff}, 2147483647},
      {{0x80, 0, 0, 0}, 2147483648},
      {{0, 0, 0, 0x80}, 128},
      {{0xfe, 0xdc, 0xba, 0x98}, 0xfedcba98},
      {{0xff, 0xff, 0xff, 0xff}, 4294967295},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.value);
    EXPECT_EQ(getU32(c.bytes), c.value);

    // At an odd address, between two bytes that must stay.
    unsigned char buffer[6] = {0x55, 0x55, 0x55, 0x55, 0x55, 0xaa};
    setU32(c.value, buffer + 1);
    EXPECT_EQ(buffer[0], 0x55);
    for (int i = 0; i < 4; i++) EXPECT_EQ(buffer[i + 1], c.bytes[i]) << "byte " << i;
    EXPECT_EQ(buffer[5], 0xaa);
    EXPECT_EQ(getU32(buffer + 1), c.value);
  }
}

TEST(ByteBuffers, HoldTwoBytesWithTheMostSignificantFirst) {
  static_assert(std::is_same_v<decltype(getU16(static_cast<const char*>(nullptr))), std::uint16_t>);
  const struct {
    unsigned char bytes[2];
    unsigned short value;
  } cases[] = {
      {{0, 0}, 0},           {{0, 1}, 1},        {{1, 0}, 256},         {{0x12, 0x34}, 0x1234},
      {{0, 0x80}, 128},      {{0x80, 0}, 32768}, {{0x7f, 0xff}, 32767}, {{0xfe, 0x98}, 0xfe98},
      {{0xff, 0xff}, 65535},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.value);
    EXPECT_EQ(getU16(c.bytes), c.value);
    char plain[2];
    std::memcpy(plain, c.bytes, 2);
    EXPECT_EQ(getU16(plain), c.value) << "of plain characters";

    unsigned char buffer[4] = {0x55, 0x55, 0x55, 0xaa};
    setU16(c.value, buffer + 1);
    EXPECT_EQ(buffer[0], 0x55);
    EXPECT_EQ(buffer[1], c.bytes[0]);
    EXPECT_EQ(buffer[2], c.bytes[1]);
    EXPECT_EQ(buffer[3], 0xaa);
    EXPECT_EQ(getU16(buffer + 1), c.value);
  }
}

}  // namespace conversion_test
