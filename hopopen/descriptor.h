// SPDX-License-Identifier: MIT
// An open file of this process.
#pragma once

#include <unistd.h>

#include <cerrno>

namespace hopopen {

/// A descriptor that is closed at the end of its scope.
class descriptor {
 public:
  explicit descriptor(int number) : m_number(number) {}
  ~descriptor() {
    const int error = errno;  // of the call that failed, for the message
    if (m_number >= 0) {
      close(m_number);
    }
    errno = error;
  }
  descriptor(const descriptor&) = delete;
  descriptor& operator=(const descriptor&) = delete;

  bool isOpen() const { return m_number >= 0; }
  int number() const { return m_number; }
  /// False when the system reports an error.  The descriptor is closed all the same.
  bool closed() {
    const int number = m_number;
    m_number = -1;
    return close(number) == 0 || errno == EINTR;
  }

 private:
  int m_number;
};

}  // namespace hopopen
