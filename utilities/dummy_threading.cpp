// SPDX-License-Identifier: MIT
// The single-threaded variant of threads and thread data.  A multi-threaded one
// replaces this file.

#include "events.h"
#include "processes.h"
#include "threading.h"

ThreadData& ThreadData::instance(bool) {
  static ThreadData theInstance;
  return theInstance;
}

bool ThreadData::threadSafe() const {
  return false;
}

int Thread::threadId() {
  return -1;
}

bool Thread::processStopping() {
  return false;
}

bool Thread::createT() {
  commonEvent(FAILURE, AUD_ALL, EC_NOT_IMPL, "light-weight threads", "Thread::createT()");
  return false;
}

bool Thread::waitForT() {
  commonEvent(FAILURE, AUD_ALL, EC_NOT_IMPL, "light-weight threads", "Thread::waitForT()");
  return false;
}
