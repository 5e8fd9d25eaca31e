// SPDX-License-Identifier: MIT
#include <signal.h>
#include <sys/types.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <ctime>
#include <string>

#include "children.h"
#include "fake_clock.h"
#include "processes.h"
#include "reports.h"
#include "system_calls.h"

namespace processes_fault_test {

namespace {

int forkError = 0;       // makes `fork` fail
bool waitFails = false;  // makes `waitpid` return the next two
pid_t waitResult = -1;
int waitError = 0;
bool tellWait = false;

// What sleeps take longer than they should, in milliseconds.  The shutdown comes in the last.
const long* oversleeps = nullptr;
std::size_t sleepsLeft = 0;

class goodThread : public Thread {
 public:
  goodThread() : Thread(true) {}
  bool execute() override { return true; }
  Thread* clone() const override { return new goodThread(*this); }
};

class notified : public shutdownNotified {
  void shutdown() override { dprintf(STDOUT_FILENO, "told\n"); }
};

pid_t forkOrNot() {
  if (forkError == 0) return systemCalls::fork.real();
  errno = forkError;
  return -1;
}

pid_t waitOrNot(pid_t child, int* status, int options) {
  if (tellWait) tell(child > 0 && status != nullptr ? "waitpid, options" : "bad waitpid", options);
  if (!waitFails) return systemCalls::waitpid.real(child, status, options);
  errno = waitError;
  return waitResult;
}

// Moves the clock by what is asked for and some more.
int oversleep(const timespec* request, timespec*) {
  const long seconds = static_cast<long>(request->tv_sec);
  const long nanoseconds = static_cast<long>(request->tv_nsec);
  dprintf(STDOUT_FILENO, "sleep %ld.%09ld\n", seconds, nanoseconds);
  if (sleepsLeft == 0) _exit(9);  // the shutdown was overlooked
  const long over = *oversleeps++;
  if (--sleepsLeft == 0) raise(SIGUSR1);
  const long total = fakeClock::now.micros + nanoseconds / 1000 + over % 1000 * 1000;
  fakeClock::now.seconds += seconds + over / 1000 + total / 1000000;
  fakeClock::now.micros = total % 1000000;
  return 0;
}

// A clock that only sleeps move.
void simulateClock(const long* milliseconds, std::size_t count) {
  oversleeps = milliseconds;
  sleepsLeft = count;
  fakeClock::stopAt({1000000000, 250000});
  systemCalls::nanosleep.replace(oversleep);
}

const replacedCalls here(__FILE__, [] {
  systemCalls::fork.replace(forkOrNot);
  systemCalls::waitpid.replace(waitOrNot);
});

}  // namespace

TEST(ThreadFailure, OfForkIsReported) {
  static const struct {
    int error;
    const char* told;
  } cases[] = {
      {EAGAIN, "O/S 11, severity 2, audience 31: fork() | Thread::newProcess()\ncreated 0\n"},
      {ENOMEM, "O/S 12, severity 2, audience 31: fork() | Thread::newProcess()\ncreated 0\n"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.error);
    const processEnd end = runFreshChild([&] {
      reportTeller handler;
      goodThread thread;
      forkError = row.error;
      tell("created", thread.create());
      forkError = 0;
      tell("waited", thread.waitFor());  // there is no child, and no report
      tell("created", thread.create());
      tell("waited", thread.waitFor());
      tell("status", thread.status());
      return 0;
    });
    EXPECT_EQ(end.output, std::string(row.told) + "waited 0\ncreated 1\nwaited 1\nstatus 0\n");
    EXPECT_EQ(end.errors, "");
    EXPECT_EQ(end.ending, "exit 0");
  }
}

TEST(ThreadFailure, OfForkForgetsNoEarlierChild) {
  const processEnd end = runFreshChild([] {
    reportTeller handler;
    goodThread thread;
    tell("created", thread.create());
    forkError = EAGAIN;
    tell("created", thread.create());
    forkError = 0;
    tell("waited", thread.waitFor());
    return 0;
  });
  EXPECT_EQ(end.output,
            "created 1\n"
            "O/S 11, severity 2, audience 31: fork() | Thread::newProcess()\n"
            "created 0\n"
            "waited 1\n");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(ThreadFailure, OfWaitpidIsReported) {
  static const struct {
    const char* what;
    pid_t result;
    int error;
    const char* told;
  } cases[] = {
      {"no child", -1, ECHILD, "O/S 10, severity 2, audience 31: waitpid() | Thread::waitFor()\n"},
      {"interrupted", -1, EINTR, "O/S 4, severity 2, audience 31: waitpid() | Thread::waitFor()\n"},
      {"nothing yet", 0, EINVAL,
       "O/S 22, severity 2, audience 31: waitpid() | Thread::waitFor()\n"},
      {"another child", 1, EPERM,
       "O/S 1, severity 2, audience 31: waitpid() | Thread::waitFor()\n"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.what);
    const processEnd end = runFreshChild([&] {
      reportTeller handler;
      goodThread thread;
      tell("created", thread.create());
      waitFails = true;
      waitResult = row.result;
      waitError = row.error;
      tell("waited", thread.waitFor());
      waitFails = false;
      tell("waited", thread.waitFor());
      tell("status", thread.status());
      return 0;
    });
    EXPECT_EQ(end.output, std::string("created 1\n") + row.told + "waited 0\nwaited 1\nstatus 0\n");
    EXPECT_EQ(end.errors, "");
    EXPECT_EQ(end.ending, "exit 0");
  }
}

TEST(ThreadFailure, IsNotReportedWhereWaitpidIsNotNeeded) {
  const processEnd end = runFreshChild([] {
    reportTeller handler;
    goodThread thread;
    tellWait = true;
    tell("waited", thread.waitFor());
    tell("created", thread.create());
    tell("waited", thread.waitFor());
    tellWait = false;
    return 0;
  });
  EXPECT_EQ(end.output, "waited 0\ncreated 1\nwaitpid, options 0\nwaited 1\n");
  EXPECT_EQ(end.ending, "exit 0");
}

// --- The watcher's clock ---------------------------------------------------

TEST(ExitWaitThread, TicksEachSecondWithoutDrift) {
  static const struct {
    const char* what;
    std::size_t count;
    long oversleeps[6];
    const char* told;
  } cases[] = {
      {"one tick", 1, {0}, "sleep 1.000000000\ntold\ndone 1\n"},
      {"exact sleeps",
       3,
       {0, 0, 0},
       "sleep 1.000000000\nsleep 1.000000000\nsleep 1.000000000\ntold\ndone 1\n"},
      {"each sleep is a little long",
       4,
       {250, 250, 250, 250},
       "sleep 1.000000000\nsleep 0.750000000\nsleep 0.750000000\nsleep 0.750000000\n"
       "told\ndone 1\n"},
      {"ticks that are missed are made up for without a sleep",
       2,
       {2500, 0},
       "sleep 1.000000000\nsleep 0.500000000\ntold\ndone 1\n"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.what);
    const processEnd end = runFreshChild([&] {
      reportTeller handler;
      notified one;
      signal(SIGUSR1, [](int) { Thread::shutDown(); });
      simulateClock(row.oversleeps, row.count);
      exitWaitThread watcher(true);
      const bool done = watcher.execute();
      tell("done", done);
      return 0;
    });
    EXPECT_EQ(end.output, row.told);
    EXPECT_EQ(end.errors, "");
    EXPECT_EQ(end.ending, "exit 0");
  }
}

TEST(ExitWaitThread, DoesNotSleepWhenShuttingDownAlready) {
  const processEnd end = runFreshChild([] {
    notified one;
    Thread::shutDown();
    simulateClock(nullptr, 0);
    exitWaitThread watcher(true);
    const bool done = watcher.execute();
    tell("done", done);
    return 0;
  });
  EXPECT_EQ(end.output, "told\ndone 1\n");
  EXPECT_EQ(end.ending, "exit 0");
}

}  // namespace processes_fault_test
