// SPDX-License-Identifier: MIT
// Helpers for a child that is about to become another program.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

namespace execution {

/// The vector for `execve` and its like.  It is valid as long as the texts exist.
inline std::vector<char*> pointers(const std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (const std::string& text : texts) {
    result.push_back(const_cast<char*>(text.c_str()));
  }
  result.push_back(nullptr);
  return result;
}

/// Makes `descriptor` the open file of `file`, and closes `file`.
inline void replace(int file, int descriptor) {
  if (file < 0 || (file != descriptor && (dup2(file, descriptor) < 0 || close(file) != 0))) {
    _exit(125);
  }
}

/// Opens a new or emptied file, or a device, as `descriptor`.
inline void redirect(const std::filesystem::path& name, int descriptor) {
  replace(open(name.c_str(), O_RDWR | O_CREAT | O_TRUNC, 0666), descriptor);
}

}  // namespace execution
