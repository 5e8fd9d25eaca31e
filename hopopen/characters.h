// Classes of characters that RFC 3986 and the rules for the pieces of a link speak of.
// Nothing here depends on the locale.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace hopopen {

constexpr bool isUpper(char c) {
  return c >= 'A' && c <= 'Z';
}
constexpr bool isLower(char c) {
  return c >= 'a' && c <= 'z';
}
constexpr bool isDigit(char c) {
  return c >= '0' && c <= '9';
}
constexpr bool isAlpha(char c) {
  return isUpper(c) || isLower(c);
}
constexpr bool isAlnum(char c) {
  return isAlpha(c) || isDigit(c);
}
constexpr bool isHex(char c) {
  return isDigit(c) || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}
/// A letter, a digit or an underscore.
constexpr bool isWord(char c) {
  return isAlnum(c) || c == '_';
}
/// The control characters of ASCII, DEL included.
constexpr bool isControl(char c) {
  return (c >= 0 && c < ' ') || c == '\x7F';
}
constexpr bool isPrintable(char c) {
  return c >= ' ' && c <= '~';
}
/// What means itself in every part of a URI (RFC 3986, section 2.3).
constexpr bool isUnreserved(char c) {
  return isAlnum(c) || c == '-' || c == '.' || c == '_' || c == '~';
}
/// What a URI may be made of (RFC 3986, section 2).
constexpr bool isOfURI(char c) {
  return isUnreserved(c) ||
         std::string_view("%:/?#[]@!$&'()*+,;=").find(c) != std::string_view::npos;
}

constexpr char lower(char c) {
  return isUpper(c) ? static_cast<char>(c - 'A' + 'a') : c;
}

inline std::string lower(std::string_view text) {
  std::string result(text);
  for (char& c : result) {
    c = lower(c);
  }
  return result;
}

/// True when both are equal but for the case of ASCII letters.
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
