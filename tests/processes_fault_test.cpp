#include <signal.h>
#include <sys/time.h>
#include <sys/types.h>
#include <time.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <string>

#include "fresh_process.h"
#include "processes.h"
#include "telling_handler.h"

namespace processes_fault_test {

extern "C" {
pid_t __real_fork();
pid_t __real_waitpid(pid_t child, int* status, int options);
int __real_gettimeofday(struct timeval* now, void* zone);
int __real_nanosleep(const struct timespec* request, struct timespec* rest);
}

namespace {

void tell(const char* name, int value) {
  dprintf(STDOUT_FILENO, "%s %d\n", name, value);
}

int forkError = 0;       // makes `fork` fail
bool waitFails = false;  // makes `waitpid` return the next two
pid_t waitResult = -1;
int waitError = 0;
bool tellWait = false;

// A clock that only `nanosleep` moves, by what is asked for and some more.
struct simulatedClock {
  bool on = false;
  long seconds = 0;
  long microseconds = 0;
  const long* oversleeps = nullptr;  // in milliseconds; the shutdown comes in the last
  std::size_t count = 0;
};
simulatedClock simulated;

class goodThread : public Thread {
 public:
  goodThread() : Thread(true) {}
  bool execute() override { return true; }
  Thread* clone() const override { return new goodThread(*this); }
};

class notified : public shutdownNotified {
  void shutdown() override { dprintf(STDOUT_FILENO, "told\n"); }
};

}  // namespace

extern "C" pid_t __wrap_fork() {
  if (forkError == 0) return __real_fork();
  errno = forkError;
  return -1;
}

extern "C" pid_t __wrap_waitpid(pid_t child, int* status, int options) {
  if (tellWait) tell(child > 0 && status != nullptr ? "waitpid, options" : "bad waitpid", options);
  if (!waitFails) return __real_waitpid(child, status, options);
  errno = waitError;
  return waitResult;
}

extern "C" int __wrap_gettimeofday(struct timeval* now, void* zone) {
  if (!simulated.on) return __real_gettimeofday(now, zone);
  now->tv_sec = static_cast<time_t>(simulated.seconds);
  now->tv_usec = static_cast<suseconds_t>(simulated.microseconds);
  if (zone != nullptr) *static_cast<struct timezone*>(zone) = {0, 0};
  return 0;
}

extern "C" int __wrap_nanosleep(const struct timespec* request, struct timespec* rest) {
  if (!simulated.on) return __real_nanosleep(request, rest);
  const long seconds = static_cast<long>(request->tv_sec);
  const long nanoseconds = static_cast<long>(request->tv_nsec);
  dprintf(STDOUT_FILENO, "sleep %ld.%09ld\n", seconds, nanoseconds);
  if (simulated.count == 0) _exit(9);  // the shutdown was overlooked
  const long over = *simulated.oversleeps++;
  if (--simulated.count == 0) raise(SIGUSR1);
  const long total = simulated.microseconds + nanoseconds / 1000 + over % 1000 * 1000;
  simulated.seconds += seconds + over / 1000 + total / 1000000;
  simulated.microseconds = total % 1000000;
  return 0;
}

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
      tellingHandler handler;
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
    tellingHandler handler;
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
      tellingHandler handler;
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
    tellingHandler handler;
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
      tellingHandler handler;
      notified one;
      signal(SIGUSR1, [](int) { Thread::shutDown(); });
      simulated = {true, 1000000000, 250000, row.oversleeps, row.count};
      exitWaitThread watcher(true);
      const bool done = watcher.execute();
      simulated.on = false;
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
    simulated = {true, 1000000000, 250000, nullptr, 0};
    exitWaitThread watcher(true);
    const bool done = watcher.execute();
    simulated.on = false;
    tell("done", done);
    return 0;
  });
  EXPECT_EQ(end.output, "told\ndone 1\n");
  EXPECT_EQ(end.ending, "exit 0");
}

}  // namespace processes_fault_test
