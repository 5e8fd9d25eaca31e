// SPDX-License-Identifier: MIT
// Full-weight threads: child processes.

#include "processes.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "assertion.h"
#include "events.h"
#include "threading.h"

bool Thread::createP() {
  ASSERT(m_fullWeight);
  semaphoreSet(false);  // the parent makes it, so that both have the same sections
  const pid_t child = fork();
  if (child == 0) {
    std::exit(execute() ? 0 : 1);
  }
  if (child < 0) {
    OSevent(FAILURE, AUD_ALL, "fork()", "Thread::newProcess()");
    return false;
  }
  m_childId = child;
  return true;
}

bool Thread::waitForP() {
  if (m_childId == 0 || !m_fullWeight) {
    return false;
  }
  if (waitpid(m_childId, &m_status, 0) == m_childId) {
    return true;
  }
  OSevent(FAILURE, AUD_ALL, "waitpid()", "Thread::waitFor()");
  return false;
}
