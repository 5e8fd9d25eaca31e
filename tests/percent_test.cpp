// SPDX-License-Identifier: MIT
// Percent-encoding as hopopen reads and writes it.

#include "percent.h"

#include <gtest/gtest.h>

#include <string>

namespace percent_test {

namespace {

using namespace std::string_literals;
using hopopen::decode;
using hopopen::encodedWidth;
using hopopen::percentEncoded;

TEST(Percent, IsDecodedOnce) {
  EXPECT_EQ("", decode(""));
  EXPECT_EQ("abc", decode("a%62c"));
  EXPECT_EQ("%41", decode("%2541"));
  EXPECT_EQ("\xC3\xA4/\0"s, decode("%c3%A4%2F%00"));
}

TEST(Percent, StaysWithoutTwoDigits) {
  for (const char* text : {"%", "%4", "%g1", "%1g", "%%41"}) {
    EXPECT_EQ(text == "%%41"s ? "%A" : text, decode(text));
  }
}

TEST(Percent, IsThreeBytesWide) {
  EXPECT_EQ(3U, encodedWidth("%41"));
  EXPECT_EQ(3U, encodedWidth("%aFx"));
  for (const char* text : {"a41", "%4", "%g1", "%1g", "%"}) {
    EXPECT_EQ(1U, encodedWidth(text)) << text;
  }
}

TEST(Percent, IsWrittenForAllButUnreservedBytes) {
  EXPECT_EQ("AZaz09-._~", percentEncoded("AZaz09-._~"));
  EXPECT_EQ("%25%20%2F%C3%A4%00", percentEncoded("% /\xC3\xA4\0"s));
}

}  // namespace

}  // namespace percent_test
