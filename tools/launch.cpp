// The launch itself: decide, log, become the viewer.

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
#include "html_escape.h"
#include "threading.h"
#include "uri.h"

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
    if (m_descriptor >= 0) {
      close(m_descriptor);
    }
  }

  // Writes a line of the given pieces.
  void line(std::initializer_list<std::string_view> pieces) const {
    if (m_descriptor < 0) {
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

// The viewer for a URI: the option if given, else the one registered for the
// scheme, else none.
std::string viewer(const URI& uri, const assocList& params) {
  const std::string& program = params["program"];
  if (!program.empty()) {
    return program;
  }
  const assocList programs = PROGRAMS.list();
  return programs[uri.scheme()];
}

// Becomes the program, or returns the error number.
int become(const char* program, char** arguments) {
  semaphoreRelease();  // nothing that runs at exit survives the exec
  execvp(program, arguments);
  return errno;
}

}  // namespace

const char* stubName(const char* path) {
  const char* result = path;
  for (const char* p = path; *p != '\0'; p++) {
    if (*p == '/' || *p == '\\') {
      result = p + 1;
    }
  }
  return result;
}

int processAug(const std::vector<std::string>& args, const assocList& params) {
  const std::string& given = args.front();
  // The query values are decoded once more by the parser: links rely on it.
  URI uri(URIunEscape(given));
  const launchLog log(params["log"]);
  if (!uri.okay()) {
    log.line({"Bad URI \"", given, "\""});
    return -1;
  }
  log.line({DateTime::now(0).format(DS_ISO8601), ": URI = ", given});
  const std::string program = viewer(uri, params);
  if (program.empty()) {
    log.line({"no executable for scheme ", uri.scheme()});
    return -1;
  }
  log.line({"executable: ", program});
  const std::string& portArg = params["portArg"];
  char** const arguments = uri.args(stubName(program.c_str()), 1, args_style(params["style"]),
                                    portArg.empty() ? nullptr : portArg.c_str());
  for (char** argument = arguments; *argument != nullptr; argument++) {
    log.line({"\t", quote(*argument)});
  }
  const int error = become(program.c_str(), arguments);
  log.line({"_execv() failed; path = ", program, " errno = ", int2decimal(error), " ",
            std::strerror(error)});
  (DateTime::now(0) + 5.0).wait();
  return -1;
}
