// SPDX-License-Identifier: MIT
// What the reader of TOML refuses for hopopen, beyond what the library does.

#include "toml_read.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <string>

#include "settings.h"
#include "texts.h"

namespace toml_test {

namespace {

// "LINE:COLUMN: what", or "good".
std::string read(const std::string& text) {
  const toml::parse_result result = hopopen::readToml(text);
  if (result) {
    return "good";
  }
  const auto where = result.error().source().begin;
  return std::to_string(where.line) + ":" + std::to_string(where.column) + ": " +
         std::string(result.error().description());
}

}  // namespace

TEST(Toml, MayHaveKeysOfThirtyTwoParts) {
  EXPECT_EQ(read(repeated(31, "a.") + "a = 1"), "good");
  EXPECT_EQ(read("[" + repeated(31, "a.") + "a]\n" + repeated(31, "'.'. ") + "a = 1.5"), "good");
  EXPECT_EQ(read("x = {" + repeated(31, "a.") + "a = 1, " + repeated(31, "b.") + "b = 1}"), "good");
}

TEST(Toml, MustNotHaveKeysOfMoreParts) {
  EXPECT_EQ(read(repeated(32, "a.") + "a = 1"), "1:64: a key has more than 32 parts");
  EXPECT_EQ(read("x = 1\r\n[" + repeated(32, "a . ") + "a]"),
            "2:128: a key has more than 32 parts");
  EXPECT_EQ(read("[[" + repeated(32, "a.") + "a]]"), "1:66: a key has more than 32 parts");
  EXPECT_EQ(read("x = {'\xC3\xA9' = {" + repeated(31, "\"a\\\"\".") + "'b'.a = 1}}"),
            "1:202: a key has more than 32 parts");
  EXPECT_EQ(read("\xEF\xBB\xBF" + repeated(32, "a.") + "a = 1"),
            "1:64: a key has more than 32 parts");
}

TEST(Toml, MayHaveAnyNumberOfDotsElsewhere) {
  const std::string dots(1000, '.');
  EXPECT_EQ(read("# " + dots + "\nx = 1 # " + dots), "good");
  EXPECT_EQ(read("x = '" + dots + "'\ny = \"" + dots + "\\\"" + dots + "\""), "good");
  EXPECT_EQ(read("x = '''\n" + dots + "'\n" + dots + "''" + dots + "'''\ny = 1"), "good");
  EXPECT_EQ(read("x = \"\"\"\n" + dots + "\\\"\"\"" + dots + "\"\"\"\"\"\ny = '" + dots + "'"),
            "good");
  EXPECT_EQ(read("x = [" + repeated(1000, "1.5, ") + "]"), "good");
  EXPECT_EQ(read("x = [" + repeated(1000, "'a.b.c', ") + "]"), "good");
  EXPECT_EQ(read(repeated(1000, "[[a.b]]\nc.d = 1.5\n")), "good");
}

TEST(Toml, HasItsLongKeysFoundAfterTexts) {
  for (const std::string text :
       {"'''a'''", "'''a''''", "'''a'''''", "\"\"\"a\"\"\"", "\"\"\"a\\\"\"\"\"\"",
        "\"\"\"\"a\"\"\"\"\"", "''", "\"\"", "'\\'", "\"\\\\\"", "'#'"}) {
    EXPECT_EQ(read("x = {b = " + text + ", " + repeated(32, "a.") + "a = 1}").substr(4),
              ": a key has more than 32 parts")
        << text;
    EXPECT_EQ(read("x = {b = " + text + ", " + repeated(31, "a.") + "a = 1}"), "good") << text;
  }
}

TEST(Toml, IsRefusedWithoutAnEndOfItsTexts) {
  for (const std::string text : {"x = '", "x = \"", "x = '''", "x = \"\"\"", "x = \"\\", "'", "\"",
                                 "x = \"\"\"\\", "x = 'a\n", "x = \"a\\\n", "x = ''''"}) {
    EXPECT_NE(read(text), "good") << text;
  }
}

// Reading any of these would overflow the stack.
TEST(Toml, OfAMebibyteIsReadOrRefused) {
  const std::size_t half = 524288;
  EXPECT_EQ(read(repeated(half - 2, "a.") + "a=1"), "1:64: a key has more than 32 parts");
  EXPECT_EQ(read("[" + repeated(half - 2, "a.") + "a]"), "1:65: a key has more than 32 parts");
  EXPECT_NE(read("a=" + repeated(half, "[")), "good");
  EXPECT_NE(read("a=" + repeated(half / 2, "{a=")), "good");
}

// The greatest depth of a file.  With sanitizers each level needs several times as much
// stack.
TEST(Toml, MayHaveLongKeysInTablesWithinTables) {
#ifdef SANITIZED
  rlimit stack{};
  ASSERT_EQ(getrlimit(RLIMIT_STACK, &stack), 0);
  stack.rlim_cur = std::min<rlim_t>(stack.rlim_max, 64 << 20);
  ASSERT_EQ(setrlimit(RLIMIT_STACK, &stack), 0);
#endif
  const std::string key = repeated(31, "a.") + "a";
  const std::string deep =
      "[" + key + "]\n" + repeated(200, key + "={") + key + "=1" + repeated(200, "}");
  EXPECT_EQ(read(deep), "good");
  const toml::parse_result one = hopopen::readToml(deep);
  const toml::parse_result other = hopopen::readToml(deep);
  EXPECT_TRUE(one.table() == other.table());
}

TEST(Toml, OfSettingsHasItsFaultTold) {
  hopopen::faults found;
  hopopen::readSettings("[use]\n" + repeated(500000, "a.") + "a = 'b'\n", "f", found);
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].lineOfText(), "f:2:64: a key has more than 32 parts");
}

}  // namespace toml_test
