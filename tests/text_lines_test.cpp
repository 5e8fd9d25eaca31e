// SPDX-License-Identifier: MIT
// The lines of settings files, as people and other systems wrote them.

#include "text_lines.h"

#include <gtest/gtest.h>

#include <string>

namespace text_lines_test {

namespace {

using namespace hopopen;

const std::string MARK = "\xEF\xBB\xBF";

TEST(Lines, BeginAfterAByteOrderMark) {
  EXPECT_EQ(0U, textStart("a"));
  EXPECT_EQ(3U, textStart(MARK + "a"));
  EXPECT_EQ(3U, lineStart(MARK + "ab\n", 4));
  EXPECT_EQ(6U, lineStart(MARK + "ab\nc", 6));
  EXPECT_EQ(0U, lineStart("ab", 0));
}

TEST(Lines, EndAtALineFeedOrAtTheEnd) {
  EXPECT_EQ(2U, lineEnd("ab\nc", 0));
  EXPECT_EQ(2U, lineEnd("ab\nc", 2));
  EXPECT_EQ(4U, lineEnd("ab\nc", 3));
  EXPECT_EQ(2U, lineEnd("ab\r\nc", 0));
  EXPECT_EQ(3U, lineEnd("ab\r\nc", 3)) << "the line feed itself";
  EXPECT_EQ(3U, lineEnd("ab\r", 0)) << "no line feed follows";
  EXPECT_EQ(3U, nextLine("ab\nc", 0));
  EXPECT_EQ(4U, nextLine("ab\nc", 3));
}

TEST(Lines, HaveTheEndOfTheFirst) {
  EXPECT_EQ("\n", lineBreak(""));
  EXPECT_EQ("\n", lineBreak("a\nb\r\n"));
  EXPECT_EQ("\r\n", lineBreak("a\r\nb\n"));
}

TEST(Lines, HaveBlanksBeforeTheirWords) {
  EXPECT_EQ(" \t", indentation("a\n \tb", 4));
  EXPECT_EQ("", indentation("a\n \tb", 0));
  EXPECT_EQ(3U, skipBlanks("a \tb", 1));
  EXPECT_EQ(2U, skipBlanks("a ", 1));
}

}  // namespace

}  // namespace text_lines_test
