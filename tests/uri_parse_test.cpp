// SPDX-License-Identifier: MIT
// Where and why the parser of a URI's text stops.

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "texts.h"
#include "uri.h"

namespace uri_parse_test {

namespace {

struct stopCase {
  std::string text;
  uriStop stop;
  std::size_t offset;
};

// `set` and the constructor must agree with what `parse` says.
void check(const stopCase& expected) {
  SCOPED_TRACE(testing::Message() << "text " << testing::PrintToString(expected.text));
  const uriParse found = URI().parse(expected.text);
  EXPECT_STREQ(text(found.stop), text(expected.stop));
  if (expected.stop != US_COMPLETE) {
    EXPECT_EQ(found.offset, expected.offset);
  }
  const bool complete = expected.stop == US_COMPLETE;
  EXPECT_EQ(URI().set(expected.text), complete);
  EXPECT_EQ(URI(expected.text).okay(), complete);
}

template <std::size_t size>
void check(const stopCase (&cases)[size]) {
  for (const stopCase& expected : cases) {
    check(expected);
  }
}

void checkComplete(const std::string& text) {
  check({text, US_COMPLETE, 0});
}

TEST(URIparseStop, OfTheHeadersExampleIsTheDelimiterAt7) {
  check({"vnc://h", US_DELIMITER, 7});
}

TEST(URIparseStop, IsTheSchemeWhereTheTextBeginsWithNoLetter) {
  const stopCase cases[] = {
      {"", US_SCHEME, 0},           {"1vnc://h/", US_SCHEME, 0}, {"://h/", US_SCHEME, 0},
      {" vnc://h/", US_SCHEME, 0},  {"-vnc://h/", US_SCHEME, 0}, {"+vnc://h/", US_SCHEME, 0},
      {"\\vnc://h/", US_SCHEME, 0}, {"\xc3\xa9", US_SCHEME, 0},  {"@vnc://h/", US_SCHEME, 0},
      {"[vnc://h/", US_SCHEME, 0},  {"`vnc://h/", US_SCHEME, 0}, {"{vnc://h/", US_SCHEME, 0},
  };
  check(cases);
}

TEST(URIparseStop, IsTheSeparatorAtTheFirstByteThatFitsNeitherSchemeNorSeparator) {
  const stopCase cases[] = {
      {"v", US_SEPARATOR, 1},
      {"vnc", US_SEPARATOR, 3},
      {"vnc:", US_SEPARATOR, 4},
      {"vnc:/", US_SEPARATOR, 5},
      {"vnc:/h/", US_SEPARATOR, 5},
      {"vnc:h/", US_SEPARATOR, 4},
      {"vnc//h/", US_SEPARATOR, 3},
      {"vnc;//h/", US_SEPARATOR, 3},
      {"v nc://h/", US_SEPARATOR, 1},
      {"vnc_x://h/", US_SEPARATOR, 3},
      {"vnc%://h/", US_SEPARATOR, 3},
      {"vn\xc3\xa9://h/", US_SEPARATOR, 2},
      {"http:vnc://h/", US_SEPARATOR, 5},
      {"VNC:/H/", US_SEPARATOR, 5},
      {"a1+.\\-Z:", US_SEPARATOR, 8},
      {"v@://h/", US_SEPARATOR, 1},
  };
  check(cases);
}

TEST(URIparseStop, IsTheDelimiterAtTheEndOfATextWithoutOne) {
  const stopCase cases[] = {
      {"vnc://", US_DELIMITER, 6},      {"VNC://H", US_DELIMITER, 7},
      {"vnc://a+b", US_DELIMITER, 9},   {"vnc://a,b", US_DELIMITER, 9},
      {"vnc://a,", US_DELIMITER, 8},    {"vnc://a+", US_DELIMITER, 8},
      {"vnc://-bad", US_DELIMITER, 10}, {"vnc://h?x=1", US_DELIMITER, 11},
      {"vnc://h:1", US_DELIMITER, 9},   {"vnc://[::1]", US_DELIMITER, 11},
  };
  check(cases);
}

TEST(URIparseStop, IsAnAddressAtItsFirstByte) {
  const stopCase cases[] = {
      {"vnc:///", US_ADDRESS, 6},
      {"vnc://+/", US_ADDRESS, 6},
      {"vnc://,a/", US_ADDRESS, 6},
      {"vnc://-bad/", US_ADDRESS, 6},
      {"vnc://_h/", US_ADDRESS, 6},
      {"vnc://:1/", US_ADDRESS, 6},
      {"vnc://\xc3\xa9/", US_ADDRESS, 6},
      {"vnc://[]/", US_ADDRESS, 6},
      {"vnc://[zz]/", US_ADDRESS, 6},
      {"vnc://[::1]x/", US_ADDRESS, 6},
      {"vnc://[::1]:/", US_ADDRESS, 6},
      {"vnc://[::1]:x/", US_ADDRESS, 6},
      {"vnc://a,,b/", US_ADDRESS, 8},
      {"vnc://a+-b/", US_ADDRESS, 8},
      {"vnc://a,b+/", US_ADDRESS, 10},
      {"VNC://A,B,_/", US_ADDRESS, 10},
      {"vnc://host:5900,.b/", US_ADDRESS, 16},
  };
  check(cases);
}

TEST(URIparseStop, IsTheTicketWhereItsFormIsLeft) {
  const stopCase cases[] = {
      {"vnc://h/a", US_TICKET, 9},
      {"vnc://h/ab", US_TICKET, 10},
      {"vnc://h/abc", US_TICKET, 11},
      {"vnc://h/abc?x=1", US_TICKET, 11},
      {"vnc://h/abc!", US_TICKET, 11},
      {"vnc://h/QQ=", US_TICKET, 11},
      {"vnc://h/QQ=x", US_TICKET, 11},
      {"vnc://h/QQ=QQQ==", US_TICKET, 11},
      {"vnc://h/QQ===", US_TICKET, 12},
      {"vnc://h/QUI==", US_TICKET, 12},
      {"vnc://h/Q===", US_TICKET, 9},
      {"vnc://h/QUJD=", US_TICKET, 12},
      {"vnc://h/QUJD====", US_TICKET, 12},
      {"vnc://h/=", US_TICKET, 8},
      {"vnc://h/====", US_TICKET, 8},
      {"vnc://a/b/", US_TICKET, 10},
      {"vnc://h/12", US_TICKET, 10},
      {"vnc://h/+", US_TICKET, 9},
      // After a key id.
      {"vnc://h/12,abc", US_TICKET, 14},
      {"vnc://h/,a", US_TICKET, 10},
      {"vnc://h/1,2,QUJD", US_TICKET, 11},
      {"vnc://h/7,QUJD=", US_TICKET, 14},
  };
  check(cases);
}

// For each number of characters modulo four, a row of the numbers of "=".  An entry is
// how far after the characters the text does not fit, or -1 if it fits.
TEST(URIparseStop, OfATicketDependsOnItsLengthAndItsPadding) {
  const int misfit[4][6] = {
      {-1, 0, 0, 0, 0, 0},
      {0, 0, 0, 0, 0, 0},
      {0, 1, -1, 2, 2, 2},
      {0, -1, 1, 1, 1, 1},
  };
  for (std::size_t characters = 0; characters < 13; characters++) {
    for (std::size_t padding = 0; padding < 6; padding++) {
      const int expected = misfit[characters % 4][padding];
      const std::string text =
          "vnc://h/" + std::string(characters, 'Q') + std::string(padding, '=');
      check({text, expected < 0 ? US_COMPLETE : US_TICKET,
             8 + characters + static_cast<std::size_t>(expected < 0 ? 0 : expected)});
    }
  }
}

TEST(URIparseStop, IsAParameterAtTheEndOfATextWithoutItsEquals) {
  const stopCase cases[] = {
      {"vnc://h/?", US_PARAMETER, 9},         {"vnc://h/?a", US_PARAMETER, 10},
      {"vnc://h/?a&b", US_PARAMETER, 12},     {"vnc://h/?a=1&", US_PARAMETER, 13},
      {"vnc://h/?a=1&b", US_PARAMETER, 14},   {"vnc://h/?a=1&&", US_PARAMETER, 14},
      {"vnc://h/?=&", US_PARAMETER, 11},      {"vnc://h/7,?", US_PARAMETER, 11},
      {"vnc://h/7,?a=1&b", US_PARAMETER, 16},
  };
  check(cases);
}

TEST(URIparseStop, IsFoundBehindManyParametersAndAddresses) {
  check({"vnc://h/?" + repeated(1000, "a=1&") + "b", US_PARAMETER, 9 + 4000 + 1});
  check({"vnc://h/?" + repeated(1000, "a=1&"), US_PARAMETER, 9 + 4000});
  check({"vnc://" + repeated(1000, "a+b,") + "-/", US_ADDRESS, 6 + 4000});
  check({"vnc://" + repeated(1000, "a+b,") + "c", US_DELIMITER, 6 + 4000 + 1});
  checkComplete("vnc://" + repeated(1000, "a+b,") + "c/?" + repeated(1000, "a=1&") + "b=");
}

TEST(URIparseStop, IsCompleteForWhatTheGrammarAllows) {
  for (const char* const text :
       {"vnc://h/",       "VNC://H/",      "vnc://h:5900/",  "vnc://[::1]/",     "vnc://[::1]:1/",
        "vnc://-x[::1]/", "vnc://a+b,c/",  "x-y+z.1://h/",   "a\\b://h/",        "vnc://h/QUJD",
        "vnc://h/+/+/",   "vnc://h/7,",    "vnc://h/,",      "vnc://h/7,QUJD",   "vnc://h/7,?a=1",
        "vnc://h/?=",     "vnc://h/?a=",   "vnc://h/?a=1",   "vnc://h/?a=1&b=2", "vnc://h/?a&b=1",
        "vnc://h/?a==",   "vnc://h/!rest", "vnc://h/QUJD?a", "vnc://h/QUJD!=",   "vnc://h/ ?a"}) {
    checkComplete(text);
  }
}

TEST(URIparseStop, TakesTheFirstNulByteForTheTextsEnd) {
  using namespace std::string_literals;
  const stopCase cases[] = {
      {"\0vnc://h/"s, US_SCHEME, 0},         {"vnc\0://h/"s, US_SEPARATOR, 3},
      {"vnc:\0//h/"s, US_SEPARATOR, 4},      {"vnc:/\0/h/"s, US_SEPARATOR, 5},
      {"vnc://\0h/"s, US_DELIMITER, 6},      {"vnc://h\0/"s, US_DELIMITER, 7},
      {"vnc://h/abc\0="s, US_TICKET, 11},    {"vnc://h/QQ=\0="s, US_TICKET, 11},
      {"vnc://h/?a\0=1"s, US_PARAMETER, 10}, {"vnc://h/?a=1&\0b=1"s, US_PARAMETER, 13},
      {"vnc://h/\0abc"s, US_COMPLETE, 0},    {"vnc://h/?a=1\0&b"s, US_COMPLETE, 0},
  };
  check(cases);
}

TEST(URIparse, ReportsWithoutChangingOkay) {
  URI uri("vnc://h");
  EXPECT_EQ(uri.parse("vnc://h/").stop, US_COMPLETE);
  EXPECT_FALSE(uri.okay());
  URI good("vnc://h/");
  EXPECT_EQ(good.parse("vnc").stop, US_SEPARATOR);
  EXPECT_TRUE(good.okay());
}

TEST(URIparse, KeepsWhatItReadUntilItStopped) {
  URI uri;
  EXPECT_EQ(uri.parse("Ssh://a+b/7,?x=1&y").stop, US_PARAMETER);
  EXPECT_EQ(uri.scheme(), "Ssh");
  EXPECT_EQ(uri.addresses, (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(uri.keyId, 7);
  EXPECT_EQ(uri.parameters["x"], "1");
  EXPECT_EQ(uri.parameters.size(), 1U);
}

TEST(URIstopText, SaysWhatTheGrammarWants) {
  EXPECT_STREQ(text(US_COMPLETE), "nothing more");
  EXPECT_STREQ(text(US_SCHEME), "a scheme, which begins with a letter");
  EXPECT_STREQ(text(US_SEPARATOR), "\"://\" after the scheme");
  EXPECT_STREQ(text(US_DELIMITER), "\"/\" after the addresses");
  EXPECT_STREQ(text(US_ADDRESS),
               "an address, which begins with a letter or digit or ends in brackets");
  EXPECT_STREQ(text(US_TICKET), "a ticket in base64, whose length is a multiple of four");
  EXPECT_STREQ(text(US_PARAMETER), "\"=\" after the name of a parameter");
  EXPECT_STREQ(text(static_cast<uriStop>(7)), "<invalid uriStop>");
  EXPECT_STREQ(text(static_cast<uriStop>(-1)), "<invalid uriStop>");
}

}  // namespace

}  // namespace uri_parse_test
