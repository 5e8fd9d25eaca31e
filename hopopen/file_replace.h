// SPDX-License-Identifier: MIT
// Replacing a file by a new one, whole: whoever reads it meets the old one or the new one.
//
// Everything here leaves the number of the error in `errno` when it fails.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "descriptor.h"

namespace hopopen {

/// Makes the folders on the way to the file, each for its owner alone.
bool makeFolders(const std::string& path);

/// The path at the end of the symbolic links, also when nothing is there yet.
std::optional<std::string> followed(std::string path);

/// A lock that other processes wait for, on a file next to the one that it protects.  It is
/// given up when it is destroyed, and by whatever ends the process.  The file stays.
class fileLock {
 public:
  /// Waits for the lock, and makes its file.
  explicit fileLock(const std::string& path);
  /// False when the lock cannot be had.
  bool isHeld() const { return m_held; }

 private:
  descriptor m_file;
  bool m_held;
};

enum class replacement : std::uint8_t {
  DONE,
  FAILED,   ///< the old file is there
  UNSYNCED  ///< the new file is there, but a power failure may bring back the old one
};

/// Writes a new file next to the one at `path`, and renames it over that one.
/// REQUIRES: the caller holds a lock for the file.
replacement replaceFile(const std::string& path, const std::string& text);

}  // namespace hopopen
