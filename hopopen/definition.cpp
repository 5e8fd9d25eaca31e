// SPDX-License-Identifier: MIT
#include "definition.h"

#include <algorithm>

#include "characters.h"

namespace hopopen {

bool definition::opens(const std::string& scheme) const {
  return std::find(schemes.begin(), schemes.end(), scheme) != schemes.end();
}

const parameterRule* definition::rule(const std::string& parameter) const {
  for (const parameterRule& one : parameters) {
    if (sameLetters(one.name, parameter)) {
      return &one;
    }
  }
  return nullptr;
}

}  // namespace hopopen
