// What the reader of TOML refuses for hopopen, beyond what the library does.

#include "toml_read.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <string>

#include "settings.h"

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

std::string repeated(const std::string& text, std::size_t count) {
  std::string result;
  for (std::size_t i = 0; i < count; i++) {
    result += text;
  }
  return result;
}

}  // namespace

TEST(Toml, MayHaveKeysOfThirtyTwoParts) {
  EXPECT_EQ(read(repeated("a.", 31) + "a = 1"), "good");
  EXPECT_EQ(read("[" + repeated("a.", 31) + "a]\n" + repeated("'.'. ", 31) + "a = 1.5"), "good");
  EXPECT_EQ(read("x = {" + repeated("a.", 31) + "a = 1, " + repeated("b.", 31) + "b = 1}"), "good");
}

TEST(Toml, MustNotHaveKeysOfMoreParts) {
  EXPECT_EQ(read(repeated("a.", 32) + "a = 1"), "1:64: a key has more than 32 parts");
  EXPECT_EQ(read("x = 1\r\n[" + repeated("a . ", 32) + "a]"),
            "2:128: a key has more than 32 parts");
  EXPECT_EQ(read("[[" + repeated("a.", 32) + "a]]"), "1:66: a key has more than 32 parts");
  EXPECT_EQ(read("x = {'\xC3\xA9' = {" + repeated("\"a\\\"\".", 31) + "'b'.a = 1}}"),
            "1:202: a key has more than 32 parts");
  EXPECT_EQ(read("\xEF\xBB\xBF" + repeated("a.", 32) + "a = 1"),
            "1:64: a key has more than 32 parts");
}

TEST(Toml, MayHaveAnyNumberOfDotsElsewhere) {
  const std::string dots(1000, '.');
  EXPECT_EQ(read("# " + dots + "\nx = 1 # " + dots), "good");
  EXPECT_EQ(read("x = '" + dots + "'\ny = \"" + dots + "\\\"" + dots + "\""), "good");
  EXPECT_EQ(read("x = '''\n" + dots + "'\n" + dots + "''" + dots + "'''\ny = 1"), "good");
  EXPECT_EQ(read("x = \"\"\"\n" + dots + "\\\"\"\"" + dots + "\"\"\"\"\"\ny = '" + dots + "'"),
            "good");
  EXPECT_EQ(read("x = [" + repeated("1.5, ", 1000) + "]"), "good");
  EXPECT_EQ(read("x = [" + repeated("'a.b.c', ", 1000) + "]"), "good");
  EXPECT_EQ(read(repeated("[[a.b]]\nc.d = 1.5\n", 1000)), "good");
}

TEST(Toml, HasItsLongKeysFoundAfterTexts) {
  for (const std::string text :
       {"'''a'''", "'''a''''", "'''a'''''", "\"\"\"a\"\"\"", "\"\"\"a\\\"\"\"\"\"",
        "\"\"\"\"a\"\"\"\"\"", "''", "\"\"", "'\\'", "\"\\\\\"", "'#'"}) {
    EXPECT_EQ(read("x = {b = " + text + ", " + repeated("a.", 32) + "a = 1}").substr(4),
              ": a key has more than 32 parts")
        << text;
    EXPECT_EQ(read("x = {b = " + text + ", " + repeated("a.", 31) + "a = 1}"), "good") << text;
  }
}

TEST(Toml, IsRefusedWithoutAnEndOfItsTexts) {
  for (const std::string text : {"x = '", "x = \"", "x = '''", "x = \"\"\"", "x = \"\\", "'", "\"",
                                 "x = \"\"\"\\", "x = 'a\n", "x = \"a\\\n", "x = ''''"}) {
    EXPECT_NE(read(text), "good") << text;
  }
}

// Each would end the stack if it were read.
TEST(Toml, OfAMebibyteIsReadOrRefused) {
  const std::size_t half = 524288;
  EXPECT_EQ(read(repeated("a.", half - 2) + "a=1"), "1:64: a key has more than 32 parts");
  EXPECT_EQ(read("[" + repeated("a.", half - 2) + "a]"), "1:65: a key has more than 32 parts");
  EXPECT_NE(read("a=" + repeated("[", half)), "good");
  EXPECT_NE(read("a=" + repeated("{a=", half / 2)), "good");
}

// As deep as a file can be.  With sanitizers each level takes several times as much of the
// stack.
TEST(Toml, MayHaveLongKeysInTablesWithinTables) {
#ifdef SANITIZED
  rlimit stack{};
  ASSERT_EQ(getrlimit(RLIMIT_STACK, &stack), 0);
  stack.rlim_cur = std::min<rlim_t>(stack.rlim_max, 64 << 20);
  ASSERT_EQ(setrlimit(RLIMIT_STACK, &stack), 0);
#endif
  const std::string key = repeated("a.", 31) + "a";
  const std::string deep =
      "[" + key + "]\n" + repeated(key + "={", 200) + key + "=1" + repeated("}", 200);
  EXPECT_EQ(read(deep), "good");
  const toml::parse_result one = hopopen::readToml(deep);
  const toml::parse_result other = hopopen::readToml(deep);
  EXPECT_TRUE(one.table() == other.table());
}

TEST(Toml, OfSettingsHasItsFaultTold) {
  hopopen::faults found;
  hopopen::readSettings("[use]\n" + repeated("a.", 500000) + "a = 'b'\n", "f", found);
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].lineOfText(), "f:2:64: a key has more than 32 parts");
}

}  // namespace toml_test
