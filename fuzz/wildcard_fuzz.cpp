// SPDX-License-Identifier: MIT
// Wildcards.  For every wildcard and text without NUL bytes:
//
// - The expression compiles.
// - It matches exactly the texts that consist of the pieces between the stars in this
//   order, with anything in place of a star; the empty wildcard matches every text.
// - With letter case ignored it matches what it matches with both in lower case.
// - Without a star at either end the match is the whole text.

#include "conversion.h"
#include "fuzz.h"
#include "regexpr.h"

namespace {

// The leftmost place for each piece in turn is as good as any, except for the last piece,
// which is at the end.
bool fits(const std::string& text, const std::string& wildcard) {
  const std::vector<std::string> pieces = stringToVector(wildcard, '*');
  const std::string& first = pieces.front();
  const std::string& last = pieces.back();
  if (pieces.size() == 1) {
    return wildcard.empty() || text == wildcard;
  }
  if (text.size() < first.size() + last.size() || text.compare(0, first.size(), first) != 0 ||
      text.compare(text.size() - last.size(), last.size(), last) != 0) {
    return false;
  }
  const std::string middle = text.substr(first.size(), text.size() - first.size() - last.size());
  std::size_t position = 0;
  for (std::size_t i = 1; i + 1 < pieces.size(); i++) {
    position = middle.find(pieces[i], position);
    if (position == middle.npos) {
      return false;
    }
    position += pieces[i].size();
  }
  return true;
}

std::string lower(std::string text) {
  setCase(text.data(), static_cast<int>(text.size()), false);
  return text;
}

}  // namespace

void fuzz(std::string_view input) {
  const auto [wildcard, text] = parts<2>(input.substr(0, input.find('\0')));
  if (wildcard.size() > 24 || text.size() > 48) {
    return;  // the C library is slow here
  }
  const std::string expression = RegExpr::wildcard2RE(wildcard);
  const RegExpr exact(expression, true);
  check(exact.CompileError() == REGEXPR_OKAY, "a wildcard compiles", wildcard, expression);
  check(exact.matchs(text) == fits(text, wildcard), "a wildcard matches the texts that it fits",
        wildcard, text, expression);
  const RegExpr ignoring(expression, false);
  check(ignoring.matchs(text) == fits(lower(text), lower(wildcard)), "case can be ignored",
        wildcard, text, expression);
  if (!wildcard.empty() && wildcard.front() != '*' && wildcard.back() != '*' &&
      exact.matchs(text)) {
    const RegExpr::Match found = exact.match(text);
    check(found.start == 0 && found.length == text.size(), "the match is the whole text", wildcard,
          text);
  }
}
