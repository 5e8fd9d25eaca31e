// SPDX-License-Identifier: MIT
// The empty text that is answered by reference where there is no text.
#pragma once

#include <string>

#include "lasting.h"

namespace internal {

inline const std::string& emptyString() {
  static const lasting<std::string> empty;  // may be asked for at exit
  return *empty;
}

}  // namespace internal
