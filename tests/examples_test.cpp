// SPDX-License-Identifier: MIT
// The worked examples of the headers.

#include <gtest/gtest.h>

#include <string>

#include "DistName.h"
#include "conversion.h"
#include "html_escape.h"
#include "uri.h"

namespace examples_test {

TEST(HeaderExamples, OfEscapingHold) {
  EXPECT_EQ(URIescape("a b"), "a%20b");
  EXPECT_EQ(URIunEscape("%41%4G%4"), "A%4G");
  EXPECT_EQ(cookieEscape("a\tb"), "a%9b");
  EXPECT_EQ(LDAPescape("a,b\n"), "a\\,b\\0A");
  EXPECT_EQ(LDAPunEscape("a\\,b\\0A"), "a,b\n");
  EXPECT_EQ(QMXescape("a b.\n"), "a b%2E%0A");
  EXPECT_EQ(javaScriptEscape("it's\n"), "it\\'s\\u00A");
  EXPECT_EQ(HTMLescape("a  <", true), "a &nbsp;&lt;");
}

TEST(HeaderExamples, OfFormEncodedPairsHold) {
  const char* p = "a=1&b";
  std::string name;
  std::string value;
  EXPECT_TRUE(getEscapedPair(p, name, value));
  EXPECT_EQ(name + " " + value + " " + p, "a 1 b");
}

TEST(HeaderExamples, OfConversionHold) {
  EXPECT_EQ(CSVescape("a,b"), "\"a,b\"");
  const char* p = "\"a,b\",c";
  EXPECT_EQ(CSVunescape(p), "a,b");
  EXPECT_STREQ(p, "c");
  unsigned char buffer[4] = {};
  EXPECT_EQ(putUTF8(0xE9, buffer), 2);
  EXPECT_EQ(buffer[0], 0xC3);
  EXPECT_EQ(buffer[1], 0xA9);
  EXPECT_EQ(quote("a\n\x01"), "\"a\\n\\001\"");
  EXPECT_EQ(addSuffix("abcdef", 7, 5), "abc-7");
}

TEST(HeaderExamples, OfNamesHold) {
  EXPECT_EQ(DistName::escape("#a"), "\\#a");
  EXPECT_EQ(DistName("a.b", DistName::DOMAIN).str(), "DC=a,DC=b");
  EXPECT_EQ(DistName::shortName("CN = a\\,b ,DC=c"), "a,b");
  EXPECT_TRUE(DistName(nullptr, DistName::SIMPLE).empty());
}

TEST(URIargs, FreesItsStringsAlsoBehindANullCommand) {
  URI uri("vnc://h/?a=1");
  ASSERT_NE(uri.args(nullptr, 1, AS_EQUALS, nullptr), nullptr);
  EXPECT_STREQ(uri.args("viewer", 1, AS_EQUALS, nullptr)[0], "viewer");
  uri.args(nullptr, 1, AS_EQUALS, nullptr);
}

}  // namespace examples_test
