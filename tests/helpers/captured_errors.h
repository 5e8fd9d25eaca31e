// SPDX-License-Identifier: MIT
// Catches what this process writes to standard error.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <cstdio>
#include <string>

/// Catches standard error from its construction to its destruction.
class capturedErrors {
 public:
  capturedErrors() : m_file(std::tmpfile()), m_saved(dup(STDERR_FILENO)) {
    std::fflush(stderr);
    dup2(fileno(m_file), STDERR_FILENO);
  }
  ~capturedErrors() {
    dup2(m_saved, STDERR_FILENO);
    close(m_saved);
    std::fclose(m_file);
  }
  capturedErrors(const capturedErrors&) = delete;
  capturedErrors& operator=(const capturedErrors&) = delete;

  /// All that was written so far.
  std::string str() const {
    std::string result(size(), '\0');
    const ssize_t count = pread(fileno(m_file), result.data(), result.size(), 0);
    result.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
    return result;
  }

  /// How many bytes were written so far.
  std::size_t size() const {
    struct stat details;
    if (fstat(fileno(m_file), &details) != 0) return 0;
    return static_cast<std::size_t>(details.st_size);
  }

 private:
  std::FILE* m_file;
  int m_saved;
};
