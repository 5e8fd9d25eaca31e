// SPDX-License-Identifier: MIT
#include "../c_locale.h"

#include <clocale>

namespace internal {

locale_t cLocale() {
  // The C library has this one ready.  It reads nothing and allocates nothing.
  static const locale_t locale = newlocale(LC_ALL_MASK, "C", locale_t{});
  return locale;
}

}  // namespace internal
