// SPDX-License-Identifier: MIT
// Runs the built launcher as its users do, and looks at every result: status,
// standard output and error, log, and what the viewer got.
//
// The launcher runs in the folder `work()` of a workshop.  PATH is the folder "bin" in
// that folder, which has the recording viewer under several names.  So command lines and
// logs hold only short relative paths.  TZ is seven hours from UTC, so that no local time
// looks like UTC.
#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <ctime>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "texts.h"

namespace launcher {

using Strings = std::vector<std::string>;

/// A UTC time as the log writes it.
std::string stamp(std::time_t time);

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
  std::string command = "tools/hoplaunch";            // the name that the launcher gets
  std::optional<Strings> environment = std::nullopt;  // instead of the usual one
  std::function<void()> prepare = [] {};  // runs in the child before it becomes the launcher
  bool noArgv = false;                    // pass a vector without any element
  const char* binary = HOPLAUNCH_BINARY;  // the program that really starts
};

/// The result of a launch.
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
  Workshop();
  Workshop(const Workshop&) = delete;
  Workshop& operator=(const Workshop&) = delete;
  ~Workshop();

  /// The folder in which the launcher runs.  It holds "bin".
  std::filesystem::path work() const;

  /// The environment that a launch has unless a test gives another.
  Strings environment() const;

  /// The names in `work()` other than "bin".
  Strings files() const;

  std::string log(const std::string& name = "log") const;

  /// Starts the launcher.
  void start(const Command& command);

  pid_t pid() const { return m_pid; }

  /// Waits until the process that `start` started ends.
  Outcome finish();

  Outcome run(const Command& command);

  /// Reads the recording of a viewer under `prefix`, and removes it.
  static std::optional<Recording> recording(const std::filesystem::path& prefix);

  /// `log` with the time stamp at its start, which must lie within the launch,
  /// replaced by "TIME".
  static std::string withoutStamp(const std::string& log, const Outcome& outcome);

 private:
  std::filesystem::path m_root;
  pid_t m_pid = 0;
  std::time_t m_started = 0;
};

}  // namespace launcher
