// SPDX-License-Identifier: MIT
#include "launch_end.h"

#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>

#include "lasting.h"
#include "launch_log.h"
#include "threading.h"

namespace {

// The log's path: kept, as a semaphore call may fail at the very end.
std::string& logPath() {
  static internal::lasting<std::string> path;
  return *path;
}

constinit bool hasLog = false;
constinit std::terminate_handler previousEnd = nullptr;

void logSemaphores(const char* line, int error) {
  if (hasLog) {
    launchLog(logPath()).line({line, ": ", std::strerror(error)});
  }
}

[[noreturn]] void endWithoutMemory() {
  semaphoreClose();
  if (hasLog) {
    launchLog(logPath()).fixedLine("not enough memory\n");
  }
  _exit(0);  // what runs at exit might take memory
}

[[noreturn]] void endByException() {
  semaphoreClose();
  previousEnd();
  std::abort();
}

}  // namespace

void guardLaunch(const std::string& log) {
  if (!log.empty()) {
    logPath() = log;
    hasLog = true;
  }
  semaphoreOnFailure(logSemaphores);
  for (const int sig : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction given = {};
    if (sigaction(sig, nullptr, &given) == 0 && given.sa_handler == SIG_DFL) {
      std::signal(sig, semaphoreEndBy);
    }
  }
}

void guardProcess() {
  std::set_new_handler(endWithoutMemory);
  previousEnd = std::set_terminate(endByException);
}
