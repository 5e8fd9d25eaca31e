// SPDX-License-Identifier: MIT
#include "launcher_runner.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "execution.h"

namespace launcher {

using execution::pointers;
using execution::redirect;

namespace {

// By the clock that stamps the log: `time` may be a tick late.
std::time_t now() {
  return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
}

}  // namespace

std::string stamp(std::time_t time) {
  std::tm fields{};
  gmtime_r(&time, &fields);
  char text[32];
  std::strftime(text, sizeof text, "%Y%m%dT%H%M%S", &fields);
  return text;
}

Workshop::Workshop() {
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

Workshop::~Workshop() {
  if (m_pid > 0) {
    kill(m_pid, SIGKILL);
    waitpid(m_pid, nullptr, 0);
  }
  std::error_code ignored;
  std::filesystem::remove_all(m_root, ignored);
}

std::filesystem::path Workshop::work() const {
  return m_root / "work";
}

Strings Workshop::environment() const {
  Strings result{"PATH=bin", "TZ=AAA+7", "RECORDING=" + (m_root / "recording").string()};
  for (const char* name : {"ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS"}) {
    if (const char* value = std::getenv(name)) {
      result.push_back(std::string(name) + "=" + value);
    }
  }
  return result;
}

Strings Workshop::files() const {
  Strings result;
  for (const auto& entry : std::filesystem::directory_iterator(work())) {
    if (entry.path().filename() != "bin") {
      result.push_back(entry.path().filename());
    }
  }
  std::sort(result.begin(), result.end());
  return result;
}

std::string Workshop::log(const std::string& name) const {
  return readFile(work() / name);
}

void Workshop::start(const Command& command) {
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

Outcome Workshop::finish() {
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

Outcome Workshop::run(const Command& command) {
  start(command);
  return finish();
}

std::optional<Recording> Workshop::recording(const std::filesystem::path& prefix) {
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
    return std::nullopt;  // something ended the viewer early
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

std::string Workshop::withoutStamp(const std::string& log, const Outcome& outcome) {
  const std::string found = log.substr(0, 15);
  EXPECT_LE(stamp(outcome.started), found) << "the log's time is not UTC or too early: " << log;
  EXPECT_GE(stamp(outcome.ended), found) << "the log's time is not UTC or too late: " << log;
  return "TIME" + log.substr(std::min<std::size_t>(log.size(), 15));
}

}  // namespace launcher
