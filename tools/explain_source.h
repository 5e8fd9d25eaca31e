// SPDX-License-Identifier: MIT
// A file that is looked into, for what an execution would make of it.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <string>

/// A file opened for reading, which waits for nothing and is closed when another program is
/// executed.
class sourceFile {
 public:
  explicit sourceFile(const std::string& path)
      : m_descriptor(open64(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK)) {}
  sourceFile(const sourceFile&) = delete;
  sourceFile& operator=(const sourceFile&) = delete;
  ~sourceFile() {
    if (okay()) {
      close(m_descriptor);
    }
  }

  /// False when it could not be opened.
  bool okay() const { return m_descriptor >= 0; }
  /// Reads what is there, and returns whether that was all of `size` bytes.
  bool read(void* to, std::size_t size, std::uint64_t offset) const {
    const ssize_t count = pread64(m_descriptor, to, size, static_cast<off64_t>(offset));
    return count >= 0 && static_cast<std::size_t>(count) == size;
  }

 private:
  int m_descriptor;
};
