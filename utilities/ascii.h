// The classes and the case of ASCII characters.  No locale is ever set, so no other
// character is a digit, white space, or a letter with a case.
#pragma once

constexpr bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

constexpr bool isSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

constexpr char lower(char c) {
  return static_cast<char>(c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c);
}

constexpr bool isLetter(char c) {
  return lower(c) >= 'a' && lower(c) <= 'z';
}
