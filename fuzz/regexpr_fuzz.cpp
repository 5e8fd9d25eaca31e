// SPDX-License-Identifier: MIT
// Regular expressions, for every expression and text:
//
// - An expression that does not compile says why, and matches nothing.
// - `matchs`, `match` and `matchText` agree, and a match lies within the text, which ends
//   at its first NUL byte.
// - What matches still matches with letter case ignored, unless the expression has a
//   bracket, whose ranges and negations case changes, or a backslash: what it means
//   before a letter is undefined.
// - After `clear`, which may be called twice, nothing matches.
//
// Expressions come from programs, not from strangers, and the C library needs as much
// memory and time as repeated repetitions ask for: each "+" may double both.
// So expressions and texts are short here, with few of them, and counts have one digit.
// There are no references back to a group, which POSIX does not give these expressions:
// the C library has them, and its time and memory for them have no bound.

#include <algorithm>

#include "fuzz.h"
#include "regexpr.h"

namespace {

bool cheap(const std::string& expression) {
  const auto braces = std::count(expression.begin(), expression.end(), '{');
  const auto pluses = std::count(expression.begin(), expression.end(), '+');
  char previous = '\0';
  for (const char c : expression) {
    if (only({&c, 1}, DIGITS) && (previous == '\\' || only({&previous, 1}, DIGITS))) {
      return false;
    }
    previous = c;
  }
  return expression.size() <= 24 && braces <= 1 && pluses <= 4;
}

void checkNothing(const RegExpr& expression, const std::string& text) {
  const RegExpr::Match found = expression.match(text);
  check(!expression.matchs(text) && found.start == 0 && found.length == 0 &&
            expression.matchText(text).empty(),
        "nothing matches", text);
}

void checkMatch(const RegExpr& expression, const std::string& text, const std::string& source) {
  const bool matches = expression.matchs(text);
  const RegExpr::Match found = expression.match(text);
  check(matches || (found.start == 0 && found.length == 0), "without a match there is no place",
        source, text);
  check(found.start + found.length <= text.find('\0') && found.start + found.length <= text.size(),
        "a match lies within the text", source, text);
  checkSame(expression.matchText(text), text.substr(found.start, found.length),
            "the text of a match is at its place", source);
}

void checkError(const RegExpr& expression, const std::string& source) {
  const RegExprError error = expression.CompileError();
  check(error > REGEXPR_NOMATCH && error <= REGEXPR_OTHER &&
            text(error) != std::string("<bad RegExprError>"),
        "what does not compile says why", source);
}

}  // namespace

void fuzz(std::string_view input) {
  const auto [source, text] = parts<2>(input);
  if (!cheap(source) || text.size() > 40) {
    return;
  }
  RegExpr exact(source, true);
  RegExpr ignoring(source, false);
  for (RegExpr* expression : {&exact, &ignoring}) {
    if (expression->CompileError() == REGEXPR_OKAY) {
      checkMatch(*expression, text, source);
    } else {
      checkError(*expression, source);
      checkNothing(*expression, text);
    }
  }
  if (source.find_first_of("[\\") == source.npos) {
    check(exact.CompileError() == ignoring.CompileError(), "case does not decide what compiles",
          source);
    check(!exact.matchs(text) || ignoring.matchs(text), "ignoring case matches no less", source,
          text);
  }
  for (RegExpr* expression : {&exact, &ignoring}) {
    expression->clear();
    checkNothing(*expression, text);
    expression->clear();
  }
}
