// SPDX-License-Identifier: MIT
// Reading the files of other programs, and noting those that are none to read.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "finding.h"
#include "key_file.h"

namespace hopopen {

/// Reads each file once.
class placeReader {
 public:
  /// What became of a file: its text, nothing because it is not there or no file to read, or
  /// an error.
  struct result {
    std::optional<std::string> text;
    std::string error;  ///< such as "cannot be read: Permission denied"
  };

  /// Reads a regular file of at most 1 MiB.  What else is there is noted, and has no error.
  const result& read(const std::string& path);

  /// The same for a list or a cache: nothing when there is none, and an error is noted, too.
  std::optional<keyFile> keys(const std::string& path);

  /// The files that were noted.
  const findings& noted() const { return m_noted; }

 private:
  void note(const std::string& path, const std::string& message);

  std::map<std::string, result> m_known;
  findings m_noted;
};

}  // namespace hopopen
