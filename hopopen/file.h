// SPDX-License-Identifier: MIT
// Reading the files that users and administrators write.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "stamp.h"

namespace hopopen {

/// The most bytes that are read of a file: far more than anybody writes by hand, and little
/// enough to be read in passing.
constexpr std::size_t LONGEST_FILE = 1 << 20;

/// What became of reading a file: its text, nothing because it is not there, or an error.
struct fileText {
  std::string text;
  bool found = false;  ///< false when there is no such file
  stamp identity;      ///< of the file that the text is from
  std::string error;   ///< empty when all is well; else printable ASCII without a full stop
};

/// Reads a whole regular file of at most LONGEST_FILE bytes.  Whatever else is at the
/// path, such as a pipe or a terminal, is an error, and nothing is waited for.
///
///     readFile("/etc/shadow").error   // "cannot be read: Permission denied"
fileText readFile(const std::string& path);

/// The names of what is in a folder, in their order.  `error` is empty when all is well, also
/// if there is no such folder; else as above.
std::vector<std::string> namesIn(const std::string& folder, std::string& error);

/// What distinguishes the file at the path from others; nothing when there is none.
std::optional<stamp> stampOf(const std::string& path);

}  // namespace hopopen
