// SPDX-License-Identifier: MIT
#include "tunnel.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <vector>

#include "descriptor.h"
#include "fill.h"
#include "gateway.h"
#include "link.h"
#include "output_signals.h"
#include "route.h"
#include "shown.h"
#include "ssh_command.h"

namespace hopopen {

namespace {

constexpr std::size_t MOST_KEPT = 4096;  // of what ssh says

refusal failed(const std::string& message) {
  return faultOutside(code::TUNNEL, message);
}

[[noreturn]] void run(const program& ssh, std::vector<std::string>& words, int output) noexcept {
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words) {
    arguments.push_back(word.data());
  }
  arguments.push_back(nullptr);
  const int nothing = open("/dev/null", O_WRONLY | O_CLOEXEC);
  dup2(nothing, STDOUT_FILENO);
  dup2(output, STDERR_FILENO);
  restoreOutputSignals();
  execv(ssh.path.c_str(), arguments.data());
  const char* const error = std::strerror(errno);
  [[maybe_unused]] const ssize_t ignored = write(STDERR_FILENO, error, std::strlen(error));
  _exit(127);
}

// What a terminal may be shown of what ssh says.
std::string harmless(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const std::size_t end = text.find_first_of("\r\n");
    result += printable(text.substr(0, end));
    if (end == std::string_view::npos) {
      break;
    }
    result.append(text[end] == '\n' ? 1 : 0, '\n');
    text.remove_prefix(end + 1);
  }
  return result;
}

// What ssh says, of which the end is kept.
class listener {
 public:
  listener(int from, bool aloud) : m_from(from), m_aloud(aloud) {}

  // Reads what is there.  False at the end.
  bool read() {
    char buffer[1024];
    const ssize_t count = ::read(m_from, buffer, sizeof buffer);
    if (count <= 0) {
      return count < 0 && errno == EINTR;
    }
    const std::string_view said(buffer, static_cast<std::size_t>(count));
    m_said += said;
    m_said.erase(0, m_said.size() - std::min(m_said.size(), MOST_KEPT));
    if (m_aloud) {
      const std::string shown = harmless(said);
      [[maybe_unused]] const ssize_t ignored = write(STDERR_FILENO, shown.data(), shown.size());
    }
    return true;
  }
  // Waits a moment for more.
  bool waits(int milliseconds) const {
    pollfd one{m_from, POLLIN, 0};
    return poll(&one, 1, milliseconds) > 0;
  }
  const std::string& said() const { return m_said; }

 private:
  int m_from;
  bool m_aloud;
  std::string m_said;
};

// Waits for the child, and reads what it says meanwhile.  What it started itself may keep the
// pipe open for as long as the tunnel is there.
int waitFor(pid_t child, listener& to) {
  constexpr int pause = 50;
  constexpr int MOST_LEFT = 64;  // more than a pipe holds is of others
  int status = 0;
  bool open = true;
  while (open) {
    open = !to.waits(pause) || to.read();
    const pid_t ended = open ? waitpid(child, &status, WNOHANG) : 0;
    if (ended != 0) {
      for (int i = 0; i < MOST_LEFT && to.waits(0) && to.read(); i++) {
      }
      return status;
    }
  }
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

// Starts ssh and waits for it; its status, or nothing when it could not be started.
std::optional<int> runSsh(const program& ssh, std::vector<std::string> words, bool aloud,
                          std::string& said) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) {
    return {};
  }
  const descriptor reading(ends[0]);
  descriptor writing(ends[1]);
  const pid_t child = fork();
  if (child == 0) {
    run(ssh, words, writing.number());
  }
  if (child < 0) {
    return {};
  }
  writing.closed();
  listener to(reading.number(), aloud);
  const int status = waitFor(child, to);
  said = to.said();
  return status;
}

refusal noTunnel(const gateway& through, const std::string& why) {
  return failed("The tunnel through " + shownWord(through.text()) + " could not be made" +
                (why.empty() ? "" : ": " + why) + ". Type \"" + loginCommand(through) +
                "\" in a terminal, which shows what is wrong or asks what it must know.");
}

}  // namespace

std::string lastLine(std::string_view text) {
  constexpr std::string_view blanks = " \t\r\n";
  const std::size_t last = text.find_last_not_of(blanks);
  if (last == std::string_view::npos) {
    return {};
  }
  text = text.substr(0, last + 1);
  const std::size_t before = text.find_last_of("\r\n");
  return std::string(before == std::string_view::npos ? text : text.substr(before + 1));
}

verdict makeTunnel(const opening& decided, const programFinder& programs,
                   const tunnelFolder& folder, bool aloud) {
  const auto ssh = programs.find("ssh");
  if (!ssh) {
    return failed(
        "The machine is reached through an ssh gateway, and ssh is not installed. Install the "
        "package openssh-client.");
  }
  const gateway& through = *decided.way->through;
  std::string said;
  const auto status = runSsh(
      *ssh, sshCommand(through, {*decided.what.machine, *decided.filled->port}, folder.socket()),
      aloud, said);
  if (!status) {
    return noTunnel(through, std::strerror(errno));
  }
  if (*status != 0 || !folder.hasSocket()) {
    const std::string line = lastLine(said);
    return noTunnel(through, line.empty() ? line : "ssh says " + quoted(line, SHORT));
  }
  return {};
}

}  // namespace hopopen
