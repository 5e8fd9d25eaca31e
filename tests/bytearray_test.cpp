// SPDX-License-Identifier: MIT
#include "bytearray.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <utility>

namespace bytearray_test {

namespace {

// The bytes as space-separated decimal numbers, for comparisons that do not use
// the encodings under test.
std::string bytesOf(const ByteArray& array) {
  std::string result;
  for (unsigned int i = 0; i < array.size(); i++) {
    result += (i == 0 ? "" : " ") + std::to_string(array.data()[i]);
  }
  return result;
}

TEST(ByteArrayConstructor, MakesAnEmptyArrayWithoutABuffer) {
  const ByteArray array;
  EXPECT_EQ(array.size(), 0U);
  EXPECT_TRUE(array.empty());
  EXPECT_EQ(array.data(), nullptr);
  EXPECT_EQ(array.text(), "");
}

TEST(ByteArrayConstructor, CopiesSignedAndUnsignedBytesZerosIncluded) {
  const char plain[] = {'a', '\0', '\x80', '\xff'};
  const ByteArray fromPlain(4, plain);
  EXPECT_EQ(bytesOf(fromPlain), "97 0 128 255");

  unsigned char raw[] = {0, 127, 128, 255, 9};
  const ByteArray fromRaw(5, raw);
  raw[1] = 1;
  EXPECT_EQ(bytesOf(fromRaw), "0 127 128 255 9") << "the bytes are copied";
}

TEST(ByteArrayConstructor, MakesRoomWhenThereIsNothingToCopy) {
  ByteArray fromPlain(7, static_cast<const char*>(nullptr));
  EXPECT_EQ(fromPlain.size(), 7U);
  EXPECT_FALSE(fromPlain.empty());
  fromPlain[6] = 200;
  EXPECT_EQ(fromPlain[6], 200);

  const ByteArray fromRaw(3, static_cast<const unsigned char*>(nullptr));
  EXPECT_EQ(fromRaw.size(), 3U);
  EXPECT_NE(fromRaw.data(), nullptr);
}

TEST(ByteArrayConstructor, TakesNoBytesForASizeOfZero) {
  const ByteArray fromPlain(0, "abc");
  EXPECT_TRUE(fromPlain.empty());
  const unsigned char raw[] = {1};
  const ByteArray fromRaw(0, raw);
  EXPECT_TRUE(fromRaw.empty());
}

TEST(ByteArrayConstructor, LeavesAnEmptyArrayForATextThatDoesNotDecode) {
  EXPECT_EQ(ByteArray("QQ=", 64).size(), 0U);
  EXPECT_EQ(ByteArray("abc", 0U).size(), 0U);
  EXPECT_EQ(ByteArray("41", 10).size(), 0U);
}

TEST(ByteArrayCopy, IsDeep) {
  ByteArray original("010203", 16);
  const ByteArray copy(original);
  EXPECT_NE(copy.data(), original.data());
  original[0] = 9;
  EXPECT_EQ(bytesOf(copy), "1 2 3");
  EXPECT_EQ(bytesOf(original), "9 2 3");
}

TEST(ByteArrayCopy, OfAnEmptyArrayIsEmpty) {
  const ByteArray original;
  const ByteArray copy(original);
  EXPECT_TRUE(copy.empty());
  ByteArray assigned("0102", 16);
  assigned = original;
  EXPECT_TRUE(assigned.empty());
}

TEST(ByteArrayAssignment, IsDeepForShorterAndLongerContent) {
  const ByteArray three("010203", 16);
  const ByteArray five("0a0b0c0d0e", 16);
  ByteArray target(three);
  target = five;
  EXPECT_EQ(bytesOf(target), "10 11 12 13 14");
  EXPECT_NE(target.data(), five.data());
  target = three;
  EXPECT_EQ(bytesOf(target), "1 2 3");
  target[0] = 77;
  EXPECT_EQ(bytesOf(three), "1 2 3");
  EXPECT_EQ(bytesOf(five), "10 11 12 13 14");
}

TEST(ByteArrayAssignment, ToItselfChangesNothing) {
  ByteArray array("010203", 16);
  const ByteArray& same = array;
  const unsigned char* before = array.data();
  array = same;
  EXPECT_EQ(bytesOf(array), "1 2 3");
  EXPECT_EQ(array.data(), before);
}

TEST(ByteArrayReserve, SetsTheSizeExactly) {
  ByteArray array;
  ASSERT_TRUE(array.reserve(10));
  EXPECT_EQ(array.size(), 10U);
  ASSERT_TRUE(array.reserve(3));
  EXPECT_EQ(array.size(), 3U);
  ASSERT_TRUE(array.reserve(0));
  EXPECT_EQ(array.size(), 0U);
  EXPECT_TRUE(array.empty());
  ASSERT_TRUE(array.reserve(100000));
  EXPECT_EQ(array.size(), 100000U);
}

TEST(ByteArrayReserve, KeepsABufferThatIsLargeEnoughAndDoesNotClearIt) {
  ByteArray array("0102030405", 16);
  const unsigned char* buffer = array.data();
  ASSERT_TRUE(array.reserve(2));
  EXPECT_EQ(array.data(), buffer);
  EXPECT_EQ(bytesOf(array), "1 2");
  ASSERT_TRUE(array.reserve(5));
  EXPECT_EQ(array.data(), buffer);
  EXPECT_EQ(bytesOf(array), "1 2 3 4 5");
}

TEST(ByteArrayReserve, OfNothingNeedsNoBuffer) {
  ByteArray array;
  EXPECT_TRUE(array.reserve(0));
  EXPECT_EQ(array.data(), nullptr);
}

TEST(ByteArrayIndex, ReadsAndWritesBytesInside) {
  ByteArray array("00ff80", 16);
  EXPECT_EQ(array[0], 0);
  EXPECT_EQ(array[1], 255);
  EXPECT_EQ(array[2], 128);
  array[1] = 42;
  EXPECT_EQ(std::as_const(array)[1], 42);
  EXPECT_EQ(&array[2], array.data() + 2);
}

TEST(ByteArrayIndex, ReadsZeroPastTheEndAndLosesWhatIsWrittenThere) {
  const unsigned int indexes[] = {3, 4, 1000, UINT_MAX};
  for (const unsigned int index : indexes) {
    SCOPED_TRACE(testing::Message() << "index " << index);
    ByteArray array("414243", 16);
    EXPECT_EQ(array[index], 0);
    array[index] = 99;
    EXPECT_EQ(array[index], 0);
    EXPECT_EQ(std::as_const(array)[index], 0);
    EXPECT_EQ(bytesOf(array), "65 66 67");
  }
  ByteArray empty;
  EXPECT_EQ(empty[0], 0);
  empty[0] = 1;
  EXPECT_EQ(std::as_const(empty)[0], 0);
}

TEST(ByteArrayIndex, StopsAtTheSizeNotAtTheRoom) {
  ByteArray array("0102030405", 16);
  ASSERT_TRUE(array.reserve(3));
  EXPECT_EQ(array[3], 0);
  array[3] = 9;
  EXPECT_EQ(std::as_const(array)[4], 0);
  ASSERT_TRUE(array.reserve(5));
  EXPECT_EQ(bytesOf(array), "1 2 3 4 5");
}

TEST(ByteArrayIndex, SharesOneSpareByteAmongAllArrays) {
  ByteArray one("01", 16);
  ByteArray two;
  unsigned char* spare = &one[1];
  EXPECT_EQ(spare, &two[0]);
  EXPECT_EQ(spare, &two[UINT_MAX]);
  *spare = 5;
  EXPECT_EQ(two[7], 0) << "every bad index clears the spare byte first";
}

TEST(ByteArrayText, HoldsEveryByte) {
  EXPECT_EQ(ByteArray("41004280", 16).text(), std::string("A\0B\x80", 4));
}

TEST(ByteArrayComparison, OrdersUnsignedBytesAndThenSizes) {
  const struct {
    const char* a;
    const char* b;
    bool equal;
    bool less;
    bool greater;
  } cases[] = {
      {"", "", true, false, false},
      {"", "00", false, true, false},
      {"01", "01", true, false, false},
      {"01", "02", false, true, false},
      {"7f", "80", false, true, false},
      {"00", "ff", false, true, false},
      {"0102", "010200", false, true, false},
      {"0103", "010200", false, false, true},
      {"ff", "0000", false, false, true},
      {"010203", "010203", true, false, false},
      {"010203", "010303", false, true, false},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(testing::Message() << expected.a << " and " << expected.b);
    const ByteArray a(expected.a, 16);
    const ByteArray b(expected.b, 16);
    EXPECT_EQ(a == b, expected.equal);
    EXPECT_EQ(b == a, expected.equal);
    EXPECT_EQ(a < b, expected.less);
    EXPECT_EQ(b < a, expected.greater);
  }
}

TEST(ByteArrayComparison, LooksAtTheSizeNotAtTheRoom) {
  ByteArray longer("010203", 16);
  ASSERT_TRUE(longer.reserve(2));
  const ByteArray shorter("0102", 16);
  EXPECT_TRUE(longer == shorter);
  EXPECT_FALSE(longer < shorter);
  EXPECT_FALSE(shorter < longer);
}

}  // namespace

}  // namespace bytearray_test
