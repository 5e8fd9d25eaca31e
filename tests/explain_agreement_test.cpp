// SPDX-License-Identifier: MIT
// hopexplain and hoplaunch agree: 20,000 random command lines, with good, broken and odd
// files on PATH and with limits that some arguments exceed, are given to both programs.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "execution.h"
#include "json_reader.h"
#include "random_lines.h"

namespace explain_agreement_test {

namespace {

using randomly::Dice;
using randomly::Strings;

constexpr unsigned int shares = 4;
#if defined(EXPLAIN_AGREEMENT_LINES)
constexpr int linesOfAShare = EXPLAIN_AGREEMENT_LINES / static_cast<int>(shares);
#else
constexpr int linesOfAShare = 5000;
#endif

// One end of a pipe to a child, and the text that came out of it.
class Stream {
 public:
  Stream() {
    int ends[2];
    EXPECT_EQ(0, pipe2(ends, O_CLOEXEC));
    m_reading = ends[0];
    m_writing = ends[1];
    fcntl(m_writing, F_SETPIPE_SZ, 1 << 20);
  }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  ~Stream() {
    close(m_reading);
    closeWriting();
  }
  int writing() const { return m_writing; }
  int reading() const { return m_reading; }
  void closeWriting() {
    if (m_writing >= 0) {
      close(m_writing);
    }
    m_writing = -1;
  }
  // Reads the available bytes; false at the end.
  bool take() {
    char buffer[65536];
    const ssize_t count = read(m_reading, buffer, sizeof buffer);
    text.append(buffer, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return count > 0;
  }

  std::string text;

 private:
  int m_reading = -1;
  int m_writing = -1;
};

// Starts a program with descriptors 1, `at` and `and`.
pid_t start(const char* program, const Strings& words, const Strings& variables, Stream& first,
            int at, Stream* second) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  for (const int number : {0, 1, 2}) {
    posix_spawn_file_actions_addopen(&actions, number, "/dev/null", O_RDWR, 0);
  }
  posix_spawn_file_actions_adddup2(&actions, first.writing(), at);
  if (second != nullptr) {
    posix_spawn_file_actions_adddup2(&actions, second->writing(), 8);
  }
  pid_t pid = -1;
  EXPECT_EQ(0, posix_spawn(&pid, program, &actions, nullptr, execution::pointers(words).data(),
                           execution::pointers(variables).data()));
  posix_spawn_file_actions_destroy(&actions);
  first.closeWriting();
  if (second != nullptr) {
    second->closeWriting();
  }
  return pid;
}

int waitFor(pid_t pid) {
  int status = 0;
  EXPECT_EQ(pid, waitpid(pid, &status, 0));
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}

struct Launched {
  bool launched = false;
  bool badLine = false;
  Strings record;  // the path, and the arguments; empty from a shell that failed
};

bool saysFailed(const std::string& log) {
  const std::size_t last = log.rfind("\n_execv() failed; ");
  return last != log.npos && log.back() == '\n' && log.find('\n', last + 1) == log.size() - 1;
}

// The launcher logs into a pipe, so that the test can cut the five seconds of a failed launch.
Launched launch(const Strings& line, const Strings& variables) {
  Stream record;
  Stream log;
  Strings words{"hoplaunch", "-log=/dev/fd/8"};
  words.insert(words.end(), line.begin(), line.end());
  const pid_t pid = start(HOPLAUNCH_BINARY, words, variables, record, 9, &log);
  bool killed = false;
  pollfd ends[] = {{record.reading(), POLLIN, 0}, {log.reading(), POLLIN, 0}};
  while (ends[0].fd >= 0 || ends[1].fd >= 0) {
    poll(ends, 2, -1);
    if (ends[0].fd >= 0 && ends[0].revents != 0 && !record.take()) {
      ends[0].fd = -1;
    }
    if (ends[1].fd >= 0 && ends[1].revents != 0 && !log.take()) {
      ends[1].fd = -1;
    }
    if (!killed && saysFailed(log.text)) {
      killed = true;
      kill(pid, SIGKILL);
    }
  }
  const int status = waitFor(pid);
  Launched result;
  result.badLine = status == 255;
  result.launched = !saysFailed(log.text) && log.text.find("\nexecutable: ") != log.text.npos;
  for (std::size_t begin = 0; begin < record.text.size();) {
    const std::size_t end = record.text.find('\0', begin);
    result.record.push_back(record.text.substr(begin, end - begin));
    begin = end + 1;
  }
  return result;
}

struct Told {
  int status = 0;
  std::string json;
};

Told explain(const Strings& line, const Strings& variables) {
  Stream out;
  Strings words{"hopexplain", "-format=json", "-log=/dev/fd/8"};
  words.insert(words.end(), line.begin(), line.end());
  const pid_t pid = start(QUICK_HOPEXPLAIN, words, variables, out, 1, nullptr);
  while (out.take()) {
  }
  return {waitFor(pid), out.text};
}

// Compares the record of a viewer: its file, its name, and the arguments after the name.
// (The name is "rec" when it runs as an interpreter, and "./rec" when the shell runs it.)
void compareRecord(const Strings& record, const Json& json) {
  const std::string& file = json["file"].text;
  const Strings arguments = json["argumentsBytes"].bytes();
  const std::string& name = record.at(1);
  std::ptrdiff_t skipped = 1;
  if (name == "./rec") {
    EXPECT_EQ("/bin/sh", json["shell"].text);
    EXPECT_EQ(file, record.at(3));
    skipped = 3;
  } else {
    EXPECT_EQ("null", json["shell"].text);
#if !defined(SLOW) || defined(SANITIZED)  // an emulator takes an interpreter for the file
    EXPECT_EQ(file, record.at(0));
#endif
    if (name == "rec") {
      skipped = record.at(2) == "-mark" ? 3 : 2;
      skipped += record.begin()[skipped] == "chain" ? 1 : 0;
      EXPECT_EQ(file, record.begin()[skipped]);
    } else {
      EXPECT_EQ(arguments.at(0), name);
    }
  }
  const Strings rest(record.begin() + skipped + 1, record.end());
  EXPECT_TRUE(rest == Strings(arguments.begin() + 1, arguments.end()));
}

class Agreement : public testing::TestWithParam<unsigned int> {
 protected:
  Agreement() {
    std::string pattern = std::filesystem::temp_directory_path() / "explain-agreement-XXXXXX";
    EXPECT_NE(nullptr, mkdtemp(pattern.data()));
    m_folder = pattern;
    std::filesystem::current_path(m_folder);
  }
  ~Agreement() override {
    std::filesystem::current_path("/");
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
  }

 private:
  std::filesystem::path m_folder;
};

TEST_P(Agreement, OfHopexplainWithHoplaunchOnRandomCommandLines) {
  std::printf("seed %u, %d command lines\n", GetParam(), linesOfAShare);
  Dice dice(GetParam());
  randomly::makeFiles(dice, ECHO_VIEWER);
  int launches = 0;
  int records = 0;
  int refused = 0;
  for (int number = 0; number < linesOfAShare && !HasFailure(); number++) {
    const Strings line = randomly::someLine(dice);
    Strings variables{"TZ=UTC"};
    const std::optional<std::string> path = randomly::somePath(dice);
    if (path) {
      variables.push_back("PATH=" + *path);
    }
    rlimit stack = {};
    getrlimit(RLIMIT_STACK, &stack);
    stack.rlim_cur = (dice.one(2) ? 1024 : 512) * 1024;
    setrlimit(RLIMIT_STACK, &stack);
    SCOPED_TRACE(testing::Message() << "line " << number << ", PATH " << path.value_or("unset")
                                    << ": " << testing::PrintToString(line).substr(0, 2000));
    const Launched done = launch(line, variables);
    const Told told = explain(line, variables);
    ASSERT_EQ(done.badLine ? 255 : done.launched ? 0 : 1, told.status) << told.json.substr(0, 4000);
    if (told.json.empty()) {
      continue;
    }
    const Json json = JsonReader::read(told.json);
    EXPECT_EQ(done.launched ? "true" : "false", json["launches"].text);
    launches += done.launched ? 1 : 0;
    refused += !done.launched && json["program"].text != "null" ? 1 : 0;
    if (!done.record.empty()) {
      records++;
      compareRecord(done.record, json);
    }
  }
  std::printf("%d launches, %d recorded; %d programs that could not be executed\n", launches,
              records, refused);
  EXPECT_GT(records, linesOfAShare / 10);
  EXPECT_GT(refused, linesOfAShare / 25);
}

INSTANTIATE_TEST_SUITE_P(Shares, Agreement, testing::Range(1U, shares + 1));

}  // namespace

}  // namespace explain_agreement_test
