// SPDX-License-Identifier: MIT
#include "explain_output.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace {

// 0, or the error number at which writing ended.  Whoever reads may take their time, even
// where the descriptor is not to block.
int writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(descriptor, text.data(), text.size());
    if (written > 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (written == 0) {
      return EIO;
    } else if (errno == EAGAIN) {
      pollfd ready = {descriptor, POLLOUT, 0};
      poll(&ready, 1, -1);
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

}  // namespace

int printed(const std::string& text, int status) {
  const int error = writeAll(STDOUT_FILENO, text);
  if (error == 0) {
    return status;
  }
  std::fprintf(stderr, "hopexplain: Cannot write to standard output: %s\n", std::strerror(error));
  return OUTPUT_LOST;
}
