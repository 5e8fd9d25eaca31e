// SPDX-License-Identifier: MIT
// Classes of characters that RFC 3986 and the rules for the pieces of a link speak of.
// Nothing here depends on the locale.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "../utilities/ascii.h"  // IWYU pragma: export

namespace hopopen {

using internal::HEX_DIGITS;
using internal::hexValue;
using internal::isBlank;
using internal::isControl;
using internal::isDigit;
using internal::isHexDigit;
using internal::isLetter;
using internal::isLetterOrDigit;
using internal::isLower;
using internal::isPrintable;
using internal::lower;

/// A letter, a digit or an underscore.
constexpr bool isWord(char c) {
  return isLetterOrDigit(c) || c == '_';
}
/// What means itself in every part of a URI (RFC 3986, section 2.3).
constexpr bool isUnreserved(char c) {
  return isLetterOrDigit(c) || c == '-' || c == '.' || c == '_' || c == '~';
}
/// What a URI may be made of (RFC 3986, section 2).
constexpr bool isOfURI(char c) {
  return isUnreserved(c) ||
         std::string_view("%:/?#[]@!$&'()*+,;=").find(c) != std::string_view::npos;
}

inline std::string lower(std::string_view text) {
  std::string result(text);
  for (char& c : result) {
    c = lower(c);
  }
  return result;
}

/// True when both are equal except for the case of ASCII letters.
constexpr bool sameLetters(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) {
    return false;
  }
  for (std::size_t i = 0; i < a.size(); i++) {
    if (lower(a[i]) != lower(b[i])) {
      return false;
    }
  }
  return true;
}

/// True for a scheme in lower case (RFC 3986, section 3.1).
constexpr bool isScheme(std::string_view text) {
  for (const char c : text) {
    if (!isLower(c) && !isDigit(c) && c != '+' && c != '-' && c != '.') {
      return false;
    }
  }
  return !text.empty() && isLower(text[0]);
}

}  // namespace hopopen
