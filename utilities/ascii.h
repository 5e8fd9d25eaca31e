// SPDX-License-Identifier: MIT
// ASCII: the classes of its characters, their case, and the digits of the radices 16 and 64.
// Other code that needs to know what a digit is asks here.
//
// No locale counts: a byte from 128 up is in no class, has no case, and is not a digit.  The
// checks below hold this for all 256 bytes.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace internal {

/// The digits of radix 16, and those in lower case.
inline constexpr std::string_view HEX_DIGITS = "0123456789ABCDEF";
inline constexpr std::string_view LOWER_HEX_DIGITS = "0123456789abcdef";

/// The digits of radix 64 (RFC 4648, section 4).
inline constexpr std::string_view BASE64_DIGITS =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// --- Classes ---------------------------------------------------------------

constexpr bool isUpper(char c) {
  return c >= 'A' && c <= 'Z';
}

constexpr bool isLower(char c) {
  return c >= 'a' && c <= 'z';
}

constexpr bool isLetter(char c) {
  return isUpper(c) || isLower(c);
}

constexpr bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

constexpr bool isLetterOrDigit(char c) {
  return isLetter(c) || isDigit(c);
}

/// A space or a tab.
constexpr bool isBlank(char c) {
  return c == ' ' || c == '\t';
}

/// White space: a blank, or a character that ends a line or a page.
constexpr bool isSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

/// A character with a picture, or a space.
constexpr bool isPrintable(char c) {
  return c >= ' ' && c <= '~';
}

/// DEL included.
constexpr bool isControl(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < ' ' || byte == '\x7F';
}

constexpr bool isPunctuation(char c) {
  return isPrintable(c) && c != ' ' && !isLetterOrDigit(c);
}

// --- Case ------------------------------------------------------------------

constexpr char lower(char c) {
  return static_cast<char>(isUpper(c) ? c + ('a' - 'A') : c);
}

// --- Digits ----------------------------------------------------------------

/// The value of each byte as a digit of radix 16 in either case, -1 for any other byte.  This
/// is a table because decoders look up millions.
inline constexpr std::array<signed char, 256> HEX_VALUES = []() {
  std::array<signed char, 256> table{};
  table.fill(-1);
  for (std::size_t i = 0; i < HEX_DIGITS.size(); i++) {
    table[static_cast<unsigned char>(HEX_DIGITS[i])] = static_cast<signed char>(i);
    table[static_cast<unsigned char>(LOWER_HEX_DIGITS[i])] = static_cast<signed char>(i);
  }
  return table;
}();

constexpr int hexValue(char c) {
  return HEX_VALUES[static_cast<unsigned char>(c)];
}

constexpr bool isHexDigit(char c) {
  return hexValue(c) >= 0;
}

/// The digit of a value below 16, in lower case.  There is no table, so that a compiler can
/// work on many at once.
constexpr char lowerHexDigit(unsigned int value) {
  return static_cast<char>(value + (value < 10 ? '0' : 'a' - 10));
}

constexpr bool isBase64Digit(char c) {
  return isLetterOrDigit(c) || c == '+' || c == '/';
}

// --- Checks ----------------------------------------------------------------

namespace asciiChecks {

constexpr std::string_view UPPER = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr std::string_view LOWER = "abcdefghijklmnopqrstuvwxyz";
constexpr std::string_view PUNCTUATION = "!\"#$%&'()*+,-./:;<=>?@[\\]^_`{|}~";

/// A set of bytes, and the bytes themselves.
using byteSet = std::array<bool, 256>;

constexpr byteSet setOf(std::string_view members, std::string_view more = "",
                        std::string_view evenMore = "", std::string_view rest = "") {
  byteSet result{};
  for (const std::string_view part : {members, more, evenMore, rest}) {
    for (const char c : part) {
      result[static_cast<unsigned char>(c)] = true;
    }
  }
  return result;
}

constexpr byteSet range(std::size_t first, std::size_t last) {
  byteSet result{};
  for (std::size_t c = first; c <= last; c++) {
    result[c] = true;
  }
  return result;
}

constexpr bool are(bool (*inClass)(char), const byteSet& members) {
  for (std::size_t c = 0; c < members.size(); c++) {
    if (inClass(static_cast<char>(c)) != members[c]) {
      return false;
    }
  }
  return true;
}

static_assert(are(isUpper, setOf(UPPER)));
static_assert(are(isLower, setOf(LOWER)));
static_assert(are(isLetter, setOf(UPPER, LOWER)));
static_assert(are(isDigit, setOf("0123456789")));
static_assert(are(isLetterOrDigit, setOf(UPPER, LOWER, "0123456789")));
static_assert(are(isBlank, setOf(" \t")));
static_assert(are(isSpace, setOf(" \t\n\v\f\r")));
static_assert(are(isPrintable, range(32, 126)));
static_assert(are(isPrintable, setOf(UPPER, LOWER, PUNCTUATION, " 0123456789")));
static_assert(are(isControl, []() {
  byteSet result = range(0, 31);
  result[127] = true;
  return result;
}()));
static_assert(are(isPunctuation, setOf(PUNCTUATION)));
static_assert(are(isHexDigit, setOf("0123456789abcdefABCDEF")));
static_assert(are(isBase64Digit, setOf(BASE64_DIGITS)));
static_assert(BASE64_DIGITS.size() == 64 &&
              setOf(BASE64_DIGITS) == setOf(UPPER, LOWER, "0123456789", "+/"));

static_assert([]() {
  for (int c = 0; c < 256; c++) {
    if (lower(static_cast<char>(c)) != static_cast<char>(c >= 65 && c <= 90 ? c + 32 : c)) {
      return false;
    }
    const int value = c >= 48 && c <= 57    ? c - 48
                      : c >= 65 && c <= 70  ? c - 55
                      : c >= 97 && c <= 102 ? c - 87
                                            : -1;
    if (hexValue(static_cast<char>(c)) != value) {
      return false;
    }
  }
  for (std::size_t i = 0; i < 16; i++) {
    if (lowerHexDigit(static_cast<unsigned int>(i)) != LOWER_HEX_DIGITS[i]) {
      return false;
    }
  }
  return true;
}());

}  // namespace asciiChecks

}  // namespace internal
