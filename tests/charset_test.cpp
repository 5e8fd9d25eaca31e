// SPDX-License-Identifier: MIT
// Character sets, and code page 437 in particular.
#include <gtest/gtest.h>

#include <cstddef>
#include <ios>
#include <string>

#include "conversion.h"

namespace charset_test {

using std::string_literals::operator""s;

namespace {

// The published code page 437 for each of U+0080 to U+00FF, 255 where it has no such
// character.  It has the no-break space at 255, which gives the same.
const unsigned int fromLatin1[128] = {
    255, 255, 255, 255, 255, 255, 255, 255,  // U+0080
    255, 255, 255, 255, 255, 255, 255, 255,  // U+0088
    255, 255, 255, 255, 255, 255, 255, 255,  // U+0090
    255, 255, 255, 255, 255, 255, 255, 255,  // U+0098
    255, 173, 155, 156, 255, 157, 255, 255,  // U+00A0
    255, 255, 166, 174, 170, 255, 255, 255,  // U+00A8
    248, 241, 253, 255, 255, 230, 255, 250,  // U+00B0
    255, 255, 167, 175, 172, 171, 255, 168,  // U+00B8
    255, 255, 255, 255, 142, 143, 146, 128,  // U+00C0
    255, 144, 255, 255, 255, 255, 255, 255,  // U+00C8
    255, 165, 255, 255, 255, 255, 153, 255,  // U+00D0
    255, 255, 255, 255, 154, 255, 255, 225,  // U+00D8
    133, 160, 131, 255, 132, 134, 145, 135,  // U+00E0
    138, 130, 136, 137, 141, 161, 140, 139,  // U+00E8
    255, 164, 149, 162, 147, 255, 148, 246,  // U+00F0
    255, 151, 163, 150, 129, 255, 255, 152,  // U+00F8
};

// The way back from each of the bytes 128 to 255.  A byte that stands for nothing in
// Latin-1 keeps its value; 255 finds the first entry without a mapping, U+0080.
const int toLatin1[128] = {
    0xc7, 0xfc, 0xe9, 0xe2, 0xe4, 0xe0, 0xe5, 0xe7,  // 0x80
    0xea, 0xeb, 0xe8, 0xef, 0xee, 0xec, 0xc4, 0xc5,  // 0x88
    0xc9, 0xe6, 0xc6, 0xf4, 0xf6, 0xf2, 0xfb, 0xf9,  // 0x90
    0xff, 0xd6, 0xdc, 0xa2, 0xa3, 0xa5, 0x9e, 0x9f,  // 0x98
    0xe1, 0xed, 0xf3, 0xfa, 0xf1, 0xd1, 0xaa, 0xba,  // 0xa0
    0xbf, 0xa9, 0xac, 0xbd, 0xbc, 0xa1, 0xab, 0xbb,  // 0xa8
    0xb0, 0xb1, 0xb2, 0xb3, 0xb4, 0xb5, 0xb6, 0xb7,  // 0xb0
    0xb8, 0xb9, 0xba, 0xbb, 0xbc, 0xbd, 0xbe, 0xbf,  // 0xb8
    0xc0, 0xc1, 0xc2, 0xc3, 0xc4, 0xc5, 0xc6, 0xc7,  // 0xc0
    0xc8, 0xc9, 0xca, 0xcb, 0xcc, 0xcd, 0xce, 0xcf,  // 0xc8
    0xd0, 0xd1, 0xd2, 0xd3, 0xd4, 0xd5, 0xd6, 0xd7,  // 0xd0
    0xd8, 0xd9, 0xda, 0xdb, 0xdc, 0xdd, 0xde, 0xdf,  // 0xd8
    0xe0, 0xdf, 0xe2, 0xe3, 0xe4, 0xe5, 0xb5, 0xe7,  // 0xe0
    0xe8, 0xe9, 0xea, 0xeb, 0xec, 0xed, 0xee, 0xef,  // 0xe8
    0xf0, 0xb1, 0xf2, 0xf3, 0xf4, 0xf5, 0xf7, 0xf7,  // 0xf0
    0xb0, 0xf9, 0xb7, 0xfb, 0xfc, 0xb2, 0xfe, 0x80,  // 0xf8
};

const struct {
  characterSet set;
  const char* name;
} allSets[] = {
    {CS_ASCII, "CS_ASCII"}, {CS_PRINT_ASCII, "CS_PRINT_ASCII"},
    {CS_CP437, "CS_CP437"}, {CS_CP437UTF, "CS_CP437UTF"},
    {CS_UTF8, "CS_UTF8"},   {CS_INVALID, "CS_INVALID"},
};

// The UTF-8 form of U+0080 to U+00FF.
std::string twoBytes(int codePoint) {
  return {static_cast<char>(codePoint < 0xc0 ? 0xc2 : 0xc3),
          static_cast<char>(codePoint < 0xc0 ? codePoint : codePoint - 0x40)};
}

}  // namespace

TEST(CharacterSet, HasStableValues) {
  const int values[] = {CS_ASCII, CS_PRINT_ASCII, CS_CP437, CS_CP437UTF, CS_UTF8, CS_INVALID};
  for (int i = 0; i < 6; i++) EXPECT_EQ(values[i], i) << allSets[i].name;
}

TEST(CharactersCP437, IsThePublishedCorrespondence) {
  ASSERT_EQ(charactersCP437.size(), 128u);
  for (std::size_t i = 0; i < 128; i++)
    EXPECT_EQ(charactersCP437[i], fromLatin1[i]) << "U+00" << std::hex << (128 + i);
}

TEST(CharactersCP437, HasSomeTellingRows) {
  const struct {
    std::size_t codePoint;
    unsigned int expected;
  } cases[] = {
      {0x80, 255}, {0xa0, 255}, {0xa1, 173}, {0xa3, 156}, {0xa7, 255},
      {0xb6, 255}, {0xc4, 142}, {0xe9, 130}, {0xfc, 129}, {0xff, 152},
  };
  for (const auto& c : cases)
    EXPECT_EQ(charactersCP437[c.codePoint - 0x80], c.expected) << "U+00" << std::hex << c.codePoint;
}

TEST(CSvalid, JudgesEachCharacter) {
  const struct {
    const char* what;
    std::string text;
    bool expected[6];  // in the order of the enumeration
  } cases[] = {
      {"nothing", "", {true, true, true, true, true, true}},
      {"a letter", "A", {true, true, true, true, true, false}},
      {"NUL", "\0"s, {true, false, true, true, true, false}},
      {"31", "\x1f", {true, false, true, true, true, false}},
      {"32", " ", {true, true, true, true, true, false}},
      {"126", "~", {true, true, true, true, true, false}},
      {"127", "\x7f", {true, false, true, true, true, false}},
      {"a line feed after a letter", "a\n", {true, false, true, true, true, false}},
      {"U+0080", "\xc2\x80", {false, false, false, false, true, false}},
      {"U+00A0", "\xc2\xa0", {false, false, false, false, true, false}},
      {"U+00A1", "\xc2\xa1", {false, false, true, true, true, false}},
      {"U+00A7", "\xc2\xa7", {false, false, false, false, true, false}},
      {"U+00B6", "\xc2\xb6", {false, false, false, false, true, false}},
      {"U+00E9", "\xc3\xa9", {false, false, true, true, true, false}},
      {"U+00FF", "\xc3\xbf", {false, false, true, true, true, false}},
      {"U+0100", "\xc4\x80", {false, false, false, false, true, false}},
      {"U+20AC", "\xe2\x82\xac", {false, false, false, false, true, false}},
      {"U+1F600", "\xf0\x9f\x98\x80", {false, false, false, false, true, false}},
      {"a good and a bad character",
       "\xc3\xa9\xe2\x82\xac",
       {false, false, false, false, true, false}},
      // A malformed byte counts as the character of its value.
      {"byte 128", "\x80", {false, false, false, false, true, false}},
      {"byte 233", "\xe9", {false, false, true, true, true, false}},
      {"byte 255", "a\xff", {false, false, true, true, true, false}},
      {"an unfinished U+00E9", "\xc3", {false, false, false, false, true, false}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    for (int i = 0; i < 6; i++) {
      SCOPED_TRACE(allSets[i].name);
      EXPECT_EQ(CSvalid(c.text, allSets[i].set), c.expected[i]);
    }
  }
}

TEST(CSvalid, AcceptsInCodePage437WhatTheTableMaps) {
  for (int i = 0; i < 128; i++) {
    SCOPED_TRACE(testing::Message() << "U+00" << std::hex << (128 + i));
    EXPECT_EQ(CSvalid(twoBytes(128 + i), CS_CP437), fromLatin1[i] != 255);
    EXPECT_EQ(CSvalid(twoBytes(128 + i), CS_CP437UTF), fromLatin1[i] != 255);
  }
}

TEST(ConvertCStoUTF8, CopiesASCIIFromEverySet) {
  std::string ascii;
  for (int byte = 0; byte < 128; byte++) ascii += static_cast<char>(byte);
  for (const auto& s : allSets) EXPECT_EQ(convertCStoUTF8(ascii, s.set), ascii) << s.name;
}

TEST(ConvertCStoUTF8, GivesAnEmptyTextForAnEmptyText) {
  for (const auto& s : allSets) EXPECT_EQ(convertCStoUTF8("", s.set), "") << s.name;
}

TEST(ConvertCStoUTF8, TakesBytesForLatin1InSetsOfSingleBytes) {
  for (const characterSet set : {CS_ASCII, CS_PRINT_ASCII, CS_INVALID})
    for (int byte = 128; byte < 256; byte++)
      EXPECT_EQ(convertCStoUTF8(std::string(1, static_cast<char>(byte)), set), twoBytes(byte))
          << "byte " << byte << " in " << allSets[set].name;
}

TEST(ConvertCStoUTF8, MapsCodePage437Back) {
  for (int i = 0; i < 128; i++) {
    SCOPED_TRACE(128 + i);
    const std::string expected = twoBytes(toLatin1[i]);
    EXPECT_EQ(convertCStoUTF8(std::string(1, static_cast<char>(128 + i)), CS_CP437), expected);
    EXPECT_EQ(convertCStoUTF8(twoBytes(128 + i), CS_CP437UTF), expected) << "encoded";
  }
}

TEST(ConvertCStoUTF8, ConvertsWholeTexts) {
  const struct {
    const char* what;
    characterSet set;
    std::string text, expected;
  } cases[] = {
      {"code page 437", CS_CP437, "caf\x82!", "caf\xc3\xa9!"},
      {"code page 437 with NUL", CS_CP437, "a\0\x81"s, "a\0\xc3\xbc"s},
      {"UTF-8 bytes as code page 437", CS_CP437, "\xc3\xa9", "\xc3\x83\xc2\xa9"},
      {"Latin-1 bytes", CS_ASCII, "caf\xe9!", "caf\xc3\xa9!"},
      {"UTF-8 bytes in a set of single bytes", CS_INVALID, "\xc3\xa9", "\xc3\x83\xc2\xa9"},
      {"encoded code page 437", CS_CP437UTF,
       "a\xc2\x82"
       "b",
       "a\xc3\xa9"
       "b"},
      {"beyond code page 437", CS_CP437UTF, "\xe2\x82\xac\xc4\x80", "\xe2\x82\xac\xc4\x80"},
      {"a malformed byte of code page 437", CS_CP437UTF, "\x82", "\xc3\xa9"},
      {"the last code point in code page 437", CS_CP437UTF,
       "a\xf4\x8f\xbf\xbf"
       "b",
       "ab"},
      {"well-formed UTF-8", CS_UTF8, "\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80",
       "\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80"},
      {"malformed bytes", CS_UTF8,
       "\xff\x80"
       "a\xe9",
       "\xc3\xbf\xc2\x80"
       "a\xc3\xa9"},
      {"a surrogate, byte by byte", CS_UTF8, "\xed\xa0\x80", "\xc3\xad\xc2\xa0\xc2\x80"},
      {"the last code point but one", CS_UTF8, "\xf4\x8f\xbf\xbe", "\xf4\x8f\xbf\xbe"},
      {"the last code point", CS_UTF8,
       "a\xf4\x8f\xbf\xbf"
       "b",
       "ab"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(convertCStoUTF8(c.text, c.set), c.expected);
  }
}

TEST(ConvertUTF8toCS, CopiesASCII) {
  for (const auto& s : allSets)
    for (int byte = 0; byte < 128; byte++) {
      const std::string one(1, static_cast<char>(byte));
      const bool hidden = s.set == CS_PRINT_ASCII && (byte < 32 || byte == 127);
      EXPECT_EQ(convertUTF8toCS(one, s.set), hidden ? "." : one)
          << "byte " << byte << " to " << s.name;
    }
}

TEST(ConvertUTF8toCS, GivesTheBytesOfCodePage437) {
  for (int i = 0; i < 128; i++) {
    SCOPED_TRACE(testing::Message() << "U+00" << std::hex << (128 + i));
    const std::string utf8 = twoBytes(128 + i);
    const int expected = static_cast<int>(fromLatin1[i]);
    EXPECT_EQ(convertUTF8toCS(utf8, CS_CP437), std::string(1, static_cast<char>(expected)));
    EXPECT_EQ(convertUTF8toCS(utf8, CS_CP437UTF), twoBytes(expected));
  }
}

TEST(ConvertUTF8toCS, ConvertsWholeTexts) {
  const struct {
    const char* what;
    std::string text;
    std::string expected[6];  // in the order of the enumeration
  } cases[] = {
      {"nothing", "", {"", "", "", "", "", ""}},
      {"ASCII with control codes",
       "a\0\t~\x7f"s,
       {"a\0\t~\x7f"s, "a..~.", "a\0\t~\x7f"s, "a\0\t~\x7f"s, "a\0\t~\x7f"s, "a\0\t~\x7f"s}},
      {"in Latin-1 and code page 437",
       "caf\xc3\xa9!",
       {"caf.!", "caf.!", "caf\x82!", "caf\xc2\x82!", "caf!", "caf.!"}},
      {"in Latin-1 only", "\xc2\xa7", {".", ".", "\xff", "\xc3\xbf", "", "."}},
      {"the no-break space", "\xc2\xa0", {".", ".", "\xff", "\xc3\xbf", "", "."}},
      {"U+00FF", "\xc3\xbf", {".", ".", "\x98", "\xc2\x98", "", "."}},
      {"U+0100", "\xc4\x80", {".", ".", "\x98", "\xc2\x98", "", "."}},
      {"two characters of three bytes",
       "\xe2\x82\xac\xe2\x82\xac",
       {"..", "..", "\x98\x98", "\xc2\x98\xc2\x98", "", ".."}},
      {"four bytes", "\xf0\x9f\x98\x80", {".", ".", "\x98", "\xc2\x98", "", "."}},
      {"the last code point", "\xf4\x8f\xbf\xbf", {".", ".", "\x98", "\xc2\x98", "", "."}},
      {"a malformed byte", "a\xe9", {"a.", "a.", "a\x82", "a\xc2\x82", "a", "a."}},
      {"an unfinished character",
       "\xe2\x82",
       {"..", "..", "\x83\xff", "\xc2\x83\xc3\xbf", "", ".."}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    for (int i = 0; i < 6; i++) {
      SCOPED_TRACE(allSets[i].name);
      EXPECT_EQ(convertUTF8toCS(c.text, allSets[i].set), c.expected[i]);
    }
  }
}

}  // namespace charset_test
