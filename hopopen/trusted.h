// SPDX-License-Identifier: MIT
// A host, or all hosts below a domain, that somebody trusts or has settings for.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "host.h"

namespace hopopen {

struct trustedHost {
  host machine;
  bool below = false;  ///< for every name below `machine`, not for itself

  /// True when the host is meant.
  bool covers(const host& other) const;
  /// How closely it says which hosts are meant: more for a longer name after a dot, most for one
  /// host.  Of two that cover one host, the longer match is the closer one.
  std::size_t length() const;
  /// As a settings file has it: "name", ".name", "1.2.3.4" or "[::1]".
  std::string text() const;
  bool operator==(const trustedHost& other) const {
    return below == other.below && machine == other.machine;
  }
};

/// Reads what people write: a host as in a link, or a name after a dot.  Nothing when it is
/// neither.  (An address has nothing below it.)
std::optional<trustedHost> readTrusted(std::string_view text);

}  // namespace hopopen
