// SPDX-License-Identifier: MIT
// What ends hoplaunch and hopexplain, and what must not: a set that cannot be had, signals,
// output that nobody reads.  Nothing is left behind.

#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <sys/resource.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <thread>

#include "explain_runner.h"
#include "launcher_runner.h"
#include "semaphore_sets.h"
#include "soft_limit.h"

namespace launcher_ending_test {

namespace {

using launcher::Outcome;
using launcher::Strings;
using launcher::Workshop;

const char* const none = "0000000000000000";
const char* const failedLine = "result > 0 in ../utilities/unix/semaphore_unx@";

// Moves this process to a namespace of its own with these limits: semaphores per set, all
// semaphores, operations per call, and sets.
bool limitSets(const char* limits) {
  if (unshare(CLONE_NEWIPC) != 0) {
    return false;
  }
  std::ofstream out("/proc/sys/kernel/sem");
  return (out << limits << std::flush).good();
}

#define REQUIRE_LIMIT(limits)                                            \
  do {                                                                   \
    if (!limitSets(limits)) {                                            \
      GTEST_SKIP() << "no limit of one's own: " << std::strerror(errno); \
    }                                                                    \
  } while (false)

void leaveNoCore() {
  const rlimit noCore{0, 0};
  setrlimit(RLIMIT_CORE, &noCore);
}

// --- No set to be had ------------------------------------------------------

void expectNoSet(const Outcome& outcome, const std::string& log, const std::string& error) {
  EXPECT_EQ(1006, outcome.status);
  EXPECT_TRUE(outcome.err.starts_with(failedLine)) << outcome.err;
  EXPECT_EQ(outcome.err.size() - 1, outcome.err.find('\n')) << outcome.err;
  EXPECT_EQ(outcome.err.substr(0, outcome.err.size() - 1) + ": " + error + "\n", log);
  EXPECT_FALSE(outcome.viewer);
}

TEST(NoSemaphores, AreToldInTheLog) {
  for (const char* limits : {"250 32000 100 0", "5 32000 100 128", "250 3 100 128"}) {
    SCOPED_TRACE(limits);
    REQUIRE_LIMIT(limits);
    const std::string error = limits[0] == '5' ? "Invalid argument" : "No space left on device";
    for (const char* uri : {"vnc://h/", "no URI"}) {
      Workshop shop;
      const Outcome outcome = shop.run({.arguments = {uri, "-LOG=log"}, .prepare = leaveNoCore});
      expectNoSet(outcome, shop.log(), error);
      EXPECT_EQ(std::vector<int>(), setsOfAll());
    }
  }
}

TEST(NoSemaphores, AreToldAtTheEndOfALogThatThereIs) {
  REQUIRE_LIMIT("250 32000 100 0");
  Workshop shop;
  writeFile(shop.work() / "log", "an earlier line\n");
  const Outcome outcome = shop.run({.arguments = {"vnc://h/", "-log=log"}, .prepare = leaveNoCore});
  ASSERT_TRUE(shop.log().starts_with("an earlier line\n"));
  expectNoSet(outcome, shop.log().substr(16), "No space left on device");
}

TEST(NoSemaphores, WithoutALogAreToldOnStandardErrorOnly) {
  REQUIRE_LIMIT("250 32000 100 0");
  Workshop shop;
  const Outcome outcome = shop.run({.arguments = {"vnc://h/"}, .prepare = leaveNoCore});
  EXPECT_EQ(1006, outcome.status);
  EXPECT_TRUE(outcome.err.starts_with(failedLine)) << outcome.err;
  EXPECT_EQ(Strings(), shop.files());
}

TEST(NoSemaphores, AreWhyHopexplainSaysNo) {
  REQUIRE_LIMIT("250 32000 100 0");
  const struct {
    Strings arguments;
    const char* file;
  } cases[] = {{{"vnc://h/"}, "bin/vncviewer"},
               {{"vnc://h/", "-program=nosuch"}, "none"},
               {{"vnc://h/", "-refcount=1"}, "bin/vncviewer"}};
  for (const auto& one : cases) {
    SCOPED_TRACE(one.arguments.back());
    Workshop shop;
    const Outcome outcome = launcher::explain(shop, {.arguments = one.arguments});
    EXPECT_EQ(1, outcome.status);
    EXPECT_EQ("no: no semaphore set: No space left on device",
              launcher::labelled(outcome.out, "launch"));
    EXPECT_EQ(one.file, launcher::labelled(outcome.out, "file"));
    EXPECT_TRUE(launcher::labelled(outcome.out, "arguments").ends_with(" --autoreconnect=0 h") ||
                one.arguments.size() > 1)
        << outcome.out;
  }
  Workshop shop;
  const Outcome outcome = launcher::explain(shop, {.arguments = {"no URI"}});
  EXPECT_EQ(1, outcome.status);
  EXPECT_EQ("no: no semaphore set: No space left on device",
            launcher::labelled(outcome.out, "launch"));
  EXPECT_EQ("", outcome.err);
}

TEST(NoSemaphores, AreWhyHopexplainSaysNoInJSON) {
  REQUIRE_LIMIT("250 32000 100 0");
  Workshop shop;
  const Outcome outcome = launcher::explain(shop, {.arguments = {"-format=json", "vnc://h/"}});
  EXPECT_EQ(1, outcome.status);
  EXPECT_NE(std::string::npos,
            outcome.out.find("\"obstacle\": \"no semaphore set: No space left on device\""));
  EXPECT_NE(std::string::npos, outcome.out.find("\"launches\": false"));
  EXPECT_NE(std::string::npos, outcome.out.find("\"file\": \"bin/vncviewer\""));
  EXPECT_NE(std::string::npos,
            outcome.out.find("\"arguments\": [\"vncviewer\", \"--autoreconnect=0\", \"h\"]"));
}

// --- Explanations hold no set ----------------------------------------------

// Runs hopexplain with a full pipe as its output, and looks at the sets meanwhile.
TEST(Explanation, HasNoSetWhileItPrints) {
  if (unshare(CLONE_NEWIPC) != 0) {
    GTEST_SKIP() << "no new namespace: " << std::strerror(errno);
  }
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGKILL}) {
    SCOPED_TRACE(strsignal(signal));
    std::array<int, 2> ends{};
    ASSERT_EQ(0, pipe2(ends.data(), O_CLOEXEC));
    ASSERT_EQ(4096, fcntl(ends[1], F_SETPIPE_SZ, 4096));
    const std::string filling(4096, '.');
    ASSERT_EQ(4096, write(ends[1], filling.data(), filling.size()));
    Workshop shop;
    shop.start({.arguments = {"vnc://h/"},
                .prepare =
                    [&ends] {
                      leaveNoCore();
                      if (dup2(ends[1], 1) != 1) _exit(124);
                    },
                .binary = HOPEXPLAIN_BINARY});
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_EQ(std::vector<int>(), setsOfAll()) << "while it waits for its output";
    kill(shop.pid(), signal);
    EXPECT_EQ(1000 + signal, shop.finish().status);
    EXPECT_EQ(std::vector<int>(), setsOfAll());
    close(ends[0]);
    close(ends[1]);
  }
}

// --- Signals ---------------------------------------------------------------

// Starts a launch that waits for a section that somebody else holds, and returns the set.
// The launcher stops after it made the set and before it removes it, because it writes its
// traces into a full pipe.
class waitingLaunch {
 public:
  explicit waitingLaunch(const std::function<void()>& prepare = [] {}) {
    if (pipe2(m_ends.data(), O_CLOEXEC) != 0 || fcntl(m_ends[1], F_SETPIPE_SZ, 4096) != 4096) {
      ADD_FAILURE() << "no pipe";
    }
    const std::string filling(4096, '.');
    EXPECT_EQ(4096, write(m_ends[1], filling.data(), filling.size()));
    m_shop.start({.arguments = {"vnc://h/", "-refcount=1"}, .prepare = [this, prepare] {
                    leaveNoCore();
                    if (dup2(m_ends[1], 2) != 2) _exit(124);
                    prepare();
                  }});
    for (int count = 0; count < 200 && setsOfAll().empty(); ++count) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(1U, setsOfAll().size()) << "the launch does not wait with its set";
  }
  waitingLaunch(const waitingLaunch&) = delete;
  waitingLaunch& operator=(const waitingLaunch&) = delete;
  ~waitingLaunch() {
    close(m_ends[0]);
    close(m_ends[1]);
  }

  void send(int signal) { kill(m_shop.pid(), signal); }

  /// Lets the launch go on: nobody reads its traces any more.
  void release() {
    close(m_ends[0]);
    m_ends[0] = -1;
  }

  Outcome finish() { return m_shop.finish(); }

 private:
  std::array<int, 2> m_ends{-1, -1};
  Workshop m_shop;
};

#define REQUIRE_OWN_SETS()                                          \
  do {                                                              \
    if (unshare(CLONE_NEWIPC) != 0) {                               \
      GTEST_SKIP() << "no new namespace: " << std::strerror(errno); \
    }                                                               \
  } while (false)

TEST(LauncherSignals, EndItWithoutASet) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    SCOPED_TRACE(strsignal(signal));
    REQUIRE_OWN_SETS();
    waitingLaunch launch;
    launch.send(signal);
    EXPECT_EQ(1000 + signal, launch.finish().status);
    EXPECT_EQ(std::vector<int>(), setsOfAll());
  }
}

TEST(LauncherSignals, ThatWereIgnoredStaySo) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    SCOPED_TRACE(strsignal(signal));
    REQUIRE_OWN_SETS();
    waitingLaunch launch([signal] { std::signal(signal, SIG_IGN); });
    launch.send(signal);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    launch.release();
    const Outcome outcome = launch.finish();
    EXPECT_EQ(42, outcome.status);
    ASSERT_TRUE(outcome.viewer);
    char mask[17];
    std::snprintf(mask, sizeof mask, "%016x", 1U << (signal - 1));
    EXPECT_EQ(mask, outcome.viewer->status.at("SigIgn"));
    EXPECT_EQ(none, outcome.viewer->status.at("SigCgt"));
    EXPECT_EQ(std::vector<int>(), setsOfAll());
  }
}

TEST(LauncherSignals, ThatWereBlockedReachTheViewer) {
  REQUIRE_OWN_SETS();
  waitingLaunch launch([] {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGTERM);
    sigprocmask(SIG_BLOCK, &set, nullptr);
  });
  launch.send(SIGTERM);
  launch.release();
  const Outcome outcome = launch.finish();
  EXPECT_EQ(42, outcome.status);
  ASSERT_TRUE(outcome.viewer);
  EXPECT_EQ("0000000000004000", outcome.viewer->status.at("SigBlk"));
  EXPECT_EQ("0000000000004000", outcome.viewer->status.at("ShdPnd"));
  EXPECT_EQ(none, outcome.viewer->status.at("SigIgn"));
}

// The signal may come at any moment of the run.
TEST(LauncherSignals, LeaveNoSetAtAnyMoment) {
  REQUIRE_OWN_SETS();
  Workshop shop;
  for (int delay = 0; delay < 300; ++delay) {
    const int signal = std::array{SIGINT, SIGTERM, SIGHUP}[static_cast<std::size_t>(delay) % 3];
    shop.start({.arguments = {"vnc://h/", "-refcount=1"}, .prepare = [] { leaveNoCore(); }});
    std::this_thread::sleep_for(std::chrono::microseconds(delay * 10));
    kill(shop.pid(), signal);
    const int status = shop.finish().status;
    EXPECT_TRUE(status == 1000 + signal || status == 42 || status == 43) << status;
    ASSERT_EQ(std::vector<int>(), setsOfAll()) << "after " << delay * 10 << " microseconds";
  }
}

// --- Output that nobody takes ----------------------------------------------

void closedErrors() {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0 || dup2(ends[1], 2) != 2 || close(ends[0]) != 0 ||
      close(ends[1]) != 0 || signal(SIGPIPE, SIG_DFL) == SIG_ERR) {
    _exit(124);
  }
}

void noGrowingFile() {
  if (!setSoftLimit(RLIMIT_FSIZE, 0) || signal(SIGXFSZ, SIG_DFL) == SIG_ERR) {
    _exit(124);
  }
}

TEST(LauncherOutput, ThatNobodyTakesStopsNothing) {
  REQUIRE_OWN_SETS();
  Workshop shop;
  Outcome outcome = shop.run({.arguments = {"vnc://h/", "-refcount=1"}, .prepare = closedErrors});
  EXPECT_EQ(42, outcome.status);
  ASSERT_TRUE(outcome.viewer);
  for (const char* key : {"SigIgn", "SigBlk", "SigCgt", "SigPnd", "ShdPnd"}) {
    EXPECT_EQ(none, outcome.viewer->status.at(key)) << key;
  }
  EXPECT_EQ(std::vector<int>(), setsOfAll());

  // With this limit the viewer cannot record anything: it ends with 43.
  outcome = shop.run({.arguments = {"vnc://h/", "-refcount=1"}, .prepare = [] {
                        noGrowingFile();
                        signal(SIGXFSZ, SIG_IGN);
                      }});
  EXPECT_EQ(43, outcome.status);
  outcome = shop.run({.arguments = {"vnc://h/", "-refcount=1"}, .prepare = noGrowingFile});
  EXPECT_EQ(1000 + SIGXFSZ, outcome.status) << "the viewer dies of it, not the launcher";
  EXPECT_TRUE(std::filesystem::exists(shop.work().parent_path() / "recording.arguments"))
      << "there was no viewer";
  EXPECT_EQ(std::vector<int>(), setsOfAll());
}

TEST(LauncherOutput, ThatIsAMessageMayBeLost) {
  Workshop shop;
  EXPECT_EQ(0, shop.run({.arguments = {}, .prepare = closedErrors}).status);
  EXPECT_EQ(0, shop.run({.arguments = {}, .prepare = noGrowingFile}).status);
  EXPECT_EQ(255, shop.run({.arguments = {"-x"}, .prepare = closedErrors}).status);
}

TEST(ExplanationOutput, ThatNobodyTakesDoesNotEndItByASignal) {
  REQUIRE_OWN_SETS();
  Workshop shop;
  for (const auto& prepare : {closedErrors, noGrowingFile}) {
    const Outcome outcome =
        launcher::explain(shop, {.arguments = {"vnc://h/", "-refcount=1"}, .prepare = prepare});
    EXPECT_LT(outcome.status, 3);
    EXPECT_EQ(std::vector<int>(), setsOfAll());
  }
  const Outcome outcome = launcher::explain(shop, {.arguments = {"vnc://h/"}, .prepare = [] {
                                                     closedErrors();
                                                     if (dup2(2, 1) != 1) _exit(124);
                                                   }});
  EXPECT_LT(outcome.status, 3);
  EXPECT_EQ(std::vector<int>(), setsOfAll());
}

}  // namespace

}  // namespace launcher_ending_test
