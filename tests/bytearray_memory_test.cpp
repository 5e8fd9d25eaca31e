// SPDX-License-Identifier: MIT
// Byte arrays when there is no memory left.
#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "bytearray.h"
#include "system_calls.h"

namespace bytearray_memory_test {

namespace {

bool outOfMemory = false;
unsigned int allocations = 0;

// While one of these exists, allocations that may not throw fail.
class memoryShortage {
 public:
  memoryShortage() { outOfMemory = true; }
  memoryShortage(const memoryShortage&) = delete;
  memoryShortage& operator=(const memoryShortage&) = delete;
  ~memoryShortage() { outOfMemory = false; }
};

void* allocate(std::size_t size) {
  allocations++;
  return outOfMemory ? nullptr : systemCalls::newArray.real(size);
}

const replacedCalls here(__FILE__, [] { systemCalls::newArray.replace(allocate); });

// The array has no bytes, and works like a new one.
void expectEmptyAndUsable(ByteArray& array) {
  EXPECT_EQ(array.size(), 0U);
  EXPECT_TRUE(array.empty());
  EXPECT_EQ(array.data(), nullptr);
  EXPECT_EQ(array[0], 0);
  EXPECT_EQ(array.format(16), "");
  ASSERT_TRUE(array.set("0102", 16)) << "there is memory again";
  EXPECT_EQ(array.size(), 2U);
  EXPECT_EQ(array[0], 1);
  EXPECT_EQ(array[1], 2);
}

TEST(ByteArrayWithoutMemory, FailsToReserveAndIsEmptyThen) {
  ByteArray array;
  {
    const memoryShortage shortage;
    EXPECT_FALSE(array.reserve(1));
  }
  expectEmptyAndUsable(array);
}

TEST(ByteArrayWithoutMemory, LosesItsBytesWhenItCannotGrow) {
  ByteArray array("414243", 16);
  ASSERT_EQ(array.size(), 3U);
  {
    const memoryShortage shortage;
    EXPECT_FALSE(array.reserve(4));
    EXPECT_FALSE(array.reserve(1)) << "the failure released the old room";
  }
  expectEmptyAndUsable(array);
}

TEST(ByteArrayWithoutMemory, StillReservesWhatItHasRoomFor) {
  ByteArray array("41424344", 16);
  ASSERT_EQ(array.size(), 4U);
  const unsigned int before = allocations;
  const memoryShortage shortage;
  EXPECT_TRUE(array.reserve(2));
  EXPECT_EQ(array.size(), 2U);
  EXPECT_TRUE(array.reserve(4));
  EXPECT_EQ(array.size(), 4U);
  EXPECT_TRUE(array.reserve(0));
  EXPECT_TRUE(array.empty());
  EXPECT_EQ(allocations, before) << "a buffer that is large enough is kept";
}

TEST(ByteArrayWithoutMemory, ReservesExactlyNothingWithoutAsking) {
  ByteArray array;
  const unsigned int before = allocations;
  const memoryShortage shortage;
  EXPECT_TRUE(array.reserve(0));
  EXPECT_EQ(allocations, before);
}

TEST(ByteArrayWithoutMemory, FailsToDecode) {
  const struct {
    const char* text;
    unsigned int radix;
  } cases[] = {{"4142", 16}, {"4", 16}, {"QUJD", 64}, {"QQ==", 64}, {"4142", 0}, {"QUJD", 0}};
  for (const auto& decoded : cases) {
    SCOPED_TRACE(testing::Message() << decoded.text << " radix " << decoded.radix);
    ByteArray array;
    {
      const memoryShortage shortage;
      EXPECT_FALSE(array.set(decoded.text, decoded.radix));
    }
    expectEmptyAndUsable(array);
  }
}

TEST(ByteArrayWithoutMemory, DecodesTextsThatNeedNone) {
  ByteArray array;
  const memoryShortage shortage;
  EXPECT_TRUE(array.set("", 0));
  EXPECT_TRUE(array.set("", 16));
  EXPECT_TRUE(array.set("", 64));
  EXPECT_TRUE(array.empty());
}

TEST(ByteArrayWithoutMemory, IsConstructedEmptyFromBytes) {
  outOfMemory = true;
  ByteArray plain(3, "abc");
  const unsigned char raw[] = {1, 2, 3};
  ByteArray fromRaw(3, raw);
  ByteArray uninitialised(3, static_cast<const char*>(nullptr));
  outOfMemory = false;
  expectEmptyAndUsable(plain);
  expectEmptyAndUsable(fromRaw);
  expectEmptyAndUsable(uninitialised);
}

TEST(ByteArrayWithoutMemory, IsConstructedEmptyFromText) {
  outOfMemory = true;
  ByteArray radix16("4142", 16);
  ByteArray radix64("QUJD", 64);
  outOfMemory = false;
  expectEmptyAndUsable(radix16);
  expectEmptyAndUsable(radix64);
}

TEST(ByteArrayWithoutMemory, IsCopiedAsAnEmptyArray) {
  const ByteArray original("414243", 16);
  outOfMemory = true;
  ByteArray copy(original);
  outOfMemory = false;
  expectEmptyAndUsable(copy);
  EXPECT_EQ(original.format(16), "414243");
}

TEST(ByteArrayWithoutMemory, IsAssignedAsAnEmptyArray) {
  const ByteArray original("414243", 16);
  ByteArray target("01", 16);
  {
    const memoryShortage shortage;
    target = original;
  }
  expectEmptyAndUsable(target);
  EXPECT_EQ(original.format(16), "414243");
}

}  // namespace

}  // namespace bytearray_memory_test
