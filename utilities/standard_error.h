// Standard error, for code that may run before `main`.
#pragma once

#include <iosfwd>

namespace internal {

/// Standard error, set up even before the static initialisers that would do so.
std::ostream& standardError();

}  // namespace internal
