// SPDX-License-Identifier: MIT
// What the fuzzers share.
//
// Each NAME_fuzz.cpp defines `fuzz`, which is called with one input after the other and
// checks what must hold for every input; the properties are at the head of the file.
// Inputs are texts that can be read and written by hand: where an input has several
// parts, each but the last ends with a line.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

/// Checks the properties on one input.  The bytes after its end may not be read.
void fuzz(std::string_view input);

/// Ends the process with a message: the property that does not hold, and the values
/// that show it.
[[noreturn]] void fail(const char* property, std::string_view a, std::string_view b,
                       std::string_view c);

/// Ends the process unless the property holds.  Up to three values are shown.
inline void check(bool holds, const char* property, std::string_view a = {},
                  std::string_view b = {}, std::string_view c = {}) {
  if (!holds) {
    fail(property, a, b, c);
  }
}

/// Ends the process unless both texts are equal.  `from` is what they were made of.
inline void checkSame(std::string_view actual, std::string_view expected, const char* property,
                      std::string_view from = {}) {
  check(actual == expected, property, actual, expected, from);
}

/// The parts of an input: the first ones are a line each, the last is all the rest.
/// Those that the input does not reach are empty.
template <std::size_t Count>
std::array<std::string, Count> parts(std::string_view input) {
  std::array<std::string, Count> result;
  for (std::size_t i = 0; i < Count; i++) {
    const std::size_t end = i + 1 < Count ? input.find('\n') : std::string_view::npos;
    result[i] = input.substr(0, end);
    input.remove_prefix(end < input.size() ? end + 1 : input.size());
  }
  return result;
}

/// True when every byte of the text is in the set.
inline bool only(std::string_view text, std::string_view set) {
  return text.find_first_not_of(set) == std::string_view::npos;
}

/// True when every byte of the text is a printable ASCII character.
inline bool printable(std::string_view text) {
  for (const char c : text) {
    if (c < ' ' || c > '~') {
      return false;
    }
  }
  return true;
}

/// -1, 0 or 1.
inline int sign(int value) {
  return (value > 0) - (value < 0);
}

/// Checks that `compare` orders three values consistently: each equal to itself, the
/// reverse of a pair the reverse answer, and no circle.
template <class Value, class Compare>
void checkOrder(const Value& a, const Value& b, const Value& c, const Compare& compare) {
  const std::array<const Value*, 3> values = {&a, &b, &c};
  std::array<std::array<int, 3>, 3> order;
  for (std::size_t x = 0; x < 3; x++) {
    for (std::size_t y = 0; y < 3; y++) {
      order[x][y] = sign(compare(*values[x], *values[y]));
    }
  }
  for (std::size_t x = 0; x < 3; x++) {
    check(order[x][x] == 0, "a value is equal to itself");
    for (std::size_t y = 0; y < 3; y++) {
      check(order[x][y] == -order[y][x], "the order of a pair does not depend on its side");
      for (std::size_t z = 0; z < 3; z++) {
        const bool chain = order[x][y] <= 0 && order[y][z] <= 0;
        check(!chain || order[x][z] == std::min(order[x][y], order[y][z]),
              "the order is transitive");
      }
    }
  }
}

constexpr std::string_view DIGITS = "0123456789";
constexpr std::string_view UPPER_HEX = "0123456789ABCDEF";
constexpr std::string_view LOWER_HEX = "0123456789abcdef";
constexpr std::string_view LETTERS = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

/// True if the expressions of a file, which may have some, ask little of the C library.
/// (Repeated repetitions may need memory and time without bound: see regexpr_fuzz.cpp.)
inline bool cheapExpressions(std::string_view file) {
  if (file.find("allow") == std::string_view::npos) {
    return true;
  }
  std::size_t counts = 0;  // "{2", "{,3"
  for (std::size_t i = 0; i + 1 < file.size(); i++) {
    if (file[i] == '{' && only(file.substr(i + 1, 1), "0123456789,")) {
      const std::size_t end = file.find_first_not_of("0123456789,", i + 1);
      counts += end != std::string_view::npos && end - i <= 4 ? 1 : 2;
    }
  }
  return counts <= 1 && std::count(file.begin(), file.end(), '+') <= 3 &&
         std::count(file.begin(), file.end(), '\\') == 0;
}
