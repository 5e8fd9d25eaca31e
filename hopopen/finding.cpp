// SPDX-License-Identifier: MIT
#include "finding.h"

#include <algorithm>

#include "shown.h"

namespace hopopen {

const char* text(state how) {
  return how == state::OK ? "ok" : how == state::WARNING ? "warning" : "fault";
}

bool hasFault(const findings& told) {
  return std::any_of(told.begin(), told.end(),
                     [](const finding& one) { return one.how == state::FAULT; });
}

std::string findingsAsText(const findings& told) {
  std::string result;
  for (const finding& one : told) {
    result += text(one.how);
    result += ' ' + printable(one.name) + ": " + printable(one.place) + ": " +
              printable(one.message) + '\n';
    if (one.how != state::OK) {
      result += "  " + printable(one.remedy) + '\n';
    }
  }
  return result;
}

}  // namespace hopopen
