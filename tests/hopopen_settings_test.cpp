// SPDX-License-Identifier: MIT
// Changes of the settings by the program: by many processes at once, and by one that is
// killed at each of its system calls.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "hopopen_runner.h"

namespace hopopen_settings_test {

namespace {

using door::Machine;
using door::Outcome;
using Texts = std::vector<std::string>;

/// A definition that opens a hundred schemes, s0 to s99.
std::string manySchemes() {
  std::string result = "name = \"Many\"\nprograms = [\"many\"]\narguments = []\nschemes = [";
  for (int i = 0; i < 100; i++) {
    result += (i == 0 ? "\"s" : ", \"s") + std::to_string(i) + "\"";
  }
  return result + "]\n";
}

}  // namespace

TEST(ChangesOfSettings, LoseNothingWhenTwoHundredProgramsMakeThemAtOnce) {
  const Machine machine;
  machine.define("many", manySchemes());
  machine.set("# mine\n[trust]\nhosts = [\n  \"first.example\", # one\n]\n");
  int start[2];
  ASSERT_EQ(pipe(start), 0);
  std::vector<pid_t> children;
  for (int i = 0; i < 200; i++) {
    children.push_back(fork());
    if (children.back() == 0) {
      close(start[1]);
      char nothing;
      if (read(start[0], &nothing, 1) != 0) {  // until the other end is closed
        _exit(99);
      }
      const std::string number = std::to_string(i / 2);
      const std::string home = "HOME=" + machine.path("home");
      const std::string config = "XDG_CONFIG_HOME=" + machine.path("config");
      const std::string data = "XDG_DATA_DIRS=" + machine.path("share");
      const char* environment[] = {home.c_str(), config.c_str(), data.c_str(), nullptr};
      const std::string word = i % 2 == 0 ? "h" + number + ".example" : "s" + number;
      const char* trust[] = {HOPOPEN, "--trust", word.c_str(), nullptr};
      const char* use[] = {HOPOPEN, "--use", "many", word.c_str(), nullptr};
      execve(HOPOPEN, const_cast<char* const*>(i % 2 == 0 ? trust : use),
             const_cast<char* const*>(environment));
      _exit(98);
    }
  }
  close(start[0]);
  close(start[1]);
  for (const pid_t child : children) {
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }
  const std::string text = machine.read(Machine::settings());
  EXPECT_TRUE(text.starts_with("# mine\n[trust]\nhosts = [\n  \"first.example\", # one\n")) << text;
  EXPECT_EQ(countOf(text, "\n"), 207U) << text;
  EXPECT_EQ(countOf(text, "\n[use]\n"), 1U) << text;
  for (int i = 0; i < 100; i++) {
    const std::string number = std::to_string(i);
    EXPECT_EQ(countOf(text, "\n  \"h" + number + ".example\",\n"), 1U) << number;
    EXPECT_EQ(countOf(text, "\ns" + number + " = \"many\"\n"), 1U) << number;
  }
}

TEST(ChangesOfSettings, LeaveTheOldFileOrTheNewOneWhereverTheProgramIsKilled) {
#ifdef COUNTED
  GTEST_SKIP() << "The file of the counts would be cut, too.";
#endif
  if (access("/usr/bin/strace", X_OK) != 0) {
    GTEST_SKIP() << "There is no strace.";
  }
  const Machine machine;
  machine.plain();
  const std::string old = "# mine\n[use]\nvnc = \"a\"\n";
  const std::string made = old + "\n[trust]\nhosts = [\"h.example\"]\n";
  const std::string next = "# mine\n[use]\nvnc = \"plain\"\n";
  int kills = 0;
  // The processor decides which of those with a question mark exist.
  const std::vector<std::string> calls{
#ifndef SANITIZED  // sanitizers make many of these themselves
      "openat", "read",
      "close",
#endif
      "flock",  "?unlink,?unlinkat",
      "fchmod", "write",
      "fsync",  "?rename,?renameat,?renameat2"};
  for (const std::string& call : calls) {
    for (int number = 1;; number++) {
      machine.set(old);
      const Outcome outcome = machine.call(
          {.arguments = {"--trust", "h.example"},
           // A search for leaks cannot be traced.
           .under = {"/usr/bin/strace", "-qq", "-E", "ASAN_OPTIONS=detect_leaks=0", "-o",
                     "/dev/null", "-e", "trace=" + call, "-e",
                     "inject=" + call + ":signal=KILL:when=" + std::to_string(number)}});
      const std::string text = machine.read(Machine::settings());
      ASSERT_TRUE(text == old || text == made) << call << number << text;
      // No lock is held, and no leftovers are in the way.
      const Outcome after = machine.run({"--use", "plain"});
      ASSERT_EQ(after.status, 0) << call << number << after.err;
      const bool trusted = text == made;
      ASSERT_EQ(machine.read(Machine::settings()),
                trusted ? next + "\n[trust]\nhosts = [\"h.example\"]\n" : next)
          << call << number;
      ASSERT_FALSE(machine.has(Machine::settings() + ".unfinished")) << call << number;
      if (outcome.status == 0) {
        ASSERT_EQ(text, made) << call << number;
        break;
      }
      kills++;
      ASSERT_LT(number, 300) << call;
    }
  }
  EXPECT_GT(kills, 20);
}

}  // namespace hopopen_settings_test
