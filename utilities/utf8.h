// SPDX-License-Identifier: MIT
// Walking through the characters of a UTF-8 text.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>

#include "conversion.h"  // IWYU pragma: keep

namespace internal {

/// The number of bytes that a character at `p` can have.
inline unsigned int remaining(const unsigned char* p, const unsigned char* end) {
  return static_cast<unsigned int>(std::min<std::ptrdiff_t>(end - p, 4));
}

/// Calls `use` with each code point of a text until it returns false.  A malformed
/// byte counts as the code point of its own value.
template <class Use>
bool eachCharacter(const std::string& text, const Use& use) {
  const auto* p = reinterpret_cast<const unsigned char*>(text.data());
  const unsigned char* const end = p + text.size();
  for (; p < end; p++) {
    if (!use(getUTF8(p, remaining(p, end), false))) {
      return false;
    }
  }
  return true;
}

}  // namespace internal
