// SPDX-License-Identifier: MIT
#include "regexpr.h"

#include <gtest/gtest.h>
#include <regex.h>

#include <climits>
#include <cstddef>
#include <memory>
#include <string>
#include <type_traits>

#include "system_calls.h"

namespace regexpr_test {

using std::string_literals::operator""s;

// The calls of the C library's regular expressions go through these.
namespace {

constexpr int REAL = -1000;

struct {
  int compileResult = REAL;  // the result of `regcomp`, which then does not compile
  int executeResult = REAL;  // the result of `regexec`, which then does not match
  int compiled = 0, executed = 0, freed = 0;
  int compileFlags = 0, executeFlags = 0;
  std::string compiledText;
  std::size_t positions = 0;
} seam;

// Ends the results that a test forces on the calls.
struct Forced {
  ~Forced() { seam.compileResult = seam.executeResult = REAL; }
};

int compile(regex_t* matcher, const char* expression, int flags) {
  seam.compiled++;
  seam.compileFlags = flags;
  seam.compiledText = expression;
  if (seam.compileResult == REAL) return systemCalls::regcomp.real(matcher, expression, flags);
  *matcher = regex_t{};
  return seam.compileResult;
}

int execute(const regex_t* matcher, const char* subject, std::size_t positions, regmatch_t* found,
            int flags) {
  seam.executed++;
  seam.executeFlags = flags;
  seam.positions = positions;
  if (seam.executeResult == REAL) {
    return systemCalls::regexec.real(matcher, subject, positions, found, flags);
  }
  // A failing search may leave anything behind.
  for (std::size_t i = 0; i < positions; i++) {
    found[i].rm_so = 1;
    found[i].rm_eo = 3;
  }
  return seam.executeResult;
}

void release(regex_t* matcher) {
  seam.freed++;
  systemCalls::regfree.real(matcher);
}

const replacedCalls here(__FILE__, [] {
  systemCalls::regcomp.replace(compile);
  systemCalls::regexec.replace(execute);
  systemCalls::regfree.replace(release);
});

static_assert(std::is_same_v<decltype(RegExpr::Match::start), unsigned int>);
static_assert(std::is_same_v<decltype(RegExpr::Match::length), unsigned int>);
static_assert(sizeof(RegExpr::Match) == 2 * sizeof(unsigned int));

const RegExpr compiledBeforeMain("^a", true);

}  // namespace

TEST(RegExprErrorText, NamesEachError) {
  const struct {
    RegExprError error;
    int value;
    const char* expected;
  } cases[] = {
      {REGEXPR_OKAY, 0, "success"},
      {REGEXPR_NOMATCH, 1, "not match"},
      {REGEXPR_MEMORY, 2, "memory allocation problem"},
      {REGEXPR_BADRANGE, 3, "bad range"},
      {REGEXPR_UNCLOSEDBRACKET, 4, "Unclosed round brackets"},
      {REGEXPR_UNCLOSEDRANGE, 5, "Unclosed square brackets"},
      {REGEXPR_ESCAPEDEND, 6, "Escape character as last in expression"},
      {REGEXPR_OTHER, 7, "Other RegExpr error"},
      {static_cast<RegExprError>(8), 8, "<bad RegExprError>"},
      {static_cast<RegExprError>(-1), -1, "<bad RegExprError>"},
      {static_cast<RegExprError>(INT_MAX), INT_MAX, "<bad RegExprError>"},
      {static_cast<RegExprError>(INT_MIN), INT_MIN, "<bad RegExprError>"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.value);
    EXPECT_EQ(static_cast<int>(c.error), c.value);
    EXPECT_STREQ(text(c.error), c.expected);
  }
}

TEST(RegExprSysError, NamesEachCode) {
  const struct {
    int code;
    const char* expected;
  } cases[] = {
      {-1, "REG_ENOSYS"},
      {0, "REG_NOERROR"},
      {1, "REG_NOMATCH"},
      {2, "REG_BADPAT"},
      {3, "REG_ECOLLATE"},
      {4, "REG_ECTYPE"},
      {5, "REG_EESCAPE"},
      {6, "REG_ESUBREG"},
      {7, "REG_EBRACK"},
      {8, "REG_EPAREN"},
      {9, "REG_EBRACE"},
      {10, "REG_BADBR"},
      {11, "REG_ERANGE"},
      {12, "REG_ESPACE"},
      {13, "REG_BADRPT"},
      {14, "REG_EEND"},
      {15, "REG_ESIZE"},
      {16, "REG_ERPAREN"},
      {17, "<unknown reg_errcode_t>"},
      {-2, "<unknown reg_errcode_t>"},
      {INT_MAX, "<unknown reg_errcode_t>"},
      {INT_MIN, "<unknown reg_errcode_t>"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.code);
    EXPECT_STREQ(sysError(c.code), c.expected);
  }
}

TEST(RegExprMatch, HoldsStartThenLength) {
  const RegExpr::Match match(3, 5);
  EXPECT_EQ(match.start, 3u);
  EXPECT_EQ(match.length, 5u);
  EXPECT_EQ(static_cast<const void*>(&match), static_cast<const void*>(&match.start));
}

TEST(RegExpr, CanBeCompiledBeforeMain) {
  EXPECT_EQ(compiledBeforeMain.CompileError(), REGEXPR_OKAY);
  EXPECT_TRUE(compiledBeforeMain.matchs("abc"));
}

TEST(RegExpr, CompilesExtendedAndIgnoresCaseOnDemand) {
  seam.compiled = 0;
  const RegExpr sensitive("a+(b)", true);
  EXPECT_EQ(seam.compiledText, "a+(b)");
  EXPECT_EQ(seam.compileFlags, REG_EXTENDED);
  const RegExpr insensitive("A|b", false);
  EXPECT_EQ(seam.compiledText, "A|b");
  EXPECT_EQ(seam.compileFlags, REG_EXTENDED | REG_ICASE);
  EXPECT_EQ(seam.compiled, 2);
}

TEST(RegExpr, MapsEachErrorOfTheCompiler) {
  const struct {
    int code;
    RegExprError expected;
  } cases[] = {
      {-1, REGEXPR_OTHER},   {1, REGEXPR_OTHER},         {2, REGEXPR_OTHER},
      {3, REGEXPR_BADRANGE}, {4, REGEXPR_OTHER},         {5, REGEXPR_ESCAPEDEND},
      {6, REGEXPR_OTHER},    {7, REGEXPR_UNCLOSEDRANGE}, {8, REGEXPR_UNCLOSEDBRACKET},
      {9, REGEXPR_OTHER},    {10, REGEXPR_BADRANGE},     {11, REGEXPR_BADRANGE},
      {12, REGEXPR_MEMORY},  {13, REGEXPR_OTHER},        {14, REGEXPR_OTHER},
      {15, REGEXPR_MEMORY},  {16, REGEXPR_OTHER},        {17, REGEXPR_OTHER},
      {1000, REGEXPR_OTHER},
  };
  const Forced forced;
  for (const auto& c : cases) {
    SCOPED_TRACE("regcomp gives " + std::to_string(c.code));
    seam.compileResult = c.code;
    seam.executed = 0;
    {
      const RegExpr expression("a", true);
      EXPECT_EQ(expression.CompileError(), c.expected);
      EXPECT_FALSE(expression.matchs("a"));
      const RegExpr::Match match = expression.match("a");
      EXPECT_EQ(match.start, 0u);
      EXPECT_EQ(match.length, 0u);
      EXPECT_EQ(expression.matchText("a"), "");
    }
    EXPECT_EQ(seam.executed, 0) << "searched with an expression that did not compile";
  }
}

TEST(RegExpr, TellsWhatIsWrongWithAnExpression) {
  const struct {
    const char* expression;
    RegExprError expected;
    const char* words;
  } cases[] = {
      {"", REGEXPR_OKAY, "success"},
      {"a", REGEXPR_OKAY, "success"},
      {"^[a-z]+$", REGEXPR_OKAY, "success"},
      {"(a|b){2,3}", REGEXPR_OKAY, "success"},
      {"a(", REGEXPR_UNCLOSEDBRACKET, "Unclosed round brackets"},
      {"(a", REGEXPR_UNCLOSEDBRACKET, "Unclosed round brackets"},
      {"[a", REGEXPR_UNCLOSEDRANGE, "Unclosed square brackets"},
      {"a\\", REGEXPR_ESCAPEDEND, "Escape character as last in expression"},
      {"[z-a]", REGEXPR_BADRANGE, "bad range"},
      {"a{2,1}", REGEXPR_BADRANGE, "bad range"},
      {"[[.none.]]", REGEXPR_BADRANGE, "bad range"},
      {"a{99999}", REGEXPR_MEMORY, "memory allocation problem"},
      {"[[:none:]]", REGEXPR_OTHER, "Other RegExpr error"},
      {"*a", REGEXPR_OTHER, "Other RegExpr error"},
      {"a{1", REGEXPR_OTHER, "Other RegExpr error"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE("the expression '"s + c.expression + "'");
    const RegExpr expression(c.expression, true);
    EXPECT_EQ(expression.CompileError(), c.expected);
    EXPECT_STREQ(text(expression.CompileError()), c.words);
  }
}

TEST(RegExpr, FindsTheLeftmostMatch) {
  const struct {
    const char *expression, *subject;
    bool found;
    unsigned int start, length;
    const char* matched;
  } cases[] = {
      {"^ab", "abc", true, 0, 2, "ab"},
      {"b", "abc", true, 1, 1, "b"},
      {"x", "abc", false, 0, 0, ""},
      {"abc", "abc", true, 0, 3, "abc"},
      {"b", "ABC", false, 0, 0, ""},
      {"a|ab", "xabab", true, 1, 2, "ab"},
      {"a(b)c", "xxabcabc", true, 2, 3, "abc"},
      {"c$", "abc", true, 2, 1, "c"},
      {"^c", "abc", false, 0, 0, ""},
      {"a", "", false, 0, 0, ""},
      // Every text holds an empty match, which counts only after the first byte.
      {"", "abc", true, 0, 0, ""},
      {"", "", true, 0, 0, ""},
      {"^", "abc", true, 0, 0, ""},
      {"x*", "abc", true, 0, 0, ""},
      {"$", "abc", true, 3, 0, ""},
      {"$", "", true, 0, 0, ""},
      {"\xc3\xa9", "caf\xc3\xa9s", true, 3, 2, "\xc3\xa9"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE("'"s + c.expression + "' in '" + c.subject + "'");
    const RegExpr expression(c.expression, true);
    EXPECT_EQ(expression.matchs(c.subject), c.found);
    const RegExpr::Match match = expression.match(c.subject);
    EXPECT_EQ(match.start, c.start);
    EXPECT_EQ(match.length, c.length);
    EXPECT_EQ(expression.matchText(c.subject), c.matched);
  }
}

TEST(RegExpr, IgnoresCaseOnDemand) {
  const RegExpr sensitive("^[a-z]+$", true);
  const RegExpr insensitive("^[a-z]+$", false);
  EXPECT_FALSE(sensitive.matchs("ABC"));
  EXPECT_TRUE(sensitive.matchs("abc"));
  EXPECT_TRUE(insensitive.matchs("ABC"));
  EXPECT_TRUE(insensitive.matchs("abc"));
  EXPECT_EQ(RegExpr("b+", false).matchText("aBbC"), "Bb");
}

TEST(RegExpr, CanSearchAgainAfterAFailedSearch) {
  const RegExpr expression("b", true);
  EXPECT_TRUE(expression.matchs("abc"));
  EXPECT_FALSE(expression.matchs("xyz"));
  EXPECT_TRUE(expression.matchs("b"));
  EXPECT_EQ(expression.matchText("xyz"), "");
  EXPECT_EQ(expression.matchText("abc"), "b");
}

TEST(RegExpr, ReadsTextsUpToTheirFirstNULByte) {
  const RegExpr expression("a\0("s, true);
  EXPECT_EQ(expression.CompileError(), REGEXPR_OKAY);
  EXPECT_TRUE(expression.matchs("xa"));
  EXPECT_FALSE(expression.matchs("x\0a"s));
  EXPECT_EQ(expression.match("x\0a"s).length, 0u);
  EXPECT_EQ(RegExpr("x$", true).matchText("x\0a"s), "x");
}

TEST(RegExpr, AsksForPositionsOnlyWhereItReportsThem) {
  const RegExpr expression("b", true);

  seam.executeFlags = -1;
  EXPECT_TRUE(expression.matchs("abc"));
  EXPECT_EQ(seam.positions, 0u);
  EXPECT_EQ(seam.executeFlags, 0);

  seam.executeFlags = -1;
  static_cast<void>(expression.match("abc"));
  EXPECT_GE(seam.positions, 1u);
  EXPECT_EQ(seam.executeFlags, 0);

  seam.executeFlags = -1;
  static_cast<void>(expression.matchText("abc"));
  EXPECT_GE(seam.positions, 1u);
  EXPECT_EQ(seam.executeFlags, 0);
}

TEST(RegExpr, TakesAnyFailureOfASearchForNoMatch) {
  const RegExpr expression("b", true);
  const Forced forced;
  for (const int code : {REG_NOMATCH, REG_ESPACE}) {
    SCOPED_TRACE("regexec gives " + std::to_string(code));
    seam.executeResult = code;
    EXPECT_FALSE(expression.matchs("abcd"));
    const RegExpr::Match match = expression.match("abcd");
    EXPECT_EQ(match.start, 0u);
    EXPECT_EQ(match.length, 0u);
    EXPECT_EQ(expression.matchText("abcd"), "");
  }
}

TEST(RegExprMatchsAt, LooksAtOneOffsetOfTheWholeText) {
  const struct {
    const char *expression, *subject;
    unsigned int start;
    bool found;
  } cases[] = {
      {"b", "abc", 1, true},      {"b", "abc", 0, false},        {"b", "abc", 2, false},
      {"B", "abc", 1, true},      {"^a", "abc", 0, true},        {"^b", "abc", 1, false},
      {"c$", "abc", 2, true},     {"b$", "abc", 1, false},       {"b|^a", "abc", 1, true},
      {"bc", "abcbc", 3, true},   {"", "abc", 3, true},          {"", "abc", 4, false},
      {"", "", 0, true},          {"x", "", 0, false},           {"$", "abc", 3, true},
      {"b", "a\nb", 2, true},     {"^b", "a\nb", 2, false},      {"a$", "a\nb", 0, false},
      {"\xe9", "a\xe9", 1, true}, {"b", "", 4294967295U, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.expression + " at "s + std::to_string(c.start) + " of " + c.subject);
    const RegExpr expression(c.expression, false);
    EXPECT_EQ(c.found, expression.matchsAt(c.subject, c.start));
  }
  EXPECT_FALSE(RegExpr("B", true).matchsAt("abc", 1));
  EXPECT_FALSE(RegExpr("b", true).matchsAt(std::string("a\0b", 3), 2));
  EXPECT_FALSE(RegExpr("a(", true).matchsAt("a(", 0));
}

TEST(RegExprClear, LetsNothingMatch) {
  RegExpr expression("b", true);
  ASSERT_TRUE(expression.matchs("abc"));
  expression.clear();
  seam.executed = 0;
  EXPECT_FALSE(expression.matchs("abc"));
  EXPECT_EQ(expression.match("abc").start, 0u);
  EXPECT_EQ(expression.match("abc").length, 0u);
  EXPECT_EQ(expression.matchText("abc"), "");
  EXPECT_EQ(seam.executed, 0) << "searched with a freed expression";
  EXPECT_EQ(expression.CompileError(), REGEXPR_OKAY) << "the result of the compilation stays";
}

TEST(RegExprClear, FreesTheExpressionOnce) {
  seam.freed = 0;
  {
    RegExpr expression("b", true);
    EXPECT_EQ(seam.freed, 0);
    expression.clear();
    EXPECT_EQ(seam.freed, 1);
    expression.clear();
    EXPECT_EQ(seam.freed, 1) << "freed again by a second clear";
  }
  EXPECT_EQ(seam.freed, 1) << "freed again by the destructor";
}

TEST(RegExprClear, IsDoneByTheDestructor) {
  auto expression = std::make_unique<RegExpr>("b", true);
  seam.freed = 0;
  expression.reset();
  EXPECT_EQ(seam.freed, 1);
}

TEST(RegExprClear, MayFollowAFailedCompilation) {
  RegExpr expression("a(", true);
  expression.clear();
  expression.clear();
  EXPECT_EQ(expression.CompileError(), REGEXPR_UNCLOSEDBRACKET);
  EXPECT_FALSE(expression.matchs("a("));
}

TEST(RegExprWildcard2RE, ConvertsWildcards) {
  const struct {
    std::string wildcard, expected;
  } cases[] = {
      {"", ""},
      {"*", ""},
      {"**", ""},
      {"***", ".*"},
      {"****", ".*.*"},
      {"a", "^a$"},
      {"ab", "^ab$"},
      {"abc", "^abc$"},
      {"*abc", "abc$"},
      {"abc*", "^abc"},
      {"*abc*", "abc"},
      {"a*c", "^a.*c$"},
      {"a**c", "^a.*.*c$"},
      {"**c", ".*c$"},
      {"a**", "^a.*"},
      {"*a*c*", "a.*c"},
      {"*a", "a$"},
      {"a*", "^a"},
      {"a.b", "^a\\.b$"},
      {"a?c", "^a\\?c$"},
      {"?", "^\\?$"},
      {"*?", "\\?$"},
      {"?*", "^\\?"},
      {"*.b", "\\.b$"},
      {"\\*", "^\\\\"},
      {"^a$", "^\\^a\\$$"},
      {"a\0b"s, "^a\0b$"s},
      {"\xc3\xa9", "^\xc3\xa9$"},
      {"a b", "^a b$"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE("the wildcard '" + c.wildcard + "'");
    EXPECT_EQ(RegExpr::wildcard2RE(c.wildcard), c.expected);
  }
}

TEST(RegExprWildcard2RE, EscapesWhatExpressionsGiveAMeaning) {
  for (const char special : "!$()+-.?[\\]^{|}"s) {
    const std::string one(1, special);
    SCOPED_TRACE("the character '" + one + "'");
    EXPECT_EQ(RegExpr::wildcard2RE(one), "^\\" + one + "$");
    EXPECT_EQ(RegExpr::wildcard2RE(one + "a"), "^\\" + one + "a$");
    EXPECT_EQ(RegExpr::wildcard2RE("a" + one + "b"), "^a\\" + one + "b$");
    EXPECT_EQ(RegExpr::wildcard2RE("a" + one), "^a\\" + one + "$");
    EXPECT_EQ(RegExpr::wildcard2RE("*" + one + "*"), "\\" + one);
  }
}

TEST(RegExprWildcard2RE, CopiesEveryOtherCharacter) {
  const std::string plain =
      "\"#%&',/:;<=>@_`~ 0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz\t\n\r"
      "\x01\x1f\x7f\x80\xff";
  for (const char character : plain) {
    const std::string one(1, character);
    SCOPED_TRACE("the character " + testing::PrintToString(one));
    EXPECT_EQ(RegExpr::wildcard2RE(one), "^" + one + "$");
    EXPECT_EQ(RegExpr::wildcard2RE("a" + one + "b"), "^a" + one + "b$");
  }
}

TEST(RegExprWildcard2RE, MakesExpressionsThatMatchAsTheWildcardSays) {
  const struct {
    const char *wildcard, *subject;
    bool found;
  } cases[] = {
      {"*", "anything", true},
      {"*", "", true},
      {"", "anything", true},
      {"*.example.com", "a.example.com", true},
      {"*.example.com", "axexample.com", false},
      {"*.example.com", "a.example.com.org", false},
      {"example*", "example.com", true},
      {"example*", "an example", false},
      {"*ampl*", "example", true},
      {"a*c", "ac", true},
      {"a*c", "abbbc", true},
      {"a*c", "abcd", false},
      {"a?c", "abc", false},
      {"a?c", "a?c", true},
      {"!$()+-.?[\\]^{|}", "!$()+-.?[\\]^{|}", true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE("'"s + c.wildcard + "' against '" + c.subject + "'");
    const RegExpr expression(RegExpr::wildcard2RE(c.wildcard), true);
    EXPECT_EQ(expression.CompileError(), REGEXPR_OKAY);
    EXPECT_EQ(expression.matchs(c.subject), c.found);
  }
}

}  // namespace regexpr_test
