// SPDX-License-Identifier: MIT
// Who removes the semaphore set when a process ends without `exit`.  And programs that
// hand it over or do without it.

#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

#include "asserts.h"
#include "children.h"
#include "reports.h"
#include "section_state.h"
#include "semaphore_sets.h"
#include "threading.h"

namespace semaphore_end_test {

namespace {

// The set that a child named on standard output in its first line, "set 123".
int toldSet(const processEnd& end) {
  return end.output.starts_with("set ") ? std::atoi(end.output.c_str() + 4) : -1;
}

int drawAndTell() {
  const int set = semaphoreSet(false);
  tell("set", set);
  return set;
}

// --- Assertions and failed calls -------------------------------------------

TEST(SemaphoreEnd, ByAnAssertionRemovesTheSetAfterTheReport) {
  const processEnd end = runFreshChild([] {
    const reportTeller handler;
    drawAndTell();
    const int one = 1;
    ASSERT(one == 2);
    return 0;
  });
  EXPECT_NE(std::string::npos, end.output.find("assert 0")) << end.output;
  EXPECT_EQ("signal 6", end.ending);
  EXPECT_GT(toldSet(end), 0);
  EXPECT_TRUE(isGone(toldSet(end)));
}

// Prints whether the set exists while the report is handled.
class lookingHandler : public eventHandler {
 public:
  explicit lookingHandler(int set) : eventHandler(1), m_set(set) {}
  bool handle(eventReport&) override {
    tell("while reporting", setExists(m_set));
    const criticalSection section(CS_LOGOUT, false);
    tell("okay", section.okay());
    return true;
  }
  const char* name() const override { return "lookingHandler"; }

 private:
  int m_set;
};

TEST(SemaphoreEnd, ByAnAssertionLeavesTheSetToItsReport) {
  const processEnd end = runFreshChild([] {
    const lookingHandler handler(drawAndTell());
    const int one = 1;
    ASSERT(one == 2);
    return 0;
  });
  EXPECT_NE(std::string::npos, end.output.find("while reporting 1\nokay 1\n")) << end.output;
  EXPECT_EQ("", end.errors);
  EXPECT_TRUE(isGone(toldSet(end)));
}

TEST(SemaphoreEnd, OfAChildByAnAssertionLeavesTheSetOfItsParent) {
  const int set = semaphoreSet(false);
  const processEnd end = runChild([] {
    const reportTeller handler;
    const int one = 1;
    ASSERT(one == 2);
    return 0;
  });
  EXPECT_EQ("signal 6", end.ending);
  EXPECT_TRUE(setExists(set));
}

TEST(SemaphoreEnd, ByAFailedCallTellsTheHandlerOfIt) {
  const processEnd end = runFreshChild([] {
    semaphoreOnFailure([](const char* line, int error) { tell(line, error); });
    const int set = drawAndTell();
    semctl(set, 0, IPC_RMID);
    const criticalSection section(CS_NETWORK, false);
    return 0;
  });
  EXPECT_TRUE(isFailureLine(end.errors, "0 == semop(set_id, &operation, 1)"));
  const std::string line = end.errors.substr(0, end.errors.size() - 1);
  EXPECT_EQ(
      "set " + std::to_string(toldSet(end)) + "\n" + line + " " + std::to_string(EINVAL) + "\n",
      end.output);
  EXPECT_EQ("signal 6", end.ending);
}

TEST(SemaphoreEnd, ByAFailedCallRemovesTheSet) {
  const processEnd end = runFreshChild([] {
    const int set = drawAndTell();
    // The greatest possible value: leaving the section fails.
    semaphoreArgument argument = {};
    const criticalSection section(CS_STACK, false);
    argument.val = 32767;
    semctl(set, CS_STACK, SETVAL, argument);
    return 0;
  });
  EXPECT_TRUE(isFailureLine(end.errors, "0 == semop(set_id, &operation, 1)"));
  EXPECT_EQ("signal 6", end.ending);
  EXPECT_TRUE(isGone(toldSet(end)));
}

// --- Signals ---------------------------------------------------------------

TEST(SemaphoreEnd, ByASignalRemovesTheSetWithTheHandler) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
    SCOPED_TRACE(strsignal(signal));
    const processEnd end = runFreshChild([signal] {
      std::signal(signal, semaphoreEndBy);
      drawAndTell();
      std::raise(signal);
      tell("went on", 1);
      return 0;
    });
    EXPECT_EQ("signal " + std::to_string(signal), end.ending);
    EXPECT_EQ(std::string::npos, end.output.find("went on"));
    EXPECT_TRUE(isGone(toldSet(end)));
  }
}

TEST(SemaphoreEnd, OfAChildByASignalLeavesTheSetOfItsParent) {
  const int set = semaphoreSet(false);
  const processEnd end = runChild([] {
    semaphoreEndBy(SIGTERM);
    return 0;
  });
  EXPECT_EQ("signal 15", end.ending);
  EXPECT_TRUE(setExists(set));
}

// SIGURG ends no process by itself.
TEST(SemaphoreEnd, ByASignalIsAsIfThereWereNoHandler) {
  const processEnd end = runFreshChild([] {
    std::signal(SIGURG, semaphoreEndBy);
    const int set = drawAndTell();
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGURG);
    sigprocmask(SIG_BLOCK, &blocked, nullptr);
    semaphoreEndBy(SIGURG);
    tell("gone", setExists(set) ? 0 : 1);
    struct sigaction now = {};
    sigaction(SIGURG, nullptr, &now);
    tell("default", now.sa_handler == SIG_DFL ? 1 : 0);
    sigprocmask(SIG_BLOCK, nullptr, &blocked);
    tell("blocked", sigismember(&blocked, SIGURG));
    return 0;
  });
  EXPECT_EQ("exit 0", end.ending);
  EXPECT_EQ("gone 1\ndefault 1\nblocked 0\n", end.output.substr(end.output.find('\n') + 1));
}

TEST(SemaphoreEnd, ByASignalWithoutTheHandlerLeavesTheSet) {
  const processEnd end = runFreshChild([] {
    drawAndTell();
    std::raise(SIGTERM);
    return 0;
  });
  EXPECT_EQ("signal 15", end.ending);
  EXPECT_FALSE(isGone(toldSet(end)));
}

TEST(SemaphoreEnd, ByQuickExitLeavesTheSet) {
  const processEnd end = runFreshChild([] {
    drawAndTell();
    std::quick_exit(0);
    return 0;
  });
  EXPECT_EQ("exit 0", end.ending);
  EXPECT_FALSE(isGone(toldSet(end)));
}

// --- Adoption --------------------------------------------------------------

// Draws a set, detaches as a daemon does, and ends there with `exit`.
processEnd detach(bool adopts) {
  return runFreshChild([adopts] {
    drawAndTell();
    if (fork() != 0) {
      _exit(0);  // the pipes stay open until the other one ends
    }
    if (adopts) {
      semaphoreAdopt();
    }
    {
      const criticalSection section(CS_NETWORK, false);
      tell("okay", section.okay());
    }
    return 0;
  });
}

TEST(SemaphoreAdopt, MakesTheCallerTheOneThatRemovesTheSet) {
  const processEnd end = detach(true);
  EXPECT_NE(std::string::npos, end.output.find("\nokay 1\n")) << end.output;
  for (int count = 0; count < 1000 && setExists(toldSet(end)); ++count) {
    usleep(1000);  // nobody can wait for that process
  }
  EXPECT_TRUE(isGone(toldSet(end)));
}

TEST(SemaphoreAdopt, IsWhatRemovesIt) {
  const processEnd end = detach(false);
  EXPECT_NE(std::string::npos, end.output.find("\nokay 1\n")) << end.output;
  usleep(100000);
  EXPECT_FALSE(isGone(toldSet(end)));
}

TEST(SemaphoreAdopt, DoesNothingWithoutASet) {
  const processEnd end = runFreshChild([] {
    semaphoreAdopt();
    const int set = drawAndTell();
    tell("close", semaphoreSet(true));
    semaphoreAdopt();
    tell("still", semaphoreSet(false));
    return set > 0 ? 0 : 1;
  });
  EXPECT_TRUE(end.output.ends_with("close -3\nstill -3\n")) << end.output;
  EXPECT_EQ("exit 0", end.ending);
  EXPECT_TRUE(isGone(toldSet(end)));
}

// --- Doing without ---------------------------------------------------------

TEST(SemaphoreForgo, LeavesSectionsThatDoNothing) {
  const processEnd end = runFreshChild([] {
    semaphoreForgo();
    tell("set", semaphoreSet(false));
    {
      const criticalSection section(CS_LOGOUT, false);
      tell("okay", section.okay());
      tell("have", criticalSection::have(CS_LOGOUT));
      tell("have another", criticalSection::have(CS_STACK));
      const criticalSection checked(CS_STACK, true);
      tell("okay", checked.okay());
      tell("have both", criticalSection::have(CS_STACK));
    }
    tell("have", criticalSection::have(CS_LOGOUT));
    tell("close", semaphoreSet(true));
    return 0;
  });
  EXPECT_EQ("set -4\nokay 1\nhave 1\nhave another 0\nokay 1\nhave both 0\nhave 0\nclose -4\n",
            end.output);
  EXPECT_EQ("", end.errors);
  EXPECT_EQ("exit 0", end.ending);
}

TEST(SemaphoreForgo, RemovesTheSetThatTheProcessCreated) {
  const processEnd end = runFreshChild([] {
    const int set = drawAndTell();
    semaphoreForgo();
    tell("exists", setExists(set));
    return 0;
  });
  EXPECT_TRUE(end.output.ends_with("exists 0\n")) << end.output;
}

TEST(SemaphoreTry, LeavesNoSet) {
  if (unshare(CLONE_NEWIPC) != 0) {
    GTEST_SKIP() << "no new namespace: " << std::strerror(errno);
  }
  int error = 7;
  EXPECT_TRUE(semaphoreTry(error));
  EXPECT_EQ(0, error);
  EXPECT_EQ(std::vector<int>(), setsOfAll());
  {
    std::ofstream limits("/proc/sys/kernel/sem");
    limits << "250 32000 100 0";
  }
  EXPECT_FALSE(semaphoreTry(error));
  EXPECT_EQ(ENOSPC, error);
  EXPECT_EQ(std::vector<int>(), setsOfAll());
}

}  // namespace

}  // namespace semaphore_end_test
