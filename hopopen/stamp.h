// SPDX-License-Identifier: MIT
// What distinguishes a file from all others, and from itself after a change.
#pragma once

#include <cstdint>

namespace hopopen {

struct stamp {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::uint64_t size = 0;
  std::int64_t modified = 0;  ///< in nanoseconds since 1970
  std::int64_t changed = 0;   ///< the same, of what the system knows about the file

  bool operator==(const stamp&) const = default;
};

}  // namespace hopopen
