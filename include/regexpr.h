// SPDX-License-Identifier: MIT
// Regular expressions.
//
// A `RegExpr` owns one compiled POSIX extended regular expression
// (IEEE Std 1003.1, XBD 9.4).  A text that does not compile is not an error of
// the constructor: the object remembers why, and matches nothing.
//
// A character is a byte, and the letters are those of ASCII, whatever locale the program
// has set.  A text of 2 GiB or more is not searched: nothing is found in it.
//
// A pattern is the program's own and never a stranger's.  A hostile one can end the
// program: 16,000 open parentheses overflow the stack of the C library's compiler; nested
// counts such as "((a{1,99}){1,99}){1,99}" take memory without limit; so do some that
// repeat what repeats, such as "a++++".  A wildcard with many "*" takes time that grows
// with the square of the text's length and more.  The texts that are searched may come
// from strangers.
//
// Objects are independent of each other.  They may be used before `main`, in a
// forked child and at exit; one object must not be used by two threads at once.
#pragma once

#include <regex.h>

#include <string>

#pragma GCC visibility push(default)

/// Why an expression could not be compiled.
enum RegExprError : int {
  REGEXPR_OKAY = 0,
  REGEXPR_NOMATCH = 1,
  REGEXPR_MEMORY = 2,
  REGEXPR_BADRANGE = 3,
  REGEXPR_UNCLOSEDBRACKET = 4,
  REGEXPR_UNCLOSEDRANGE = 5,
  REGEXPR_ESCAPEDEND = 6,
  REGEXPR_OTHER = 7
};

/// The display text of an error, "<bad RegExprError>" for a value outside the
/// enumeration.
const char* text(RegExprError error);

/// The symbolic name of an error code of `regcomp`: "REG_ENOSYS" for -1,
/// "REG_NOERROR" to "REG_ERPAREN" for 0 to 16 (the GNU C library's numbers), and
/// "<unknown reg_errcode_t>" for any other.
const char* sysError(int code);

/// One compiled extended regular expression.
class RegExpr {
 public:
  /// Where a match was found: offset and length in bytes.
  struct Match {
    /// A match of `matchLength` bytes at `matchStart`.
    Match(unsigned int matchStart, unsigned int matchLength)
        : start(matchStart), length(matchLength) {}
    unsigned int start;   ///< from the beginning of the text
    unsigned int length;  ///< 0 for an empty match
  };

  /// Compiles `text`, ignoring letter case unless `caseSensitive`.  Bad input is
  /// kept as the `CompileError`.  The text is read up to its first NUL byte.
  RegExpr(const std::string& text, bool caseSensitive);
  RegExpr(const RegExpr&) = delete;
  RegExpr& operator=(const RegExpr&) = delete;
  ~RegExpr();

  /// Frees the compiled expression; from then on nothing matches.  May be called
  /// more than once.
  void clear();

  /// The result of the compilation.
  RegExprError CompileError() const { return comp_return; }

  /// True when the expression matches anywhere in `text`, which is read up to
  /// its first NUL byte.
  bool matchs(const std::string& text) const;

  /// True when the expression matches at the offset `start` of `text`; "^" and "$"
  /// still stand for the ends of the whole text.  Takes time in proportion to the
  /// length of `text`, where a search may take its square.  An offset after the text's
  /// end gives false.
  ///
  ///     RegExpr("b", true).matchsAt("abc", 1)   // true
  bool matchsAt(const std::string& text, unsigned int start) const;

  /// The leftmost match.  `Match(0, 0)` when there is none, when it is empty at
  /// offset 0, and when the expression did not compile.
  ///
  ///     RegExpr("b", true).match("abc")   // start 1, length 1
  Match match(const std::string& text) const;

  /// The text of the leftmost match, empty wherever `match` gives `Match(0, 0)`.
  std::string matchText(const std::string& text) const;

  /// Turns a shell-style wildcard into an expression.
  ///
  /// - "*" stands for any run of characters; at either end of the wildcard it
  ///   leaves that end unanchored.
  /// - Every other character stands for itself, the question mark included.
  /// - An empty wildcard gives the empty expression, which matches everything.
  ///
  ///     wildcard2RE("a*c")    // ^a.*c$
  ///     wildcard2RE("*.b")    // \.b$
  static std::string wildcard2RE(const std::string& wildcard);

 private:
  std::string source;
  regex_t* matcher;  // owned; null after clear()
  RegExprError comp_return = REGEXPR_OKAY;
  mutable int exec_return = 1;  // of the last match: 0 found, 1 not
};

#pragma GCC visibility pop
