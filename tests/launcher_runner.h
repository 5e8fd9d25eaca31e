// Runs the built launcher as its users do, and looks at everything that comes of
// it: status, standard output and error, log, and what the viewer was given.
//
// The launcher runs in the folder `work()` of a workshop, with PATH naming the
// folder "bin" in there, in which the recording viewer stands under several names;
// so command lines and logs hold only short relative paths.  TZ is seven hours
// from UTC, so that a local time cannot pass for UTC.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace launcher {

using Strings = std::vector<std::string>;

inline std::string readFile(const std::filesystem::path& name) {
  std::ifstream in(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline void writeFile(const std::filesystem::path& name, const std::string& text) {
  std::ofstream out(name, std::ios::binary);
  out << text;
  ASSERT_TRUE(out.flush().good()) << name;
}

/// The pieces of a text in which each is followed by `end`.
inline Strings split(const std::string& text, char end) {
  Strings result;
  std::size_t start = 0;
  while (start < text.size()) {
    const std::size_t found = std::min(text.find(end, start), text.size());
    result.push_back(text.substr(start, found - start));
    start = found + 1;
  }
  return result;
}

/// A UTC time as the log writes it.
inline std::string stamp(std::time_t time) {
  std::tm fields{};
  gmtime_r(&time, &fields);
  char text[32];
  std::strftime(text, sizeof text, "%Y%m%dT%H%M%S", &fields);
  return text;
}

/// What the viewer recorded.
struct Recording {
  std::string path;  // by which it was executed
  Strings arguments;
  Strings environment;
  std::map<int, std::string> descriptors;
  std::string folder;
  pid_t pid = 0;
  std::map<std::string, std::string> status;  // such as "SigIgn" to "0000000000001000"
};

/// One command line.
struct Command {
  Strings arguments;                                  // without the command itself
  std::string command = "tools/hoplaunch";            // what the launcher is told its name is
  std::optional<Strings> environment = std::nullopt;  // instead of the usual one
  std::function<void()> prepare = [] {};  // runs in the child before it becomes the launcher
  bool noArgv = false;                    // pass a vector without any element
  const char* binary = HOPLAUNCH_BINARY;  // what is really started
};

/// What came of it.
struct Outcome {
  int status = -1;  // the exit status, or 1000 and the signal
  std::string out;
  std::string err;
  std::optional<Recording> viewer;
  pid_t pid = 0;
  std::time_t started = 0;
  std::time_t ended = 0;
};

class Workshop {
 public:
  Workshop() {
    std::string pattern = std::filesystem::temp_directory_path() / "hoplaunch-test-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) {
      ADD_FAILURE() << "no folder " << pattern;
      return;
    }
    m_root = pattern;
    std::filesystem::create_directories(work() / "bin");
    for (const char* name : {"vncviewer", "putty", "xyz", "back\\slash", "a=b"}) {
      std::filesystem::create_symlink(RECORDING_VIEWER, work() / "bin" / name);
    }
  }
  Workshop(const Workshop&) = delete;
  Workshop& operator=(const Workshop&) = delete;
  ~Workshop() {
    if (m_pid > 0) {
      kill(m_pid, SIGKILL);
      waitpid(m_pid, nullptr, 0);
    }
    std::error_code ignored;
    std::filesystem::remove_all(m_root, ignored);
  }

  /// The folder in which the launcher runs; holds "bin".
  std::filesystem::path work() const { return m_root / "work"; }

  /// The environment that a launch has unless told otherwise.
  Strings environment() const {
    Strings result{"PATH=bin", "TZ=AAA+7", "RECORDING=" + (m_root / "recording").string()};
    for (const char* name : {"ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS"}) {
      if (const char* value = std::getenv(name)) {
        result.push_back(std::string(name) + "=" + value);
      }
    }
    return result;
  }

  /// What stands in `work()` beside "bin".
  Strings files() const {
    Strings result;
    for (const auto& entry : std::filesystem::directory_iterator(work())) {
      if (entry.path().filename() != "bin") {
        result.push_back(entry.path().filename());
      }
    }
    std::sort(result.begin(), result.end());
    return result;
  }

  std::string log(const std::string& name = "log") const { return readFile(work() / name); }

  /// Starts the launcher.
  void start(const Command& command) {
    Strings texts = command.environment.value_or(environment());
    std::vector<char*> variables = pointers(texts);
    Strings words{command.command};
    words.insert(words.end(), command.arguments.begin(), command.arguments.end());
    std::vector<char*> arguments = pointers(words);
    if (command.noArgv) {
      arguments = {nullptr};
    }
    m_started = now();
    m_pid = fork();
    if (m_pid == 0) {
      redirect("/dev/null", 0);
      redirect(m_root / "out", 1);
      redirect(m_root / "err", 2);
      if (chdir(work().c_str()) != 0) {
        _exit(126);
      }
      command.prepare();
      execve(command.binary, arguments.data(), variables.data());
      perror("execve");
      _exit(127);
    }
    ASSERT_GT(m_pid, 0) << "fork failed";
  }

  pid_t pid() const { return m_pid; }

  /// Waits for the end of what `start` started.
  Outcome finish() {
    Outcome result;
    result.pid = m_pid;
    result.started = m_started;
    int status = 0;
    if (m_pid <= 0 || waitpid(m_pid, &status, 0) != m_pid) {
      ADD_FAILURE() << "nothing to wait for";
      return result;
    }
    result.ended = now();
    m_pid = 0;
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
    result.out = readFile(m_root / "out");
    result.err = readFile(m_root / "err");
    result.viewer = recording(m_root / "recording");
    return result;
  }

  Outcome run(const Command& command) {
    start(command);
    return finish();
  }

  /// Reads what a viewer recorded under `prefix`, and removes it.
  static std::optional<Recording> recording(const std::filesystem::path& prefix) {
    const auto part = [&](const char* name) { return prefix.string() + name; };
    if (!std::filesystem::exists(part(".process"))) {
      return std::nullopt;
    }
    Recording result;
    result.arguments = split(readFile(part(".arguments")), '\0');
    result.environment = split(readFile(part(".environment")), '\0');
    for (const std::string& line : split(readFile(part(".descriptors")), '\n')) {
      result.descriptors[std::atoi(line.c_str())] = line.substr(line.find(' ') + 1);
    }
    const Strings lines = split(readFile(part(".process")), '\n');
    for (const char* name : {".arguments", ".environment", ".descriptors", ".process"}) {
      std::filesystem::remove(part(name));
    }
    if (lines.size() < 3) {
      return std::nullopt;  // something ended the viewer on its way
    }
    result.path = lines.at(0);
    result.pid = std::atoi(lines.at(1).c_str());
    result.folder = lines.at(2);
    for (std::size_t index = 3; index < lines.size(); ++index) {
      const std::size_t colon = lines[index].find(":\t");
      result.status[lines[index].substr(0, colon)] = lines[index].substr(colon + 2);
    }
    return result;
  }

  /// `log` with the time stamp at its start, which must lie within the launch,
  /// replaced by "TIME".
  static std::string withoutStamp(const std::string& log, const Outcome& outcome) {
    const std::string found = log.substr(0, 15);
    EXPECT_LE(stamp(outcome.started), found) << "the log's time is not UTC or too early: " << log;
    EXPECT_GE(stamp(outcome.ended), found) << "the log's time is not UTC or too late: " << log;
    return "TIME" + log.substr(std::min<std::size_t>(log.size(), 15));
  }

 private:
  // By the clock that stamps the log: `time` may lag behind it by a tick.
  static std::time_t now() {
    return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  }

  static std::vector<char*> pointers(Strings& texts) {
    std::vector<char*> result;
    for (std::string& text : texts) {
      result.push_back(text.data());
    }
    result.push_back(nullptr);
    return result;
  }

  static void redirect(const std::filesystem::path& name, int descriptor) {
    const int file = open(name.c_str(), O_RDWR | O_CREAT | O_TRUNC, 0666);
    if (file < 0 || (file != descriptor && (dup2(file, descriptor) < 0 || close(file) != 0))) {
      _exit(125);
    }
  }

  std::filesystem::path m_root;
  pid_t m_pid = 0;
  std::time_t m_started = 0;
};

}  // namespace launcher
