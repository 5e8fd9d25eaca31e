// SPDX-License-Identifier: MIT
// The viewer of the soak: reports what it got to descriptor 3, in one write.
//
// That is the length of the rest, each argument followed by a NUL, and for each further
// descriptor that is open a "+".

#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <string>

int main(int count, char** arguments) {
  std::string record(sizeof(std::uint32_t), '\0');
  for (int i = 0; i < count; i++) {
    record.append(arguments[i], std::strlen(arguments[i]) + 1);
  }
  for (int descriptor = 4; descriptor < 64; descriptor++) {
    if (fcntl(descriptor, F_GETFD) >= 0) {
      record += '+';
    }
  }
  const auto length = static_cast<std::uint32_t>(record.size() - sizeof(std::uint32_t));
  std::memcpy(record.data(), &length, sizeof length);
  // Writes to a pipe of less than PIPE_BUF are not torn.
  const ssize_t written = write(3, record.data(), record.size());
  return written == static_cast<ssize_t>(record.size()) ? 42 : 43;
}
