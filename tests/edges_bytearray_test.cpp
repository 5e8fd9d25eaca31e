// SPDX-License-Identifier: MIT
// Texts of more than 4 GiB.  They are one small piece of memory that is mapped many
// times, one after the other.

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>

#include "DistName.h"
#include "bytearray.h"
#include "html_escape.h"

namespace {

// Unknown to the compiler: clang 14 tries to make such texts itself for C++23, and ends.
volatile std::size_t one = 1;
const std::size_t GIB = one << 30;
constexpr bool wide = sizeof(void*) == 8;

// `size` times the character `fill`, then `end` and a NUL.
class LongText {
 public:
  LongText(const std::string& start, char fill, std::size_t size, const std::string& end) {
    m_mapped = (size + start.size() + end.size() + 1 + PIECE) / PIECE * PIECE;
    const int file = memfd_create("text", 0);
    if (file < 0 || ftruncate(file, PIECE) != 0) {
      return;
    }
    void* const whole =
        mmap(nullptr, m_mapped, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (whole == MAP_FAILED) {
      close(file);
      return;
    }
    m_text = static_cast<char*>(whole);
    for (std::size_t offset = 0; offset < m_mapped; offset += PIECE) {
      // The first and the last two pieces are separate copies.
      const bool own = offset < PIECE || offset + 2 * PIECE >= m_mapped;
      void* const piece = mmap(m_text + offset, PIECE, PROT_READ | PROT_WRITE,
                               (own ? MAP_PRIVATE : MAP_SHARED) | MAP_FIXED, file, 0);
      if (piece == MAP_FAILED) {
        m_text = nullptr;
        close(file);
        return;
      }
      if (own || offset == PIECE) {
        std::memset(piece, fill, PIECE);
      }
    }
    close(file);
    std::memcpy(m_text, start.data(), start.size());
    std::memcpy(m_text + start.size() + size, end.c_str(), end.size() + 1);
  }
  LongText(const LongText&) = delete;
  LongText& operator=(const LongText&) = delete;
  ~LongText() {
    if (m_text != nullptr) {
      munmap(m_text, m_mapped);
    }
  }
  const char* text() const { return m_text; }

 private:
  static constexpr std::size_t PIECE = std::size_t{32} << 20;
  std::size_t m_mapped = 0;
  char* m_text = nullptr;
};

std::size_t freeMemory() {
  std::ifstream in("/proc/meminfo");
  std::string word;
  while (in >> word) {
    if (word == "MemAvailable:") {
      std::size_t kilobytes = 0;
      in >> kilobytes;
      return kilobytes << 10;
    }
  }
  return 0;
}

// Neither decodes, and nothing is left.
void expectNoBytes(const char* text, unsigned int radix) {
  ASSERT_NE(text, nullptr);
  ByteArray array(3, "abc");
  EXPECT_FALSE(array.set(text, radix));
  EXPECT_EQ(array.size(), 0U);
  EXPECT_TRUE(array.empty());
  const ByteArray constructed(text, radix);
  EXPECT_EQ(constructed.size(), 0U);
}

}  // namespace

TEST(LongByteArray, RefusesARunOfHexadecimalDigitsWhoseBytesNeed33Bits) {
  if (!wide) GTEST_SKIP() << "no such texts with 32 bits";
  const LongText text("", '1', 8 * GIB, "");  // 2^32 bytes
  expectNoBytes(text.text(), 16);
}

TEST(LongByteArray, RefusesAnOddRunOfHexadecimalDigitsWhoseBytesNeed33Bits) {
  if (!wide) GTEST_SKIP() << "no such texts with 32 bits";
  const LongText text("", '1', 8 * GIB - 1, "");  // (2^33 - 1 + 1) / 2
  expectNoBytes(text.text(), 16);
}

TEST(LongByteArray, RefusesHexadecimalDigitsWhoseCountIsSmallModulo32Bits) {
  if (!wide) GTEST_SKIP() << "no such texts with 32 bits";
  const LongText text("", 'a', 8 * GIB + 6, "");
  expectNoBytes(text.text(), 16);
}

TEST(LongByteArray, RefusesARunOfBase64WhoseBytesNeed33Bits) {
  if (!wide) GTEST_SKIP() << "no such texts with 32 bits";
  const LongText text("", 'Q', 5726623064, "");  // 4294967298 bytes
  expectNoBytes(text.text(), 64);
}

TEST(LongByteArray, RefusesARunOfBase64WithPaddingWhoseBytesNeed33Bits) {
  if (!wide) GTEST_SKIP() << "no such texts with 32 bits";
  const LongText text("", 'Q', 5726623062, "==");  // 4294967296 bytes
  expectNoBytes(text.text(), 64);
}

TEST(LongByteArray, RefusesBase64WhoseCountIsSmallModulo32Bits) {
  if (!wide) GTEST_SKIP() << "no such texts with 32 bits";
  const LongText text("", 'Q', 8 * GIB + 8, "");
  expectNoBytes(text.text(), 64);
}

TEST(LongByteArray, IgnoresWhatFollowsARunHoweverLong) {
  if (!wide) GTEST_SKIP() << "no such texts with 32 bits";
  const LongText text("QUJD!", 'Q', 8 * GIB + 3, "");
  ByteArray array;
  ASSERT_TRUE(array.set(text.text(), 64));
  EXPECT_EQ(array.text(), "ABC");
  const LongText digits("414243z", '1', 8 * GIB + 3, "");
  ASSERT_TRUE(array.set(digits.text(), 16));
  EXPECT_EQ(array.text(), "ABC");
  const LongText padded("QUI=", 'Q', 4 * GIB + 3, "");
  ASSERT_TRUE(array.set(padded.text(), 64));
  EXPECT_EQ(array.text(), "AB");
}

TEST(LongByteArray, RefusesMorePaddingThanTwoHoweverMuch) {
  if (!wide) GTEST_SKIP() << "no such texts with 32 bits";
  ByteArray array;
  const LongText three("Q", '=', 4 * GIB + 3, "");  // 4 modulo 2^32
  EXPECT_FALSE(array.set(three.text(), 64));
  const LongText two("QQ", '=', 4 * GIB + 2, "");
  EXPECT_FALSE(array.set(two.text(), 64));
}

TEST(LongByteArray, DecodesWhatFitsAsBefore) {
  ByteArray array;
  ASSERT_TRUE(array.set(std::string(2000001, 'f').c_str(), 16));
  ASSERT_EQ(array.size(), 1000001U);
  EXPECT_EQ(array[0], 0x0F);
  EXPECT_EQ(array[1000000], 0xFF);
  ASSERT_TRUE(array.set((std::string(4000000, 'Q') + "QQ==").c_str(), 64));
  ASSERT_EQ(array.size(), 3000001U);
  EXPECT_EQ(array[3000000], 0x41);
}

TEST(LongNames, AreLookedAtToTheirEnd) {
  if (!wide || freeMemory() < 4 * GIB) GTEST_SKIP() << "needs 4 GiB";
  std::string name(2 * GIB + 5, 'a');  // more than an int
  EXPECT_TRUE(DistName::nameOkay(name));
  name.back() = '~';
  EXPECT_FALSE(DistName::nameOkay(name));
}

TEST(LongNames, AreLookedAtBeyond32Bits) {
  if (!wide || freeMemory() < 6 * GIB) GTEST_SKIP() << "needs 6 GiB";
  std::string name(4 * GIB + 5, 'a');
  name.back() = '~';
  EXPECT_FALSE(DistName::nameOkay(name));
}

TEST(LongTexts, ArePercentDecodedBeyond32Bits) {
  if (!wide || freeMemory() < 12 * GIB) GTEST_SKIP() << "needs 12 GiB";
  std::string text(4 * GIB, 'a');
  text += "b%41";
  const std::string decoded = URIunEscape(text);
  ASSERT_EQ(decoded.size(), 4 * GIB + 2);
  EXPECT_EQ(decoded.substr(4 * GIB - 1), "abA");
}

TEST(LongTexts, AreEscapedForHtmlBeyond32Bits) {
  if (!wide || freeMemory() < 12 * GIB) GTEST_SKIP() << "needs 12 GiB";
  std::string text(4 * GIB, 'a');
  text += "<b";
  const std::string escaped = HTMLescape(text, false);
  ASSERT_EQ(escaped.size(), 4 * GIB + 5);
  EXPECT_EQ(escaped.substr(4 * GIB - 1), "a&lt;b");
}
