// SPDX-License-Identifier: MIT
#include "fault.h"

#include <algorithm>
#include <tuple>

#include "shown.h"

namespace hopopen {

std::string fault::lineOfText() const {
  return printable(file) + ':' + std::to_string(line) + ':' + std::to_string(column) + ": " +
         message;
}

void inOrder(faults& found, std::size_t first) {
  std::stable_sort(found.begin() + static_cast<std::ptrdiff_t>(first), found.end(),
                   [](const fault& a, const fault& b) {
                     return std::tie(a.line, a.column) < std::tie(b.line, b.column);
                   });
}

}  // namespace hopopen
