// SPDX-License-Identifier: MIT
// Quoting, CSV fields, name suffixes, letter case, splitting and copies.
#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <cstring>
#include <list>
#include <memory>
#include <ostream>
#include <set>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "conversion.h"
#include "system_calls.h"

namespace text_test {

using std::string_literals::operator""s;

namespace {

// True after a wrong argument for `tolower` or `toupper`: they are defined for EOF
// and unsigned bytes only.
bool caseAbused = false;

using Pieces = std::vector<std::string>;

// A null-terminated copy in storage that ends with it, so that a sanitizer sees a
// read beyond.
class CString {
 public:
  explicit CString(const std::string& text) : m_text(new char[text.size() + 1]) {
    std::memcpy(m_text.get(), text.c_str(), text.size() + 1);
  }
  char* get() const { return m_text.get(); }

 private:
  std::unique_ptr<char[]> m_text;
};

const replacedCalls here(__FILE__, [] {
  systemCalls::tolower_l.replace([](int c, locale_t locale) {
    if (c < -1 || c > 255) caseAbused = true;
    return systemCalls::tolower_l.real(c, locale);
  });
  systemCalls::toupper_l.replace([](int c, locale_t locale) {
    if (c < -1 || c > 255) caseAbused = true;
    return systemCalls::toupper_l.real(c, locale);
  });
});

}  // namespace

TEST(Quote, EscapesTexts) {
  const struct {
    std::string text;
    const char* expected;
  } cases[] = {
      {"", R"q("")q"},
      {"plain", R"q("plain")q"},
      {"a b", R"q("a b")q"},
      {"\n\x01", R"q("\n\001")q"},
      {"a\n\x01", R"q("a\n\001")q"},
      {"\n\r\t", R"q("\n\r\t")q"},
      {"\"", R"q("\"")q"},
      {"\\", R"q("\\")q"},
      {"\\n", R"q("\\n")q"},
      {"say \"hi\"", R"q("say \"hi\"")q"},
      {"it's", R"q("it's")q"},
      {"\x7f", R"q("\177")q"},
      {"a\0b"s, R"q("a\000b")q"},
      {"\xe9", R"q("\351")q"},
      {"caf\xc3\xa9", R"q("caf\303\251")q"},
      {"\x80\xff", R"q("\200\377")q"},
      {"\x01"
       "1",
       R"q("\0011")q"},
      {"%s?", R"q("%s?")q"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.expected);
    EXPECT_EQ(quote(c.text), c.expected);
  }
}

TEST(Quote, EscapesEachByte) {
  // Sixteen bytes a row, without the quotes around them.
  const char* const rows[16] = {
      R"q(\000\001\002\003\004\005\006\007\010\t\n\013\014\r\016\017)q",
      R"q(\020\021\022\023\024\025\026\027\030\031\032\033\034\035\036\037)q",
      R"q( !\"#$%&'()*+,-./)q",
      R"q(0123456789:;<=>?)q",
      R"q(@ABCDEFGHIJKLMNO)q",
      R"q(PQRSTUVWXYZ[\\]^_)q",
      R"q(`abcdefghijklmno)q",
      R"q(pqrstuvwxyz{|}~\177)q",
      R"q(\200\201\202\203\204\205\206\207\210\211\212\213\214\215\216\217)q",
      R"q(\220\221\222\223\224\225\226\227\230\231\232\233\234\235\236\237)q",
      R"q(\240\241\242\243\244\245\246\247\250\251\252\253\254\255\256\257)q",
      R"q(\260\261\262\263\264\265\266\267\270\271\272\273\274\275\276\277)q",
      R"q(\300\301\302\303\304\305\306\307\310\311\312\313\314\315\316\317)q",
      R"q(\320\321\322\323\324\325\326\327\330\331\332\333\334\335\336\337)q",
      R"q(\340\341\342\343\344\345\346\347\350\351\352\353\354\355\356\357)q",
      R"q(\360\361\362\363\364\365\366\367\370\371\372\373\374\375\376\377)q",
  };
  for (int row = 0; row < 16; row++) {
    SCOPED_TRACE(16 * row);
    std::string bytes;
    for (int i = 0; i < 16; i++) bytes += static_cast<char>(16 * row + i);
    EXPECT_EQ(quote(bytes), "\""s + rows[row] + "\"");
  }
}

TEST(CSVescape, QuotesFieldsThatNeedIt) {
  const struct {
    std::string text, expected;
  } cases[] = {
      {"", ""},
      {"plain", "plain"},
      {"two words", "two words"},
      {" blank ", " blank "},
      {"it's; a\ttab\\", "it's; a\ttab\\"},
      {"caf\xc3\xa9\xff", "caf\xc3\xa9\xff"},
      {"a\0b"s, "a\0b"s},
      {"a,b", "\"a,b\""},
      {",", "\",\""},
      {"a\nb", "\"a\nb\""},
      {"a\rb", "\"a\rb\""},
      {"a\r\n", "\"a\r\n\""},
      {"\"", "\"\"\"\""},
      {"\"\"", "\"\"\"\"\"\""},
      {"say \"hi\"", "\"say \"\"hi\"\"\""},
      {"\",\"", "\"\"\",\"\"\""},
      {"a\0,"s, "\"a\0,\""s},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.text));
    EXPECT_EQ(CSVescape(c.text), c.expected);
  }
}

TEST(CSVunescape, ReadsOneFieldAndMovesBehindIt) {
  const struct {
    std::string text;
    const char *field, *rest;
  } cases[] = {
      {"", "", ""},
      {"a", "a", ""},
      {"a,b", "a", "b"},
      {"a,b,c", "a", "b,c"},
      {",b", "", "b"},
      {",", "", ""},
      {",,", "", ","},
      {"a,", "a", ""},
      {" a ,b", " a ", "b"},
      {"a b\nc", "a b\nc", ""},
      {"a\"b,c\"", "a\"b", "c\""},
      {" \"a,b\"", " \"a", "b\""},
      {"a\"\"b,c", "a\"\"b", "c"},

      {"\"a\"", "a", ""},
      {"\"a\",b", "a", "b"},
      {"\"a,b\",c", "a,b", "c"},
      {"\"\"", "", ""},
      {"\"\",b", "", "b"},
      {"\"a\"\"b\",c", "a\"b", "c"},
      {"\"\"\"\"", "\"", ""},
      {"\"\"\"\",b", "\"", "b"},
      {"\"\"\"a\"\"\",b", "\"a\"", "b"},
      {"\"\"\"\"\"\"", "\"\"", ""},
      {"\"a\r\nb\",c", "a\r\nb", "c"},
      {"\"a\",", "a", ""},
      {"\"a\",,b", "a", ",b"},

      // One character after the closing quote is skipped, and only one.
      {"\"a\"x", "a", ""},
      {"\"a\"x,b", "a", "b"},
      {"\"a\" ,b", "a", "b"},
      {"\"a\"x,,b", "a", ",b"},
      {"\"a\"xy,b", "a", "y,b"},
      {"\"a\"xy", "a", "y"},
      {"\"a\"\n\"b\"", "a", "\"b\""},

      // Without a closing quote.
      {"\"", "", ""},
      {"\"a", "a", ""},
      {"\"a,b", "a,b", ""},
      {"\"\"\"", "\"", ""},
      {"\"a\"\"", "a\"", ""},
      {"\"a\"\"b,c", "a\"b,c", ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.text));
    const CString text(c.text);
    const char* at = text.get();
    EXPECT_EQ(CSVunescape(at), c.field);
    EXPECT_STREQ(at, c.rest);
    EXPECT_EQ(at + std::strlen(c.rest), text.get() + c.text.size()) << "the pointer left the text";
  }
}

TEST(CSVunescape, GivesAnEmptyFieldForANullPointer) {
  const char* at = nullptr;
  EXPECT_EQ(CSVunescape(at), "");
  EXPECT_EQ(at, nullptr);
}

TEST(CSVunescape, ReadsALineFieldByField) {
  const CString line("one,\"two, \"\"2\"\"\",,\"\",five");
  const char* at = line.get();
  for (const char* field : {"one", "two, \"2\"", "", "", "five", "", ""})
    EXPECT_EQ(CSVunescape(at), field);
}

TEST(CSVunescape, ReadsBackWhatCSVescapeWrote) {
  const char* const fields[] = {"",   "plain", "a,b",   "say \"hi\"", "\"",     ",",
                                "\n", "\r\n",  "\",\"", " blank ",    "caf\xe9"};
  for (const char* field : fields) {
    SCOPED_TRACE(testing::PrintToString(field));
    const CString line(CSVescape(field) + ",next");
    const char* at = line.get();
    EXPECT_EQ(CSVunescape(at), field);
    EXPECT_STREQ(at, "next");
  }
}

TEST(TrimSuffix, SplitsANumberOff) {
  const struct {
    std::string name, trimmed;
    int number;
  } cases[] = {
      {"host-12", "host", 12},
      {"host-0", "host", 0},
      {"host-7", "host", 7},
      {"host-007", "host", 7},
      {"host-2147483647", "host", 2147483647},
      {"host-1-2", "host-1", 2},
      {"host--5", "host-", 5},
      {"-12", "", 12},
      {"--1", "-", 1},
      {"a b-3", "a b", 3},
      {"caf\xc3\xa9-3", "caf\xc3\xa9", 3},
      {"a\0b-3"s, "a\0b"s, 3},
      // A number that is too large is removed, too.
      {"host-2147483648", "host", -1},
      {"host-99999999999999999999", "host", -1},
      // No suffix.
      {"host-", "host-", 0},
      {"host", "host", 0},
      {"host12", "host12", 0},
      {"host-12a", "host-12a", 0},
      {"host-a12", "host-a12", 0},
      {"host-1 ", "host-1 ", 0},
      {"host-1.5", "host-1.5", 0},
      {"host_5", "host_5", 0},
      {"host-\xb2", "host-\xb2", 0},
      {"12", "12", 0},
      {"-", "-", 0},
      {"", "", 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.name));
    int number = -77;
    EXPECT_EQ(trimSuffix(c.name, &number), c.trimmed);
    EXPECT_EQ(number, c.number);
    EXPECT_EQ(trimSuffix(c.name, nullptr), c.trimmed) << "without a place for the number";
  }
}

TEST(AddSuffix, CutsThePrefixToTheSize) {
  const struct {
    const char* prefix;
    unsigned int number, maxSize;
    const char* expected;
  } cases[] = {
      {"abcdef", 7, 5, "abc-7"},
      {"abcdef", 7, 7, "abcde-7"},
      {"abcdef", 7, 8, "abcdef-7"},
      {"abcdef", 7, 9, "abcdef-7"},
      {"abcdef", 7, UINT_MAX, "abcdef-7"},
      {"abc", 0, 16, "abc-0"},
      {"abc", 123, 5, "a-123"},
      {"abc", 123, 4, "-123"},
      {"", 5, 16, "-5"},
      {"", 5, 2, "-5"},
      {"a", 2147483647, 16, "a-2147483647"},
      {"a", 2147483648, 16, "a-2147483648"},
      {"abc", 4294967295, 13, "ab-4294967295"},
      {"abc-1", 2, 16, "abc-1-2"},
      // The suffix itself is never cut.
      {"abc", 123, 3, "-123"},
      {"abc", 123, 1, "-123"},
      {"abc", 123, 0, "-123"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.prefix << ", " << c.number << " in " << c.maxSize);
    EXPECT_EQ(addSuffix(c.prefix, c.number, c.maxSize), c.expected);
  }
}

TEST(SetCase, ChangesASCIILetters) {
  const struct {
    std::string text;
    int length;
    std::string upper, lower;
  } cases[] = {
      {"Host Name-1", -1, "HOST NAME-1", "host name-1"},
      {"Host Name-1", INT_MIN, "HOST NAME-1", "host name-1"},
      {"Host Name-1", 11, "HOST NAME-1", "host name-1"},
      {"hOst", 2, "HOst", "host"},
      {"hOST", 3, "HOST", "hosT"},
      {"aB", 0, "aB", "aB"},
      {"", -1, "", ""},
      {"", 0, "", ""},
      {"@AZ[`az{", -1, "@AZ[`AZ{", "@az[`az{"},
      {"abcdefghijklmnopqrstuvwxyz", -1, "ABCDEFGHIJKLMNOPQRSTUVWXYZ",
       "abcdefghijklmnopqrstuvwxyz"},
      {"ABCDEFGHIJKLMNOPQRSTUVWXYZ", -1, "ABCDEFGHIJKLMNOPQRSTUVWXYZ",
       "abcdefghijklmnopqrstuvwxyz"},
      {"caf\xc3\xa9\xc3\x89", -1, "CAF\xc3\xa9\xc3\x89", "caf\xc3\xa9\xc3\x89"},
      {"\xe9\xc9\xff\x80\xb5", -1, "\xe9\xc9\xff\x80\xb5", "\xe9\xc9\xff\x80\xb5"},
      {"aB\0cD"s, 5, "AB\0CD"s, "ab\0cd"s},
      {"aB\0cD"s, -1, "AB\0cD"s, "ab\0cD"s},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.text) + ", length " + std::to_string(c.length));
    const CString upper(c.text), lower(c.text);
    setCase(upper.get(), c.length, true);
    EXPECT_EQ(std::string(upper.get(), c.text.size() + 1), c.upper + '\0');
    setCase(lower.get(), c.length, false);
    EXPECT_EQ(std::string(lower.get(), c.text.size() + 1), c.lower + '\0');
  }
}

TEST(SetCase, ChangesNothingBehindTheLength) {
  const std::unique_ptr<char[]> text(new char[3]{'a', 'b', 'c'});
  setCase(text.get(), 3, true);
  EXPECT_EQ(std::string(text.get(), 3), "ABC");
  setCase(text.get(), 1, false);
  EXPECT_EQ(std::string(text.get(), 3), "aBC");
}

TEST(SetCase, GivesTheCLibraryNothingButUnsignedBytes) {
  std::string all;
  for (int byte = 1; byte < 256; byte++) all += static_cast<char>(byte);
  const CString text(all);
  caseAbused = false;
  setCase(text.get(), -1, true);
  setCase(text.get(), -1, false);
  EXPECT_FALSE(caseAbused) << "toupper or tolower was called with a value that is no byte";
  for (int byte = 128; byte < 256; byte++)
    EXPECT_EQ(text.get()[byte - 1], all[static_cast<std::size_t>(byte - 1)]) << "byte " << byte;
}

TEST(StringToVector, KeepsEveryPiece) {
  static_assert(std::is_same_v<decltype(stringToVector("", ',')), std::vector<std::string>>);
  static_assert(std::is_same_v<decltype(stringToList("", ',')), std::list<std::string>>);
  const struct {
    std::string text;
    char separator;
    Pieces expected;
  } cases[] = {
      {"a,,b", ',', {"a", "", "b"}},
      {"", ',', {""}},
      {",", ',', {"", ""}},
      {",,", ',', {"", "", ""}},
      {"a", ',', {"a"}},
      {"a,", ',', {"a", ""}},
      {",a", ',', {"", "a"}},
      {"a,b;c", ',', {"a", "b;c"}},
      {"a,b;c", ';', {"a,b", "c"}},
      {" a , b ", ',', {" a ", " b "}},
      {"a,a,A", ',', {"a", "a", "A"}},
      {"a\nb", '\n', {"a", "b"}},
      {"a\0b\0"s, '\0', {"a", "b", ""}},
      {"a\0b,c"s, ',', {"a\0b"s, "c"}},
      {"a\xff"
       "b",
       '\xff',
       {"a", "b"}},
      {"\"a,b\",c", ',', {"\"a", "b\"", "c"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.text));
    EXPECT_EQ(stringToVector(c.text, c.separator), c.expected);
    EXPECT_EQ(stringToList(c.text, c.separator),
              std::list<std::string>(c.expected.begin(), c.expected.end()));
  }
}

TEST(StringToSet, KeepsEachDistinctPieceInByteOrder) {
  static_assert(std::is_same_v<decltype(stringToSet("", ',')), std::set<std::string>>);
  const struct {
    std::string text;
    Pieces expected;
  } cases[] = {
      {"", {""}},
      {"a", {"a"}},
      {",", {""}},
      {"b,a,b", {"a", "b"}},
      {"b,B,a,A,b", {"A", "B", "a", "b"}},
      {"a,,a,", {"", "a"}},
      {"\xc3\xa9,z,Z,10,9", {"10", "9", "Z", "z", "\xc3\xa9"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.text));
    const std::set<std::string> pieces = stringToSet(c.text, ',');
    EXPECT_EQ(Pieces(pieces.begin(), pieces.end()), c.expected);
  }
}

TEST(VectorOfStrings, CopiesAnArrayUpToItsNullPointer) {
  const char* const none[] = {nullptr, "never"};
  const char* const some[] = {"a", "", "c d", nullptr, "never"};
  EXPECT_EQ(vectorOfStrings(none), Pieces{});
  EXPECT_EQ(vectorOfStrings(some), (Pieces{"a", "", "c d"}));
  EXPECT_EQ(vectorOfStrings(nullptr), Pieces{});
}

TEST(CopyString, CopiesACString) {
  const CString text("caf\xc3\xa9 \x01");
  const std::unique_ptr<char[]> copy(copyString(static_cast<const char*>(text.get())));
  ASSERT_NE(copy, nullptr);
  EXPECT_NE(copy.get(), text.get());
  EXPECT_STREQ(copy.get(), "caf\xc3\xa9 \x01");
  text.get()[0] = 'C';
  EXPECT_STREQ(copy.get(), "caf\xc3\xa9 \x01") << "the copy is no copy";

  const std::unique_ptr<char[]> empty(copyString(""));
  ASSERT_NE(empty, nullptr);
  EXPECT_STREQ(empty.get(), "");
}

TEST(CopyString, GivesNullForNull) {
  EXPECT_EQ(copyString(static_cast<const char*>(nullptr)), nullptr);
}

TEST(CopyString, CopiesAString) {
  std::string text = "abc";
  const std::unique_ptr<char[]> copy(copyString(text));
  ASSERT_NE(copy, nullptr);
  text[0] = 'X';
  EXPECT_STREQ(copy.get(), "abc");

  const std::unique_ptr<char[]> empty(copyString(""s));
  ASSERT_NE(empty, nullptr);
  EXPECT_STREQ(empty.get(), "");

  const std::unique_ptr<char[]> cut(copyString("a\0b"s));
  ASSERT_NE(cut, nullptr);
  EXPECT_STREQ(cut.get(), "a");

  const std::string large(1000000, 'x');
  const std::unique_ptr<char[]> largeCopy(copyString(large));
  ASSERT_NE(largeCopy, nullptr);
  EXPECT_TRUE(large == largeCopy.get());
}

TEST(StringsOutput, WritesQuotedElementsInBraces) {
  const struct {
    Pieces strings;
    const char* expected;
  } cases[] = {
      {{}, "{ }"},
      {{""}, R"q({ "" })q"},
      {{"a"}, R"q({ "a" })q"},
      {{"a", "b c", ""}, R"q({ "a" "b c" "" })q"},
      {{"say \"hi\"\n", "\xe9"}, R"q({ "say \"hi\"\n" "\351" })q"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.expected);
    std::ostringstream out;
    EXPECT_EQ(&(out << c.strings), &out);
    EXPECT_EQ(out.str(), c.expected);
  }
}

}  // namespace text_test
