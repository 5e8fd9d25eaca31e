// SPDX-License-Identifier: MIT
// Runs a test's body in a process of its own, to its real end.  The output of the process
// comes back as text.  The functions differ in whose the semaphore set is.
#pragma once

#include <poll.h>
#include <sys/resource.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <type_traits>

#include "threading.h"

/// How a process ended, and all that it wrote.
struct processEnd {
  std::string ending;  ///< "exit 0", "signal 6" and the like
  std::string output;  ///< standard output
  std::string errors;  ///< standard error
};

/// "exit 0", "signal 6" and the like, from the status that `waitpid` gives.
inline std::string endingOf(int status) {
  if (WIFSIGNALED(status)) return "signal " + std::to_string(WTERMSIG(status));
  return "exit " + std::to_string(WEXITSTATUS(status));
}

/// Prints a number on standard output.
inline void tell(const char* name, int value) {
  dprintf(STDOUT_FILENO, "%s %d\n", name, value);
}

/// No test waits longer than this for something that never comes: SIGALRM ends the
/// process.
inline void limitLife() {
  alarm(100);
}

/// Reads two pipes to their ends.
inline void drain(std::array<pollfd, 2> ends, std::array<std::string*, 2> texts) {
  for (int open = 2; open > 0;) {
    if (poll(ends.data(), ends.size(), -1) < 0) return;
    for (std::size_t i = 0; i < ends.size(); ++i) {
      if (ends[i].fd < 0 || ends[i].revents == 0) continue;
      char buffer[4096];
      const ssize_t count = read(ends[i].fd, buffer, sizeof buffer);
      if (count > 0) {
        texts[i]->append(buffer, static_cast<std::size_t>(count));
      } else {
        ends[i].fd = -1;
        --open;
      }
    }
  }
}

/// An expected abort of this process then leaves no core file.
inline void leaveNoCoreFile() {
  const rlimit none{0, 0};
  setrlimit(RLIMIT_CORE, &none);
}

/// Runs `body` in a child.  When `body` returns a number, the child ends through `exit` with
/// that: exit functions and static destructors run.  When it returns nothing, the child
/// leaves with 0 at once.
template <class Body>
processEnd runChild(Body body) {
  std::fflush(nullptr);
  int out[2];
  int err[2];
  if (pipe(out) != 0) return {"no pipe", "", ""};
  if (pipe(err) != 0) {
    close(out[0]);
    close(out[1]);
    return {"no pipe", "", ""};
  }
  const pid_t child = fork();
  if (child == 0) {
    leaveNoCoreFile();
    limitLife();
    dup2(out[1], STDOUT_FILENO);
    dup2(err[1], STDERR_FILENO);
    for (const int end : {out[0], out[1], err[0], err[1]}) close(end);
    if constexpr (std::is_void_v<decltype(body())>) {
      body();
      std::_Exit(0);
    } else {
      std::exit(body());
    }
  }
  close(out[1]);
  close(err[1]);
  processEnd result = {"no child", "", ""};
  drain({pollfd{out[0], POLLIN, 0}, pollfd{err[0], POLLIN, 0}}, {&result.output, &result.errors});
  close(out[0]);
  close(err[0]);
  int status = 0;
  if (child > 0 && waitpid(child, &status, 0) == child) result.ending = endingOf(status);
  return result;
}

/// Runs `body` in a child that has no semaphore set yet.
template <class Body>
processEnd runFreshChild(Body body) {
  semaphoreRelease();
  return runChild(body);
}

/// Creates the semaphore set in this process, which removes it at exit.  A child that a signal
/// ends would leave a set of its own behind.
inline void ownTheSemaphores() {
  semaphoreSet(false);
}

/// Runs `body` in a child that shares this process's semaphore set, and removes
/// the set afterwards.  For bodies that a signal ends, which removes nothing.
template <class Body>
processEnd runSharingChild(Body body) {
  ownTheSemaphores();
  processEnd result = runChild(body);
  semaphoreRelease();
  return result;
}
