// SPDX-License-Identifier: MIT
#include "regexpr.h"

#include <regex.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

#include "../c_locale.h"

namespace {

RegExprError mapped(int code) {
  switch (code) {
    case REG_NOERROR:
      return REGEXPR_OKAY;
    case REG_ECOLLATE:
    case REG_BADBR:
    case REG_ERANGE:
      return REGEXPR_BADRANGE;
    case REG_EESCAPE:
      return REGEXPR_ESCAPEDEND;
    case REG_EBRACK:
      return REGEXPR_UNCLOSEDRANGE;
    case REG_EPAREN:
      return REGEXPR_UNCLOSEDBRACKET;
    case REG_ESPACE:
    case REG_ESIZE:
      return REGEXPR_MEMORY;
    default:
      return REGEXPR_OTHER;
  }
}

// The C library counts in `int`, and searches no longer text.
bool searchable(const std::string& text) {
  constexpr std::size_t LONGEST = std::numeric_limits<regoff_t>::max() - 1;
  return text.size() <= LONGEST || std::strlen(text.c_str()) <= LONGEST;
}

}  // namespace

const char* sysError(int code) {
  static constexpr std::array<const char*, 18> names = {
      "REG_ENOSYS",  "REG_NOERROR", "REG_NOMATCH", "REG_BADPAT", "REG_ECOLLATE", "REG_ECTYPE",
      "REG_EESCAPE", "REG_ESUBREG", "REG_EBRACK",  "REG_EPAREN", "REG_EBRACE",   "REG_BADBR",
      "REG_ERANGE",  "REG_ESPACE",  "REG_BADRPT",  "REG_EEND",   "REG_ESIZE",    "REG_ERPAREN",
  };
  const auto index = static_cast<std::size_t>(std::int64_t{code} + 1);
  return index < names.size() ? names[index] : "<unknown reg_errcode_t>";
}

RegExpr::RegExpr(const std::string& text, bool caseSensitive) : source(text), matcher(new regex_t) {
  const internal::inCLocale locale;
  const int flags = caseSensitive ? REG_EXTENDED : REG_EXTENDED | REG_ICASE;
  comp_return = mapped(regcomp(matcher, source.c_str(), flags));
  if (comp_return != REGEXPR_OKAY) {
    // An expression that failed to compile is already freed; regfree must not get it.
    delete matcher;
    matcher = nullptr;
  }
}

RegExpr::~RegExpr() {
  clear();
}

void RegExpr::clear() {
  if (matcher != nullptr) {
    regfree(matcher);
    delete matcher;
    matcher = nullptr;
  }
}

bool RegExpr::matchs(const std::string& text) const {
  if (matcher == nullptr || !searchable(text)) {
    return false;
  }
  const internal::inCLocale locale;
  exec_return = regexec(matcher, text.c_str(), 0, nullptr, 0) == 0 ? 0 : 1;
  return exec_return == 0;
}

bool RegExpr::matchsAt(const std::string& text, unsigned int start) const {
  const std::size_t length = std::strlen(text.c_str());
  if (matcher == nullptr || start > length || !searchable(text)) {
    return false;
  }
  // POSIX has no such match.  The GNU C library's own interface to the expression has one.
  const internal::inCLocale locale;
  const auto found = re_match(matcher, text.c_str(), static_cast<regoff_t>(length),
                              static_cast<regoff_t>(start), nullptr);
  exec_return = found >= 0 ? 0 : 1;
  return exec_return == 0;
}

RegExpr::Match RegExpr::match(const std::string& text) const {
  if (matcher == nullptr || !searchable(text)) {
    return Match(0, 0);
  }
  const internal::inCLocale locale;
  regmatch_t found;
  exec_return = regexec(matcher, text.c_str(), 1, &found, 0) == 0 ? 0 : 1;
  if (exec_return != 0 || found.rm_eo <= 0) {
    return Match(0, 0);
  }
  return Match(static_cast<unsigned int>(found.rm_so),
               static_cast<unsigned int>(found.rm_eo - found.rm_so));
}
