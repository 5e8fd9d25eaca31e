// SPDX-License-Identifier: MIT
#include "trusted.h"

#include <limits>

namespace hopopen {

bool trustedHost::covers(const host& other) const {
  if (!below) {
    return machine == other;
  }
  const std::string end = '.' + machine.name;
  return other.kind == hostKind::NAME && other.name.size() > end.size() &&
         other.name.ends_with(end);
}

std::size_t trustedHost::length() const {
  return below ? machine.name.size() : std::numeric_limits<std::size_t>::max();
}

std::string trustedHost::text() const {
  return std::string(below ? 1 : 0, '.') + machine.inLink();
}

std::optional<trustedHost> readTrusted(std::string_view text) {
  trustedHost result;
  result.below = text.starts_with('.');
  if (result.below) {
    text.remove_prefix(1);
  }
  if (readHost({text, 0}, result.machine) ||
      (result.below && result.machine.kind != hostKind::NAME)) {
    return {};
  }
  return result;
}

}  // namespace hopopen
