// SPDX-License-Identifier: MIT
// A fault of a file that a user or an administrator wrote, and where it is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace hopopen {

struct fault {
  std::string file;
  std::uint32_t line;    ///< from 1
  std::uint32_t column;  ///< from 1, in characters
  std::string message;   ///< printable ASCII, without a full stop

  /// "FILE:LINE:COLUMN: MESSAGE", printable ASCII.
  std::string lineOfText() const;
};

using faults = std::vector<fault>;

/// Sorts the faults of one file, those from `first` on, by their places.
void inOrder(faults& found, std::size_t first);

}  // namespace hopopen
