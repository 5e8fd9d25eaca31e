// SPDX-License-Identifier: MIT
// Critical sections over one private System V semaphore set.

#include <sys/ipc.h>
#include <sys/sem.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "assertion.h"
#include "processes.h"
#include "threading.h"

namespace {

constexpr int NOT_CREATED = -2;
constexpr int RELEASED = -1;      // removed, and created again on demand
constexpr int FINISH_VALUE = -3;  // removed for good
constexpr int FORGONE = -4;       // the process wants none

// What a process knows about its set.  A handler of a signal uses the first four members.
struct processState {
  volatile int setId = NOT_CREATED;
  volatile pid_t creator = 0;               // a child of the creator leaves the set alone
  volatile std::sig_atomic_t creating = 0;  // the kernel may have a set that we do not know
  volatile std::sig_atomic_t awaited = 0;   // the signal that ends us after that
  bool closesAtExit = false;                // `semaphoreClose` is registered
  semaphoreFailureHandler failureHandler = nullptr;
  int owners[CS_COUNT] = {};  // the thread that holds each section, 0 for none
};
constinit processState state;

// A failed check.  Its line is not the real one, but the one that standard error has always
// shown.
struct failure {
  const char* expression = nullptr;
  int line = 0;
  int error = 0;
};

int& owner(unsigned int index) {
  ASSERT(index < CS_COUNT);
  return state.owners[index];
}

void removeSet() {
  if (state.setId >= 0 && state.creator == getpid()) {
    semctl(state.setId, 0, IPC_RMID);
  }
}

// Reports a failed check straight to standard error: event reports enter sections
// themselves.
[[noreturn]] void fail(const failure& why) {
  char text[200];
  const int length = std::snprintf(text, sizeof text, "%s in ../utilities/unix/semaphore_unx@%d\n",
                                   why.expression, why.line);
  // The process ends here, whether or not the text could be written.
  [[maybe_unused]] const ssize_t written =
      write(STDERR_FILENO, text, static_cast<std::size_t>(length));
  semaphoreClose();
  if (state.failureHandler != nullptr) {
    text[length - 1] = '\0';
    state.failureHandler(text, why.error);
  }
  std::abort();
}

// One try: a call that a signal interrupts has failed, and is not repeated.
bool change(int id, int section, short by, short flags) {
  struct sembuf operation = {static_cast<unsigned short>(section), by, flags};
  return semop(id, &operation, 1) == 0;
}

// The kernel numbers its sets from 0, and 0 counts as a failure.  A set of one
// semaphore takes number 0 meanwhile, so that the set for the sections never
// gets it.
int drawSet() {
  const int placeholder = semget(IPC_PRIVATE, 1, 0600);
  errno = 0;
  const int result = semget(IPC_PRIVATE, CS_COUNT, 0666);
  const int error = errno;
  if (placeholder >= 0) {
    semctl(placeholder, 0, IPC_RMID);
  }
  errno = error;
  return result;
}

// Makes the new set and returns its id.  On failure it returns -1, and `why` says why.
int createSet(failure& why) {
  const auto passes = [&why](bool passed, const char* expression, int line) {
    if (!passed) {
      why = {expression, line, errno};
    }
    errno = 0;
    return passed;
  };
  const int result = drawSet();
  if (!passes(result > 0, "result > 0", 60)) {
    return -1;
  }
  for (int offset = 0; offset < CS_COUNT; offset++) {
    if (!passes(0 == semctl(result, offset, GETVAL), "0 == semctl(result, offset, GETVAL)", 69) ||
        !passes(change(result, offset, 1, IPC_NOWAIT), "0 == semop (result, &operation, 1)", 70) ||
        !passes(1 == semctl(result, offset, GETVAL), "1 == semctl(result, offset, GETVAL)", 71)) {
      semctl(result, 0, IPC_RMID);
      return -1;
    }
  }
  return result;
}

// Makes the set, or ends the process.
void makeSet() {
  failure why;
  state.creating = 1;
  const int created = createSet(why);
  if (created > 0) {
    state.creator = getpid();
    state.setId = created;
  }
  state.creating = 0;
  if (state.awaited != 0) {
    semaphoreEndBy(state.awaited);
  }
  if (created <= 0) {
    fail(why);
  }
  if (!state.closesAtExit) {
    state.closesAtExit = std::atexit(semaphoreClose) == 0;
  }
}

}  // namespace

int semaphoreSet(bool close) {
  if (close) {
    removeSet();
    if (state.setId >= RELEASED) {
      state.setId = FINISH_VALUE;
    }
  } else if (state.setId == NOT_CREATED || state.setId == RELEASED) {
    makeSet();
  }
  return state.setId;
}

void semaphoreClose() {
  semaphoreSet(true);
}

void semaphoreRelease() {
  if (state.setId >= 0 && state.creator == getpid()) {
    removeSet();
    state.setId = RELEASED;
  }
}

void semaphoreAdopt() {
  if (state.setId >= 0) {
    state.creator = getpid();
  }
}

void semaphoreForgo() {
  removeSet();
  state.setId = FORGONE;
}

bool semaphoreTry(int& error) {
  // No signal may end the process until the set is removed again.
  sigset_t all;
  sigset_t given;
  sigfillset(&all);
  sigprocmask(SIG_BLOCK, &all, &given);
  failure why;
  const int set = createSet(why);
  if (set > 0) {
    semctl(set, 0, IPC_RMID);
  }
  sigprocmask(SIG_SETMASK, &given, nullptr);
  error = why.error;
  return set > 0;
}

void semaphoreOnFailure(semaphoreFailureHandler handler) {
  state.failureHandler = handler;
}

void semaphoreEndBy(int sig) {
  if (state.creating != 0) {
    state.awaited = sig;
    return;
  }
  removeSet();
  std::signal(sig, SIG_DFL);
  sigset_t own;
  sigemptyset(&own);
  sigaddset(&own, sig);
  sigprocmask(SIG_UNBLOCK, &own, nullptr);
  std::raise(sig);
}

criticalSection::criticalSection(sectionId id, bool checked) : m_id(id) {
  const int set_id = semaphoreSet(false);
  if (set_id < 1 && set_id != FORGONE) {
    if (set_id == FINISH_VALUE && checked) {
      return;
    }
    fail({"set_id == FINISH_VALUE && checked", 120, 0});
  }
  if (set_id != FORGONE && !change(set_id, m_id, -1, 0)) {
    fail({"0 == semop(set_id, &operation, 1)", 123, errno});
  }
  owner(static_cast<unsigned int>(m_id)) = Thread::threadId();
  m_okay = true;
}

criticalSection::~criticalSection() {
  const int set_id = semaphoreSet(false);
  if (set_id == FINISH_VALUE) {
    return;
  }
  owner(static_cast<unsigned int>(m_id)) = 0;
  if (set_id != FORGONE && !change(set_id, m_id, 1, 0)) {
    fail({"0 == semop(set_id, &operation, 1)", 136, errno});
  }
}

bool criticalSection::have(sectionId id) {
  const int thread = Thread::threadId();
  for (int section = CS_COUNT - 1; section >= 0; section--) {
    if (section != id && owner(static_cast<unsigned int>(section)) == thread) {
      return false;
    }
  }
  return owner(static_cast<unsigned int>(id)) == thread;
}
