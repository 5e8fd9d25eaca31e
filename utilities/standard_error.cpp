#include "standard_error.h"

#include <ostream>

// What <iostream> declares.  The header itself would set the standard streams up at the
// start of every process, and with them the locale, which a launch has no use for.
namespace std {  // NOLINT(cert-dcl58-cpp)
extern ostream cerr;
}

namespace internal {

std::ostream& standardError() {
  static const std::ios_base::Init standardStreams;
  return std::cerr;
}

}  // namespace internal
