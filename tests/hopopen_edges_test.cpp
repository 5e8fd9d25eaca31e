// SPDX-License-Identifier: MIT
// What may happen around hopopen: logs that would make it wait, output that nobody
// reads, memory that runs out.

#include <sched.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>

#include "blocking_logs.h"
#include "hopopen_runner.h"
#include "soft_limit.h"

namespace hopopen_edges_test {

namespace {

using door::Machine;
using door::Outcome;
using door::Strings;

void expectLaunch(const Outcome& outcome) {
  EXPECT_EQ(42, outcome.status);
  EXPECT_EQ("", outcome.err);
  ASSERT_TRUE(outcome.viewer);
  EXPECT_EQ((Strings{"plain", "h"}), outcome.viewer->arguments);
  EXPECT_EQ("0000000000000000", outcome.viewer->status.at("SigIgn"));
}

// --- The log ---------------------------------------------------------------

TEST(OpeningLog, ThatIsANamedPipeWithoutAReaderIsNone) {
  const Machine machine;
  machine.plain();
  ASSERT_EQ(0, mkfifo(machine.path("work/log").c_str(), 0600));
  expectLaunch(machine.call({.arguments = {"--log=log", "vnc://h"}, .prepare = limitTheWait}));
}

TEST(OpeningLog, ThatIsANamedPipeWithAReaderIsWritten) {
  const Machine machine;
  machine.plain();
  const readPipe log(machine.path("work/log"));
  expectLaunch(machine.call({.arguments = {"--log=log", "vnc://h"}, .prepare = limitTheWait}));
  EXPECT_TRUE(log.written().ends_with("\n\t\"plain\"\n\t\"h\"\n"));
}

TEST(OpeningLog, ThatIsAFullPipeLosesItsLines) {
  const Machine machine;
  machine.plain();
  const watchedPipe full(0);
  expectLaunch(machine.call({.arguments = {"--log=/dev/fd/9", "vnc://h"}, .prepare = [&full] {
                               limitTheWait();
                               full.pass(9);
                             }}));
  EXPECT_EQ("", full.written());
}

TEST(OpeningLog, ThatIsAStoppedTerminalStopsNothing) {
  const Machine machine;
  machine.plain();
  const stoppedTerminal terminal;
  expectLaunch(machine.call(
      {.arguments = {"--log=" + terminal.name(), "vnc://h"}, .prepare = limitTheWait}));
}

// --- Signals and output ----------------------------------------------------

// Gives hopopen the writing end of a pipe that nobody reads.
void closedPipe(int descriptor) {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0 || dup2(ends[1], descriptor) != descriptor || close(ends[0]) != 0 ||
      signal(SIGPIPE, SIG_DFL) == SIG_ERR) {
    _exit(124);
  }
}

void noFileMayGrow() {
  if (!setSoftLimit(RLIMIT_FSIZE, 0) || signal(SIGXFSZ, SIG_DFL) == SIG_ERR) {
    _exit(124);
  }
}

TEST(OpeningOutput, OfALaunchMayBeLost) {
  const Machine machine;
  machine.plain();
  machine.define("broken", "name =\n");  // standard error reports it
  const Outcome outcome = machine.call({.arguments = {"vnc://h"}, .prepare = [] {
                                          closedPipe(1);
                                          closedPipe(2);
                                        }});
  EXPECT_EQ(42, outcome.status);
  ASSERT_TRUE(outcome.viewer);
  EXPECT_EQ("0000000000000000", outcome.viewer->status.at("SigIgn"));
  EXPECT_EQ("0000000000000000", outcome.viewer->status.at("SigCgt"));
}

TEST(OpeningOutput, OfARefusalMayBeLost) {
  const Machine machine;
  machine.plain();
  EXPECT_EQ(2, machine.call({.arguments = {"vnc://h:0"}, .prepare = [] { closedPipe(2); }}).status);
  EXPECT_EQ(2, machine.call({.arguments = {"vnc://h:0"}, .prepare = noFileMayGrow}).status);
}

// The signals are as they were given when the viewer is executed, and ignored again after it.
TEST(OpeningOutput, OfAStartThatFailsMayBeLost) {
  const Machine machine;
  machine.define("plain", door::PLAIN);
  machine.write("bin/plain", "no program\n");
  std::filesystem::permissions(machine.path("bin/plain"), std::filesystem::perms::owner_all);
  EXPECT_EQ(3, machine.call({.arguments = {"vnc://h"}, .prepare = [] { closedPipe(2); }}).status);
  EXPECT_EQ(3,
            machine.call({.arguments = {"--log=log", "vnc://h"}, .prepare = noFileMayGrow}).status);
}

TEST(OpeningOutput, ThatIsIgnoredStaysSoForTheViewer) {
  const Machine machine;
  machine.plain();
  const Outcome outcome = machine.call({.arguments = {"--log=/dev/full", "vnc://h"}, .prepare = [] {
                                          signal(SIGPIPE, SIG_IGN);
                                          signal(SIGXFSZ, SIG_IGN);
                                        }});
  ASSERT_TRUE(outcome.viewer);
  EXPECT_EQ("0000000001001000", outcome.viewer->status.at("SigIgn"));
}

TEST(OpeningOutput, OfAnAnswerThatIsLostIsStatusTwo) {
  const Machine machine;
  machine.plain();
  const struct {
    const char* what;
    std::function<void()> prepare;
    const char* error;
  } cases[] = {
      {"a full disk",
       [] {
         const int full = open("/dev/full", O_WRONLY);
         if (full < 0 || dup2(full, 1) != 1) _exit(124);
       },
       "No space left on device"},
      {"no standard output", [] { close(1); }, "Bad file descriptor"},
      {"a closed pipe", [] { closedPipe(1); }, "Broken pipe"},
  };
  for (const auto& one : cases) {
    for (const Strings& arguments :
         {Strings{"--dry-run", "vnc://h"}, Strings{"--dry-run", "--format=json", "vnc://h"},
          Strings{"--dry-run", "other://h"}, Strings{"--list"}, Strings{"--check"},
          Strings{"--help"}, Strings{"--version"}}) {
      SCOPED_TRACE(std::string(one.what) + ", " + arguments.front());
      const Outcome outcome = machine.call({.arguments = arguments, .prepare = one.prepare});
      EXPECT_EQ(2, outcome.status);
      EXPECT_EQ(std::string("hopopen: The output could not be written: ") + one.error + ".\n",
                outcome.err);
    }
  }
  const Outcome limited =
      machine.call({.arguments = {"--dry-run", "vnc://h"}, .prepare = noFileMayGrow});
  EXPECT_EQ(2, limited.status);
}

// --- Memory ----------------------------------------------------------------

constexpr char noMemory[] =
    "hopopen: There is not enough memory. Close some programs, and try again. (start)\n";

// Limits the addresses to so many bytes.
std::function<void()> withAddresses(rlim_t bytes) {
  return [bytes] {
    const rlimit noCore{0, 0};
    if (setrlimit(RLIMIT_CORE, &noCore) != 0 || !setSoftLimit(RLIMIT_AS, bytes)) {
      _exit(124);
    }
  };
}

// A machine with large files, so that there are many places at which memory runs out.
void fill(const Machine& machine) {
  machine.plain();
  std::string large = door::PLAIN;
  for (int count = 0; count < 3000; ++count) {
    large += "# " + std::string(100, 'x') + "\n";
  }
  for (int count = 0; count < 8; ++count) {
    machine.define("large" + std::to_string(count), large);
  }
}

TEST(OpeningMemory, ThatRunsOutIsARefusal) {
#ifdef SANITIZED
  GTEST_SKIP() << "sanitizers use addresses without bound";
#endif
  const Machine machine;
  fill(machine);
  int refusals = 0;
  int launches = 0;
  for (rlim_t size = 2U << 20; size < 40U << 20 && launches < 3; size += 16U << 10) {
    SCOPED_TRACE(std::to_string(size) + " bytes");
    const Outcome outcome =
        machine.call({.arguments = {"--log=log", "vnc://h"}, .prepare = withAddresses(size)});
    const std::string log = machine.read("work/log");
    if (outcome.status == 3) {
      ++refusals;
      EXPECT_EQ(noMemory, outcome.err);
      EXPECT_FALSE(outcome.viewer);
      EXPECT_TRUE(log.ends_with(noMemory)) << log;
    } else if (log.ends_with("\t\"h\"\n")) {
      ++launches;  // of a viewer that may be too large for the limit itself
    } else {
      EXPECT_TRUE(refusals == 0 && outcome.status >= 127)
          << "status " << outcome.status << ", " << outcome.err;
    }
  }
  EXPECT_GE(refusals, 10);
  EXPECT_EQ(3, launches);
}

// With a little more than what hopopen has, somebody can be told.
TEST(OpeningMemory, ThatRunsOutIsShownOnADesktop) {
#ifdef SANITIZED
  GTEST_SKIP() << "sanitizers use addresses without bound";
#endif
  const Machine machine;
  fill(machine);
  machine.script("notify-send",
                 "for word; do :; done\necho \"$word\" >> " + machine.path("shown") + "\n");
  int refusals = 0;
  for (rlim_t size = 2U << 20; size < 40U << 20; size += 64U << 10) {
    SCOPED_TRACE(std::to_string(size) + " bytes");
    const Outcome outcome = machine.call({.arguments = {"vnc://h"},
                                          .variables = {{"DISPLAY", ":99"}},
                                          .prepare = withAddresses(size)});
    if (outcome.status == 3) {
      ++refusals;
      EXPECT_EQ(noMemory, outcome.err);
    } else if (refusals > 0) {
      break;
    }
  }
  Machine::settle();
  const std::string message = std::string(noMemory).substr(0, sizeof noMemory - 2);
  EXPECT_TRUE(machine.read("shown").starts_with(message + "\n")) << machine.read("shown");
  EXPECT_GE(refusals, 5);
}

TEST(OpeningMemory, ThatRunsOutIsQuietWhenAsked) {
#ifdef SANITIZED
  GTEST_SKIP() << "sanitizers use addresses without bound";
#endif
  const Machine machine;
  fill(machine);
  Outcome outcome;
  for (rlim_t size = 2U << 20; size < 40U << 20; size += 16U << 10) {
    outcome = machine.call({.arguments = {"--quiet", "vnc://h"}, .prepare = withAddresses(size)});
    if (outcome.status < 127) {
      break;
    }
  }
  EXPECT_EQ(3, outcome.status);
  EXPECT_EQ("", outcome.err);
}

}  // namespace

}  // namespace hopopen_edges_test
