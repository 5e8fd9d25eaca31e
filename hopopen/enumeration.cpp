// SPDX-License-Identifier: MIT
#include "enumeration.h"

#include <cstddef>

namespace hopopen {

std::string enumeration(const std::vector<std::string>& texts, const char* last) {
  std::string result;
  for (std::size_t i = 0; i < texts.size(); i++) {
    if (i > 0) {
      result += i + 1 < texts.size() ? ", " : last;
    }
    result += texts[i];
  }
  return result;
}

}  // namespace hopopen
