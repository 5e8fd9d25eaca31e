// SPDX-License-Identifier: MIT
// Scans the text of a distinguished name for its segments.  A backslash escapes the
// character after it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "../utilities/ascii.h"

namespace internal {

/// The first unescaped comma after `start`, or the end.  The character at `start`
/// itself is never taken as the comma: stored names rely on it.
inline std::size_t nextComma(std::string_view text, std::size_t start) {
  bool escaped = false;
  for (std::size_t i = start; i < text.size(); i++) {
    if (text[i] == '\\') {
      escaped = !escaped;
    } else if (text[i] == ',' && !escaped && i > start) {
      return i;
    } else {
      escaped = false;
    }
  }
  return text.size();
}

/// The start of the segment that ends at `end`.  It is after the nearest comma that
/// has an even number of backslashes before it.
inline std::size_t segmentStart(std::string_view text, std::size_t end) {
  for (std::size_t i = end; i-- > 0;) {
    if (text[i] != ',') {
      continue;
    }
    std::size_t backslashes = 0;
    while (backslashes < i && text[i - 1 - backslashes] == '\\') {
      backslashes++;
    }
    if (backslashes % 2 == 0) {
      return i + 1;
    }
  }
  return 0;
}

inline std::string_view trimFront(std::string_view text) {
  while (!text.empty() && internal::isSpace(text.front())) {
    text.remove_prefix(1);
  }
  return text;
}

/// Keeps one blank after a backslash, which escapes it.
inline std::string_view trimBack(std::string_view text) {
  std::size_t end = text.size();
  while (end > 0 && internal::isSpace(text[end - 1])) {
    end--;
  }
  if (end > 0 && end < text.size() && text[end - 1] == '\\') {
    end++;
  }
  return text.substr(0, end);
}

inline std::string_view trim(std::string_view text) {
  return trimBack(trimFront(text));
}

/// One segment of a name.
struct segment {
  bool okay;  ///< there is an "="
  std::string_view key;
  std::string_view value;
};

/// The first segment of the `rest` of a name.  Moves `rest` to the next one.
inline segment nextSegment(std::string_view& rest) {
  rest = trimFront(rest);
  const std::size_t equals = rest.substr(0, nextComma(rest, 0)).find('=');
  if (equals == std::string_view::npos) {
    return {false, {}, {}};
  }
  const std::string_view key = trimBack(rest.substr(0, equals));
  const std::size_t comma = nextComma(rest, equals + 1);
  const std::string_view value = trim(rest.substr(equals + 1, comma - equals - 1));
  rest.remove_prefix(std::min(comma + 1, rest.size()));
  return {true, key, value};
}

}  // namespace internal
