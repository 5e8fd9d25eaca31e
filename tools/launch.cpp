// The launch itself: log, and become the viewer.

#include "launch.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <initializer_list>
#include <string_view>

#include "conversion.h"
#include "datetime.h"
#include "plan.h"
#include "threading.h"

namespace {

// Ignores a signal for a scope.
class signalIgnored {
 public:
  explicit signalIgnored(int sig) : m_signal(sig), m_previous(std::signal(sig, SIG_IGN)) {}
  signalIgnored(const signalIgnored&) = delete;
  signalIgnored& operator=(const signalIgnored&) = delete;
  ~signalIgnored() { std::signal(m_signal, m_previous); }

 private:
  int m_signal;
  void (*m_previous)(int);
};

// A log that is appended to, one system call a line, so that launches side by side
// do not tear each other's lines.  Whatever goes wrong with it stops nothing, and
// its descriptor does not reach the viewer.
class launchLog {
 public:
  explicit launchLog(const std::string& path) {
    if (path.empty()) {
      return;
    }
    m_descriptor = open(path.c_str(),
                        O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_LARGEFILE, 0666);
    if (m_descriptor >= 0 && m_descriptor <= STDERR_FILENO) {
      // Not in the place of a standard stream that we were started without.
      const int moved = fcntl(m_descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
      close(m_descriptor);
      m_descriptor = moved;
    }
  }
  launchLog(const launchLog&) = delete;
  launchLog& operator=(const launchLog&) = delete;
  ~launchLog() {
    if (isOpen()) {
      close(m_descriptor);
    }
  }

  bool isOpen() const { return m_descriptor >= 0; }

  // Writes a line of the given pieces.
  void line(std::initializer_list<std::string_view> pieces) const {
    if (!isOpen()) {
      return;
    }
    std::string text;
    for (const std::string_view piece : pieces) {
      text += piece;
    }
    text += '\n';
    // A pipe whose reader has gone, or a limit on the size of files, would end us.
    const signalIgnored brokenPipe(SIGPIPE);
    const signalIgnored fileTooLarge(SIGXFSZ);
    writeAll(text);
  }

 private:
  void writeAll(std::string_view text) const {
    while (!text.empty()) {
      const ssize_t written = write(m_descriptor, text.data(), text.size());
      if (written > 0) {
        text.remove_prefix(static_cast<std::size_t>(written));
      } else if (written == 0 || errno != EINTR) {
        return;
      }
    }
  }

  int m_descriptor = -1;
};

// Becomes the program, or returns the error number.
int become(const char* program, char** arguments) {
  semaphoreRelease();  // nothing that runs at exit survives the exec
  execvp(program, arguments);
  return errno;
}

}  // namespace

int processAug(const std::vector<std::string>& args, const assocList& params) {
  const std::string& given = args.front();
  const launchPlan plan(given, params);
  const launchLog log(params["log"]);
  if (!plan.uri.okay()) {
    log.line({"Bad URI \"", given, "\""});
    return -1;
  }
  if (log.isOpen()) {
    log.line({DateTime::now(0).format(DS_ISO8601), ": URI = ", given});
  }
  if (plan.program.empty()) {
    log.line({"no executable for scheme ", plan.uri.scheme()});
    return -1;
  }
  log.line({"executable: ", plan.program});
  for (char** argument = plan.arguments; log.isOpen() && *argument != nullptr; argument++) {
    log.line({"\t", quote(*argument)});
  }
  const int error = become(plan.program.c_str(), plan.arguments);
  log.line({"_execv() failed; path = ", plan.program, " errno = ", int2decimal(error), " ",
            std::strerror(error)});
  (DateTime::now(0) + 5.0).wait();
  return -1;
}
