// SPDX-License-Identifier: MIT
// Standard error, for code that may run before `main`.
#pragma once

#include <iosfwd>

namespace internal {

/// Standard error.  It works even before the static initialisers that set it up.
std::ostream& standardError();

}  // namespace internal
