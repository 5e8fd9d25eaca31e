// SPDX-License-Identifier: MIT
#include "notify.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <exception>
#include <optional>
#include <string_view>

#include "output_signals.h"
#include "shown.h"

namespace hopopen {

const std::vector<std::string> NOTIFIERS = {"notify-send", "zenity", "kdialog", "xmessage"};

namespace {

constexpr const char* TITLE = "The link was not opened";
constexpr std::size_t WIDTH = 72;  // of a line where a program does not break lines well

// For programs that read escapes in their text.
std::string doubledBackslashes(const std::string& text) {
  std::string result;
  for (const char c : text) {
    result += c;
    if (c == '\\') {
      result += c;
    }
  }
  return result;
}

// Where a line of at most WIDTH bytes ends: at its last blank, or else in its only word, but
// not inside of a \xHH.
std::size_t endOfLine(std::string_view text) {
  if (const std::size_t blank = text.substr(0, WIDTH + 1).rfind(' ');
      blank != std::string_view::npos) {
    return blank;
  }
  const std::size_t escape = text.substr(0, WIDTH).rfind('\\');
  return escape != std::string_view::npos && escape + 4 > WIDTH ? escape : WIDTH;
}

// In lines of at most WIDTH bytes.
std::string wrapped(std::string_view text) {
  std::string result;
  while (text.size() > WIDTH) {
    const std::size_t end = endOfLine(text);
    result.append(text.substr(0, end)) += '\n';
    text.remove_prefix(text[end] == ' ' ? end + 1 : end);
  }
  return result.append(text);
}

bool isSet(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr && *value != '\0';
}

[[noreturn]] void run(const program& notifier, const std::string& message) noexcept {
  std::vector<std::string> words = notification(notifier.name, message);
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words) {
    arguments.push_back(word.data());
  }
  arguments.push_back(nullptr);
  restoreOutputSignals();
  execv(notifier.path.c_str(), arguments.data());
  _exit(127);
}

// True when the program ended well within two seconds, or is still there: a window that
// waits for its button.
bool shows(const program& notifier, const std::string& message) {
  constexpr int rounds = 40;
  constexpr timespec pause = {0, 50'000'000};
  const pid_t child = fork();
  if (child == 0) {
    run(notifier, message);
  }
  int status = 0;
  for (int i = 0; i < rounds; i++) {
    if (child < 0 || waitpid(child, &status, WNOHANG) != 0) {
      return child > 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }
    nanosleep(&pause, nullptr);
  }
  return true;
}

// Whoever started us may wait until our streams are closed.
void leaveStreams() {
  const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; stream++) {
    dup2(nothing, stream);
  }
}

// In a process of its own: shows it by the first program that shows the message.  One that runs
// out of memory ends without a word, as its parent has said it all.
[[noreturn]] void tellAside(const std::vector<program>& notifiers,
                            const std::string& message) noexcept {
  std::set_terminate([] { _exit(127); });
  setsid();
  leaveStreams();
  for (const program& notifier : notifiers) {
    if (shows(notifier, message)) {
      break;
    }
  }
  _exit(0);
}

}  // namespace

std::vector<std::string> notification(const std::string& program, const std::string& message) {
  const std::string text = withoutMarkup(message);
  if (program == "notify-send") {
    return {program, "--app-name=hopopen",    "--icon=hoplaunch", "--",
            TITLE,   doubledBackslashes(text)};
  }
  if (program == "zenity") {
    return {program,       "--error",
            "--no-markup", std::string("--title=") + TITLE,
            "--no-wrap",   "--text=" + wrapped(text)};
  }
  if (program == "kdialog") {
    return {program, "--title", TITLE, "--error", doubledBackslashes(wrapped(text))};
  }
  return {program, "-center", "-title", TITLE, wrapped(text)};
}

bool isOnDesktop() {
  return isatty(STDERR_FILENO) == 0 && (isSet("DISPLAY") || isSet("WAYLAND_DISPLAY"));
}

void notify(const std::string& message, const programFinder& programs) {
  std::vector<program> notifiers;
  for (const std::string& name : NOTIFIERS) {
    if (const auto found = programs.find(name)) {
      notifiers.push_back(*found);
    }
  }
  if (!notifiers.empty() && fork() == 0) {
    tellAside(notifiers, message);
  }
}

}  // namespace hopopen
