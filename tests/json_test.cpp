// SPDX-License-Identifier: MIT
// JSON as hopopen writes it: one line of ASCII, whatever the texts are.

#include "../hopopen/json.h"

#include <gtest/gtest.h>

#include <string>

namespace json_test {

namespace {

using namespace std::string_literals;
using hopopen::jsonLine;
using hopopen::jsonText;
using hopopen::jsonTexts;

TEST(JsonText, IsASCIIOnALine) {
  EXPECT_EQ("\"\"\n", jsonLine(jsonText("")));
  EXPECT_EQ("\"a \\\"b\\\" \\\\ \\n\"\n", jsonLine(jsonText("a \"b\" \\ \n")));
  EXPECT_EQ("\"\\u00e4\\u20ac\\ud83d\\ude00\"\n", jsonLine(jsonText("\u00e4\u20ac\U0001f600")));
  EXPECT_EQ("\"a\\u0000b\"\n", jsonLine(jsonText("a\0b"s)));
}

TEST(JsonText, HasTheReplacementCharacterForEachByteThatIsNotUTF8) {
  EXPECT_EQ("\"\\ufffd\"\n", jsonLine(jsonText("\xFF")));
  EXPECT_EQ("\"a\\ufffd\\ufffdb\"\n", jsonLine(jsonText("a\xE2\x82"
                                                        "b")));
  EXPECT_EQ("\"\\ufffd\\ufffd\\ufffd\"\n", jsonLine(jsonText("\xED\xA0\x80")));
}

TEST(JsonText, MayBeOneOfMany) {
  EXPECT_EQ("[]\n", jsonLine(jsonTexts({})));
  EXPECT_EQ("[\"a\",\"\\ufffd\"]\n", jsonLine(jsonTexts({"a", "\xFE"})));
}

}  // namespace

}  // namespace json_test
