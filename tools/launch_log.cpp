// SPDX-License-Identifier: MIT
#include "launch_log.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

launchLog::launchLog(const std::string& path) {
  if (path.empty()) {
    return;
  }
  // A pipe without a reader, or a full one, must not keep us waiting.
  constexpr int flags =
      O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK | O_LARGEFILE;
  m_descriptor = open(path.c_str(), flags, 0666);
  if (m_descriptor >= 0 && m_descriptor <= STDERR_FILENO) {
    // Not in place of a standard stream that we were started without.
    const int moved = fcntl(m_descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    close(m_descriptor);
    m_descriptor = moved;
  }
}

launchLog::~launchLog() {
  if (isOpen()) {
    close(m_descriptor);
  }
}

void launchLog::line(std::initializer_list<std::string_view> pieces) const {
  if (!isOpen()) {
    return;
  }
  std::string text;
  for (const std::string_view piece : pieces) {
    text += piece;
  }
  text += '\n';
  writeAll(text);
}

void launchLog::fixedLine(std::string_view text) const {
  if (isOpen()) {
    writeAll(text);
  }
}

void launchLog::writeAll(std::string_view text) const {
  while (!text.empty()) {
    const ssize_t written = write(m_descriptor, text.data(), text.size());
    if (written > 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (written == 0 || errno != EINTR) {
      return;
    }
  }
}
