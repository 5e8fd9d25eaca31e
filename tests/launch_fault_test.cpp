// SPDX-License-Identifier: MIT
// Launches within the test's own process whose system calls fail one by one: those
// on the log, the clock and the execution.  Whatever fails, the program is executed.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

#include "assoclist.h"
#include "fake_clock.h"
#include "launch.h"
#include "system_calls.h"

namespace launch_fault_test {

namespace {

constexpr int LOG = 1000;  // the log's descriptor; the system gives out smaller ones

// The planned failures, and the calls so far.
struct Plan {
  bool active = false;
  int openError = 0;
  int opened = LOG;  // the result of `open`
  int moveError = 0;
  std::vector<int> writes = {};  // for each of the first: an error, or 0 for all of it
  std::size_t portion = 1000;    // no `write` takes more

  std::string log = {};
  std::string calls = {};
  int flags = 0;  // of `open`
  mode_t mode = 0;
};

Plan plan;

int openLog(const char* path, int flags, mode_t mode) {
  if (!plan.active || std::string(path) != "name") {
    return systemCalls::open.real(path, flags, mode);
  }
  plan.calls += "open ";
  plan.flags = flags;
  plan.mode = mode;
  errno = plan.openError;
  return plan.openError != 0 ? -1 : plan.opened;
}

int control(int descriptor, int command, std::intptr_t argument) {
  if (!plan.active || descriptor != plan.opened || command != F_DUPFD_CLOEXEC) {
    return systemCalls::fcntl.real(descriptor, command, argument);
  }
  const int least = static_cast<int>(argument);
  plan.calls += "move " + std::to_string(descriptor) + " from " + std::to_string(least) + " on ";
  errno = plan.moveError;
  return plan.moveError != 0 ? -1 : LOG;
}

int closeLog(int descriptor) {
  if (!plan.active || (descriptor != LOG && descriptor != plan.opened)) {
    return systemCalls::close.real(descriptor);
  }
  plan.calls += descriptor == LOG ? "close " : "close " + std::to_string(descriptor) + " ";
  return 0;
}

ssize_t writeLog(int descriptor, const void* data, std::size_t size) {
  if (!plan.active) {
    return systemCalls::write.real(descriptor, data, size);
  }
  if (descriptor != LOG) {
    plan.calls += "write to " + std::to_string(descriptor) + " ";
    return static_cast<ssize_t>(size);
  }
  const std::size_t part = size < plan.portion ? size : plan.portion;
  if (!plan.writes.empty()) {
    const int error = plan.writes.front();
    plan.writes.erase(plan.writes.begin());
    if (error != 0) {
      errno = error;
      return -1;
    }
  }
  errno = EINTR;  // means nothing when a call has succeeded
  plan.log.append(static_cast<const char*>(data), part);
  return static_cast<ssize_t>(part);
}

int execute(const char* file, char* const*) {
  plan.calls += std::string("execute ") + file + " ";
  errno = ENOENT;
  return -1;
}

int sleep(const timespec*, timespec*) {
  plan.calls += "sleep ";
  return 0;
}

const replacedCalls here(__FILE__, [] {
  systemCalls::open.replace(openLog);
  systemCalls::fcntl.replace(control);
  systemCalls::close.replace(closeLog);
  systemCalls::write.replace(writeLog);
  systemCalls::execvp.replace(execute);
  fakeClock::stopAt({1700000000, 0});  // 2023-11-14 22:13:20 UTC
  systemCalls::nanosleep.replace(sleep);
});

constexpr char firstLine[] = "20231114T221320: URI = ssh://h/\n";
constexpr char restOfLog[] =
    "executable: x\n"
    "\t\"x\"\n"
    "\t\"h\"\n"
    "_execv() failed; path = x errno = 2 No such file or directory\n";

/// Launches by the plan, and returns what was called.
std::string launchBy(const Plan& wanted, const char* log = "name") {
  plan = wanted;
  plan.active = true;
  const int status = processAug({"ssh://h/"}, assocList({std::string("log=") + log, "program=x"}));
  plan.active = false;
  EXPECT_EQ(status, -1);
  return plan.calls;
}

TEST(LaunchFault, IsNoneAtFirst) {
  EXPECT_EQ(launchBy(Plan()), "open execute x sleep close ");
  EXPECT_EQ(plan.log, std::string(firstLine) + restOfLog);
}

TEST(LaunchFault, WritesNothingWithoutALog) {
  EXPECT_EQ(launchBy(Plan(), ""), "execute x sleep ");
  EXPECT_EQ(plan.log, "");
}

TEST(LaunchFault, OpensTheLogToAppendOnlyAndWithoutWaiting) {
  launchBy(Plan());
  EXPECT_EQ(plan.flags,
            O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK | O_LARGEFILE);
  EXPECT_EQ(plan.mode, 0666U) << "the umask says who may read it";
}

TEST(LaunchFault, OfOpeningTheLogStopsNothing) {
  for (const int error : {EACCES, EISDIR, ELOOP, EMFILE, ENAMETOOLONG, ENOENT, ENOMEM, ENOSPC,
                          ENOTDIR, ENXIO, EROFS, EINTR, EIO}) {
    SCOPED_TRACE(error);
    Plan wanted;
    wanted.openError = error;
    EXPECT_EQ(launchBy(wanted), "open execute x sleep ");
    EXPECT_EQ(plan.log, "");
  }
}

TEST(LaunchFault, OfMovingTheLogFromAStandardStreamLeavesNoLog) {
  Plan wanted;
  for (const int stream : {0, 1, 2}) {
    wanted.opened = stream;
    const std::string number = std::to_string(stream);
    EXPECT_EQ(launchBy(wanted),
              "open move " + number + " from 3 on close " + number + " execute x sleep close ");
    EXPECT_EQ(plan.log, std::string(firstLine) + restOfLog);
  }
  for (const int error : {EMFILE, EINVAL}) {
    SCOPED_TRACE(error);
    wanted.moveError = error;
    EXPECT_EQ(launchBy(wanted), "open move 2 from 3 on close 2 execute x sleep ");
    EXPECT_EQ(plan.log, "");
  }
}

// The lines after it are tried again: a disk may have room again.
TEST(LaunchFault, OfWritingALineLosesThatLineOnly) {
  for (const int error : {ENOSPC, EIO, EPIPE, EFBIG, EDQUOT, EAGAIN, EBADF}) {
    SCOPED_TRACE(error);
    Plan wanted;
    wanted.writes = {error};
    EXPECT_EQ(launchBy(wanted), "open execute x sleep close ");
    EXPECT_EQ(plan.log, restOfLog);
  }
}

TEST(LaunchFault, OfWritingInTheMiddleOfALineCutsThatLine) {
  Plan wanted;
  wanted.portion = 10;
  wanted.writes = {0, ENOSPC};
  launchBy(wanted);
  EXPECT_EQ(plan.log, std::string("20231114T2") + restOfLog);
}

TEST(LaunchFault, OfEveryWriteStopsNothing) {
  Plan wanted;
  wanted.portion = 0;
  EXPECT_EQ(launchBy(wanted), "open execute x sleep close ");
  EXPECT_EQ(plan.log, "");
}

TEST(LaunchFault, LosesNothingToASignalOrToShortWrites) {
  for (const std::size_t portion : {1U, 7U}) {
    Plan wanted;
    wanted.portion = portion;
    wanted.writes = {EINTR, 0, EINTR, EINTR, 0};
    launchBy(wanted);
    EXPECT_EQ(plan.log, std::string(firstLine) + restOfLog);
  }
}

// Without a clock the time is the invalid time, and nobody waits for that.
TEST(LaunchFault, OfTheClockStopsNothing) {
  fakeClock::now.fails = true;
  EXPECT_EQ(launchBy(Plan()), "open execute x close ");
  EXPECT_EQ(plan.log, std::string("<bad time>: URI = ssh://h/\n") + restOfLog);
}

}  // namespace

}  // namespace launch_fault_test
