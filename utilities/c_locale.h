// SPDX-License-Identifier: MIT
// The C locale.  Links, expressions and messages are read and written in it, whatever
// locale the program has set.
#pragma once

#include <clocale>

namespace internal {

/// The C locale of the C library; never freed.
locale_t cLocale();

/// Gives the calling thread the C locale for a scope.
class inCLocale {
 public:
  inCLocale() : m_before(uselocale(cLocale())) {}
  inCLocale(const inCLocale&) = delete;
  inCLocale& operator=(const inCLocale&) = delete;
  ~inCLocale() { uselocale(m_before); }

 private:
  locale_t m_before;
};

}  // namespace internal
