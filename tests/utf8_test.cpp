// SPDX-License-Identifier: MIT
// UTF-8: one character, and whole texts.
#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <ios>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

#include "conversion.h"

namespace utf8_test {

using std::string_literals::operator""s;

namespace {

// The bytes in storage that ends with them, so that a sanitizer sees a read
// beyond.
class Exact {
 public:
  explicit Exact(const std::string& bytes) : m_bytes(new unsigned char[bytes.size()]) {
    if (!bytes.empty()) std::memcpy(m_bytes.get(), bytes.data(), bytes.size());
  }
  const unsigned char* get() const { return m_bytes.get(); }
  const char* text() const { return reinterpret_cast<const char*>(m_bytes.get()); }

 private:
  std::unique_ptr<unsigned char[]> m_bytes;
};

// The well-formed sequences, in the order of their bytes and so of their code
// points: the rows of the Unicode Standard's table of well-formed byte sequences.
struct Row {
  int length;
  int low[4], high[4];
};
const Row wellFormed[] = {
    {1, {0x00, 0, 0, 0}, {0x7f, 0, 0, 0}},
    {2, {0xc2, 0x80, 0, 0}, {0xdf, 0xbf, 0, 0}},
    {3, {0xe0, 0xa0, 0x80, 0}, {0xe0, 0xbf, 0xbf, 0}},
    {3, {0xe1, 0x80, 0x80, 0}, {0xec, 0xbf, 0xbf, 0}},
    {3, {0xed, 0x80, 0x80, 0}, {0xed, 0x9f, 0xbf, 0}},
    {3, {0xee, 0x80, 0x80, 0}, {0xef, 0xbf, 0xbf, 0}},
    {4, {0xf0, 0x90, 0x80, 0x80}, {0xf0, 0xbf, 0xbf, 0xbf}},
    {4, {0xf1, 0x80, 0x80, 0x80}, {0xf3, 0xbf, 0xbf, 0xbf}},
    {4, {0xf4, 0x80, 0x80, 0x80}, {0xf4, 0x8f, 0xbf, 0xbf}},
};

// Calls `use(bytes, length, code point)` for every character in order, until it
// answers false.  Returns the code point after the last one.
template <class Use>
std::int32_t eachCharacter(Use use) {
  std::int32_t codePoint = 0;
  for (const Row& row : wellFormed) {
    int at[4] = {row.low[0], row.low[1], row.low[2], row.low[3]};
    bool more = true;
    while (more) {
      if (codePoint == 0xd800) codePoint = 0xe000;  // no surrogates
      unsigned char bytes[4];
      for (int i = 0; i < 4; i++) bytes[i] = static_cast<unsigned char>(at[i]);
      if (!use(bytes, row.length, codePoint)) return codePoint;
      codePoint++;
      int digit = row.length - 1;
      while (digit >= 0 && at[digit] == row.high[digit]) {
        at[digit] = row.low[digit];
        digit--;
      }
      more = digit >= 0;
      if (more) at[digit]++;
    }
  }
  return codePoint;
}

}  // namespace

TEST(GetUTF8, DecodesOrRefusesACharacter) {
  static_assert(std::is_same_v<std::int32_t, decltype(getUTF8(std::declval<const unsigned char*&>(),
                                                              0u, false))>);
  const struct {
    const char* what;
    std::string bytes;
    std::int32_t strict, lenient;
    std::ptrdiff_t moved;
  } cases[] = {
      {"NUL", "\0"s, 0, 0, 0},
      {"a letter", "A", 0x41, 0x41, 0},
      {"a letter before others", "ABC", 0x41, 0x41, 0},
      {"the last of ASCII", "\x7f", 0x7f, 0x7f, 0},

      {"U+0080", "\xc2\x80", 0x80, 0x80, 1},
      {"U+00E9", "\xc3\xa9", 0xe9, 0xe9, 1},
      {"U+00E9 before others", "\xc3\xa9\xa9\xa9", 0xe9, 0xe9, 1},
      {"U+07FF", "\xdf\xbf", 0x7ff, 0x7ff, 1},
      {"U+0800", "\xe0\xa0\x80", 0x800, 0x800, 2},
      {"U+20AC", "\xe2\x82\xac", 0x20ac, 0x20ac, 2},
      {"U+D7FF", "\xed\x9f\xbf", 0xd7ff, 0xd7ff, 2},
      {"U+E000", "\xee\x80\x80", 0xe000, 0xe000, 2},
      {"U+FFFD", "\xef\xbf\xbd", 0xfffd, 0xfffd, 2},
      {"U+FFFF", "\xef\xbf\xbf", 0xffff, 0xffff, 2},
      {"U+10000", "\xf0\x90\x80\x80", 0x10000, 0x10000, 3},
      {"U+1F600", "\xf0\x9f\x98\x80", 0x1f600, 0x1f600, 3},
      {"U+1F600 before others", "\xf0\x9f\x98\x80\x80", 0x1f600, 0x1f600, 3},
      {"U+10FFFF", "\xf4\x8f\xbf\xbf", 0x10ffff, 0x10ffff, 3},

      {"a continuation byte", "\x80", -1, 0x80, 0},
      {"a continuation byte before another", "\xbf\x80", -1, 0xbf, 0},
      {"overlong NUL", "\xc0\x80", -1, 0xc0, 0},
      {"the last overlong lead byte", "\xc1\xbf", -1, 0xc1, 0},
      {"overlong in three bytes", "\xe0\x9f\xbf", -1, 0xe0, 0},
      {"overlong in four bytes", "\xf0\x8f\xbf\xbf", -1, 0xf0, 0},
      {"the first surrogate", "\xed\xa0\x80", -1, 0xed, 0},
      {"the last surrogate", "\xed\xbf\xbf", -1, 0xed, 0},
      {"above U+10FFFF", "\xf4\x90\x80\x80", -1, 0xf4, 0},
      {"lead byte 245", "\xf5\x80\x80\x80", -1, 0xf5, 0},
      {"lead byte 248", "\xf8\x88\x80\x80\x80", -1, 0xf8, 0},
      {"byte 255", "\xff\xbf\xbf\xbf", -1, 0xff, 0},

      {"one of two bytes", "\xc3", -1, 0xc3, 0},
      {"one of three bytes", "\xe2", -1, 0xe2, 0},
      {"two of three bytes", "\xe2\x82", -1, 0xe2, 0},
      {"one of four bytes", "\xf0", -1, 0xf0, 0},
      {"two of four bytes", "\xf0\x9f", -1, 0xf0, 0},
      {"three of four bytes", "\xf0\x9f\x98", -1, 0xf0, 0},

      {"second byte too low", "\xc3\x7f", -1, 0xc3, 0},
      {"second byte too high", "\xc3\xc0", -1, 0xc3, 0},
      {"second byte NUL", "\xc3\0"s, -1, 0xc3, 0},
      {"second of three too low", "\xe2\x7f\x80", -1, 0xe2, 0},
      {"second of three too high", "\xe2\xc0\x80", -1, 0xe2, 0},
      {"third too low", "\xe2\x82\x7f", -1, 0xe2, 0},
      {"third too high", "\xe2\x82\xc0", -1, 0xe2, 0},
      {"third after 224", "\xe0\xa0\x7f", -1, 0xe0, 0},
      {"third after 237", "\xed\x9f\xc0", -1, 0xed, 0},
      {"third of four", "\xf1\x80\x7f\x80", -1, 0xf1, 0},
      {"fourth too low", "\xf0\x9f\x98\x7f", -1, 0xf0, 0},
      {"fourth too high", "\xf0\x9f\x98\xc0", -1, 0xf0, 0},
      {"fourth after 244", "\xf4\x8f\xbf\xff", -1, 0xf4, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const Exact buffer(c.bytes);
    const unsigned char* at = buffer.get();
    EXPECT_EQ(getUTF8(at, static_cast<unsigned int>(c.bytes.size()), true), c.strict);
    EXPECT_EQ(at - buffer.get(), c.moved) << "strict";
    at = buffer.get();
    EXPECT_EQ(getUTF8(at, static_cast<unsigned int>(c.bytes.size()), false), c.lenient);
    EXPECT_EQ(at - buffer.get(), c.moved) << "not strict";
  }
}

TEST(GetUTF8, BelievesTheRemainingLengthAndNotTheBytes) {
  const unsigned char text[] = {0xf0, 0x9f, 0x98, 0x80, 0};
  for (unsigned int remaining = 1; remaining <= 5; remaining++) {
    SCOPED_TRACE(remaining);
    const unsigned char* at = text;
    EXPECT_EQ(getUTF8(at, remaining, true), remaining < 4 ? -1 : 0x1f600);
    EXPECT_EQ(at - text, remaining < 4 ? 0 : 3);
    at = text;
    EXPECT_EQ(getUTF8(at, remaining, false), remaining < 4 ? 0xf0 : 0x1f600);
    EXPECT_EQ(at - text, remaining < 4 ? 0 : 3);
  }
}

TEST(GetUTF8, ReadsNothingWhenNothingRemains) {
  const Exact buffer("");
  const unsigned char* at = buffer.get();
  EXPECT_EQ(getUTF8(at, 0, true), -1);
  EXPECT_EQ(getUTF8(at, 0, false), 0);
  EXPECT_EQ(at, buffer.get());
}

TEST(GetUTF8, DecodesEveryCharacter) {
  bool good = true;
  const std::int32_t end =
      eachCharacter([&good](const unsigned char* bytes, int length, std::int32_t codePoint) {
        for (const bool strict : {true, false}) {
          const unsigned char* at = bytes;
          const std::int32_t got = getUTF8(at, static_cast<unsigned int>(length), strict);
          good = good && got == codePoint && at - bytes == length - 1;
          if (!good) {
            ADD_FAILURE() << "U+" << std::hex << codePoint << (strict ? " strictly" : "")
                          << " gives " << got << " and moves by " << (at - bytes);
            break;
          }
        }
        return good;
      });
  EXPECT_EQ(end, 0x110000);
}

TEST(GetUTF8, RefusesEveryPairOfBytesThatStartsNoCharacter) {
  for (int lead = 0x80; lead < 0x100; lead++)
    for (int second = 0; second < 0x100; second++) {
      bool starts = false;
      for (const Row& row : wellFormed)
        starts = starts || (lead >= row.low[0] && lead <= row.high[0] && second >= row.low[1] &&
                            second <= row.high[1]);
      const unsigned char bytes[] = {static_cast<unsigned char>(lead),
                                     static_cast<unsigned char>(second), 0x80, 0x80};
      const unsigned char* at = bytes;
      const std::int32_t strict = getUTF8(at, 4, true);
      ASSERT_EQ(strict >= 0, starts) << "bytes " << lead << " and " << second;
      ASSERT_EQ(at != bytes, starts) << "bytes " << lead << " and " << second;
      at = bytes;
      const std::int32_t lenient = getUTF8(at, 4, false);
      ASSERT_EQ(lenient, starts ? strict : lead) << "bytes " << lead << " and " << second;
    }
}

TEST(PutUTF8, EncodesOrRefusesACharacter) {
  const struct {
    unsigned long character;
    std::string expected;
  } cases[] = {
      {0, "\0"s},
      {0x41, "A"},
      {0x7f, "\x7f"},
      {0x80, "\xc2\x80"},
      {0xe9, "\xc3\xa9"},
      {0x7ff, "\xdf\xbf"},
      {0x800, "\xe0\xa0\x80"},
      {0x20ac, "\xe2\x82\xac"},
      {0xd7ff, "\xed\x9f\xbf"},
      {0xd800, ""},
      {0xdabc, ""},
      {0xdbff, ""},
      {0xdc00, ""},
      {0xdfff, ""},
      {0xe000, "\xee\x80\x80"},
      {0xfffe, "\xef\xbf\xbe"},
      {0xffff, "\xef\xbf\xbf"},
      {0x10000, "\xf0\x90\x80\x80"},
      {0x1f600, "\xf0\x9f\x98\x80"},
      {0x10fffe, "\xf4\x8f\xbf\xbe"},
      {0x10ffff, ""},
      {0x110000, ""},
      {0x1fffff, ""},
      {0x200000, ""},
      {0x7fffffff, ""},
      {0x80000000, ""},
      {0xffffffff, ""},
      {ULONG_MAX, ""},
      {ULONG_MAX - 0xffff, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "U+" << std::hex << c.character);
    unsigned char buffer[6] = {0x55, 0x55, 0x55, 0x55, 0x55, 0x55};
    EXPECT_EQ(putUTF8(c.character, buffer), static_cast<int>(c.expected.size()));
    for (std::size_t i = 0; i < sizeof buffer; i++)
      EXPECT_EQ(buffer[i], i < c.expected.size() ? static_cast<unsigned char>(c.expected[i]) : 0x55)
          << "byte " << i;
  }
}

TEST(PutUTF8, EncodesEveryCharacterBelowTheLast) {
  bool good = true;
  const std::int32_t end =
      eachCharacter([&good](const unsigned char* bytes, int length, std::int32_t codePoint) {
        if (codePoint == 0x10ffff) return false;
        unsigned char buffer[4] = {0, 0, 0, 0};
        const int written = putUTF8(static_cast<unsigned long>(codePoint), buffer);
        good =
            written == length && std::memcmp(buffer, bytes, static_cast<std::size_t>(length)) == 0;
        if (!good)
          ADD_FAILURE() << "U+" << std::hex << codePoint << " gives " << written << " bytes";
        return good;
      });
  EXPECT_EQ(end, 0x10ffff);
}

TEST(ValidUTF8, JudgesATextOfAGivenLength) {
  const struct {
    std::string text;
    bool any, printing;
  } cases[] = {
      {"", true, true},
      {"plain text", true, true},
      {"\0"s, false, false},
      {"a\0"s, false, false},
      {"a\0b"s, false, false},
      {"\x01", true, false},
      {"\n", true, false},
      {"\t", true, false},
      {"\x1f", true, false},
      {"a\x1f", true, false},
      {" ", true, true},
      {"}", true, true},
      {"~", true, false},
      {"a~b", true, false},
      {"\x7f", true, true},
      {"\xc2\x80", true, true},
      {"caf\xc3\xa9", true, true},
      {"\xe2\x82\xac", true, true},
      {"\xef\xbf\xbf", true, true},
      {"\xed\x9f\xbf", true, true},
      {"\xf0\x9f\x98\x80", true, true},
      {"\xf4\x8f\xbf\xbf", true, true},
      {"a\xc3\xa9~", true, false},
      {"\x80", false, false},
      {"\xe9", false, false},
      {"\xc0\x80", false, false},
      {"\xc1\xbf", false, false},
      {"\xc3", false, false},
      {"a\xc3", false, false},
      {"\xc3\x61", false, false},
      {"\xc3\xa9\xa9", false, false},
      {"\xe0\x9f\xbf", false, false},
      {"\xe2\x82", false, false},
      {"\xed\xa0\x80", false, false},
      {"\xf0\x8f\xbf\xbf", false, false},
      {"\xf0\x9f\x98", false, false},
      {"\xf4\x90\x80\x80", false, false},
      {"\xf5\x80\x80\x80", false, false},
      {"\xff", false, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.text));
    const Exact buffer(c.text);
    EXPECT_EQ(validUTF8(buffer.text(), static_cast<int>(c.text.size()), false), c.any);
    EXPECT_EQ(validUTF8(buffer.text(), static_cast<int>(c.text.size()), true), c.printing);

    if (c.text.find('\0') != std::string::npos) continue;
    const Exact terminated(c.text + '\0');
    for (const int negative : {-1, -2, INT_MIN}) {
      EXPECT_EQ(validUTF8(terminated.text(), negative, false), c.any) << "length " << negative;
      EXPECT_EQ(validUTF8(terminated.text(), negative, true), c.printing) << "length " << negative;
    }
  }
}

// Plain text is read word by word.
TEST(ValidUTF8, FindsABadByteAtAnyPlaceOfALongText) {
  for (std::size_t size = 1; size <= 40; size++) {
    const std::string plain(size, 'a');
    EXPECT_TRUE(validUTF8(Exact(plain).text(), static_cast<int>(size), false)) << size;
    EXPECT_TRUE(validUTF8(Exact(plain + '\0').text(), -1, false)) << size;
    for (std::size_t place = 0; place < size; place++) {
      SCOPED_TRACE(testing::Message() << place << " of " << size);
      for (const char bad : {'\x80', '\xff', '\0'}) {
        std::string text = plain;
        text[place] = bad;
        EXPECT_FALSE(validUTF8(Exact(text).text(), static_cast<int>(size), false)) << int{bad};
      }
      std::string text = plain;
      text[place] = '\x7f';
      EXPECT_TRUE(validUTF8(Exact(text).text(), static_cast<int>(size), false));
      EXPECT_TRUE(validUTF8(Exact(text).text(), static_cast<int>(size), true));
    }
  }
}

TEST(ValidUTF8, EndsAtTheTerminatingZeroWithoutALength) {
  EXPECT_TRUE(validUTF8("a\0\xff", -1, false));
  EXPECT_TRUE(validUTF8("a\0\xff", -1, true));
  EXPECT_TRUE(validUTF8("\0\xff", -1, true));
  EXPECT_FALSE(validUTF8("\xe2\0\x80", -1, false));
}

TEST(ValidUTF8, LooksNoFurtherThanTheLength) {
  EXPECT_TRUE(validUTF8("a\xff", 1, false));
  EXPECT_TRUE(validUTF8("\xff", 0, false));
  EXPECT_FALSE(validUTF8("\xc3\xa9", 1, false));
}

TEST(ValidUTF8, LooksAtMost999999BytesFarForTheTerminatingZero) {
  const Exact endless(std::string(999999, 'a'));
  EXPECT_TRUE(validUTF8(endless.text(), -1, true));
  EXPECT_TRUE(validUTF8((std::string(999999, 'a') + '\xff').c_str(), -1, false));
  EXPECT_FALSE(validUTF8((std::string(999998, 'a') + '\xff').c_str(), -1, false));
  EXPECT_FALSE(validUTF8((std::string(999998, 'a') + "\xc3\xa9").c_str(), -1, false))
      << "the limit cuts the last character";
  EXPECT_TRUE(validUTF8((std::string(999997, 'a') + "\xc3\xa9").c_str(), -1, false));
}

TEST(UTF8Size, CountsCharactersAndMalformedBytes) {
  const struct {
    std::string text;
    unsigned int expected;
  } cases[] = {
      {"", 0},
      {"abc", 3},
      {"a\0b"s, 3},
      {"caf\xc3\xa9", 4},
      {"\xe2\x82\xac", 1},
      {"\xe2\x82\xac\xc3\xa9x", 3},
      {"\xf0\x9f\x98\x80", 1},
      {"\xf4\x8f\xbf\xbf", 1},
      {"\x80", 1},
      {"\xff\xfe", 2},
      {"\xc0\x80", 2},
      {"\xc3", 1},
      {"a\xc3", 2},
      {"\xe2\x82", 2},
      {"\xe2\x82x", 3},
      {"\xed\xa0\x80", 3},
      {"\xf0\x9f\x98", 3},
      {"\xf4\x90\x80\x80", 4},
      {"\xe9t\xc3\xa9", 3},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.text));
    EXPECT_EQ(UTF8size(c.text), c.expected);
  }
}

}  // namespace utf8_test
