// SPDX-License-Identifier: MIT
#include "standard_error.h"

#include <ostream>

// <iostream> declares this, too.  But libstdc++'s header sets up the standard streams at the
// start of every process, and with them the locale, which a launch does not need.  That of
// libc++ only declares them, in a namespace within std.
#ifdef _LIBCPP_VERSION
#include <iostream>
#else
namespace std {  // NOLINT(cert-dcl58-cpp)
extern ostream cerr;
}
#endif

namespace internal {

std::ostream& standardError() {
  static const std::ios_base::Init standardStreams;
  return std::cerr;
}

}  // namespace internal
