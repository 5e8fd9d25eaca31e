#include "standard_error.h"

#include <ostream>

// <iostream> declares this, too.  But that header sets up the standard streams at the start
// of every process, and with them the locale, which a launch does not need.
namespace std {  // NOLINT(cert-dcl58-cpp)
extern ostream cerr;
}

namespace internal {

std::ostream& standardError() {
  static const std::ios_base::Init standardStreams;
  return std::cerr;
}

}  // namespace internal
