// Critical sections over one private System V semaphore set.

#include <sys/ipc.h>
#include <sys/sem.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "asserts.h"
#include "processes.h"
#include "threading.h"

namespace {

constexpr int NOT_CREATED = -2;
constexpr int RELEASED = -1;      // removed, but to be created again on demand
constexpr int FINISH_VALUE = -3;  // removed for good

constinit int setId = NOT_CREATED;
constinit pid_t creator = 0;  // a child of the creator leaves the set alone

// The thread that holds each section, 0 for none.
int& owner(unsigned int index) {
  static constinit int owners[CS_COUNT] = {};
  ASSERT(index < CS_COUNT);
  return owners[index];
}

// Reports a failed check straight to standard error: event reports take sections
// themselves.
[[noreturn]] void fail(const char* expression, int line) {
  const std::string text = std::string(expression) + " in ../utilities/unix/semaphore_unx@" +
                           std::to_string(line) + "\n";
  // Whether or not it could be written, the process ends here.
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text.data(), text.size());
  std::abort();
}

bool change(int id, int section, short by, short flags) {
  struct sembuf operation = {static_cast<unsigned short>(section), by, flags};
  return semop(id, &operation, 1) == 0;
}

// The kernel numbers its sets from 0, and 0 counts as a failure.  So that the set
// for the sections is never the first, a set of one semaphore stands in for it
// while that is drawn.
int drawSet() {
  const int placeholder = semget(IPC_PRIVATE, 1, 0600);
  const int result = semget(IPC_PRIVATE, CS_COUNT, 0666);
  if (placeholder >= 0) {
    semctl(placeholder, 0, IPC_RMID);
  }
  return result;
}

int createSet() {
  const int result = drawSet();
  if (!(result > 0)) {
    fail("result > 0", __LINE__);
  }
  const auto check = [result](bool passed, const char* expression, int line) {
    if (!passed) {
      semctl(result, 0, IPC_RMID);
      fail(expression, line);
    }
  };
  for (int offset = 0; offset < CS_COUNT; offset++) {
    check(0 == semctl(result, offset, GETVAL), "0 == semctl(result, offset, GETVAL)", __LINE__);
    check(change(result, offset, 1, IPC_NOWAIT), "0 == semop (result, &operation, 1)", __LINE__);
    check(1 == semctl(result, offset, GETVAL), "1 == semctl(result, offset, GETVAL)", __LINE__);
  }
  static constinit bool registered = false;
  if (!registered) {
    registered = std::atexit(semaphoreClose) == 0;
  }
  return result;
}

void removeSet() {
  if (creator == getpid()) {
    semctl(setId, 0, IPC_RMID);
  }
}

}  // namespace

int semaphoreSet(bool close) {
  if (close) {
    if (setId >= 0) {
      removeSet();
    }
    if (setId >= RELEASED) {
      setId = FINISH_VALUE;
    }
  } else if (setId == NOT_CREATED || setId == RELEASED) {
    setId = createSet();
    creator = getpid();
  }
  return setId;
}

void semaphoreClose() {
  semaphoreSet(true);
}

void semaphoreRelease() {
  if (setId >= 0 && creator == getpid()) {
    removeSet();
    setId = RELEASED;
  }
}

criticalSection::criticalSection(sectionId id, bool checked) : m_id(id) {
  const int set_id = semaphoreSet(false);
  if (set_id < 1) {
    if (set_id == FINISH_VALUE && checked) {
      return;
    }
    fail("set_id == FINISH_VALUE && checked", __LINE__);
  }
  if (!change(set_id, m_id, -1, 0)) {
    fail("0 == semop(set_id, &operation, 1)", __LINE__);
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
  if (!change(set_id, m_id, 1, 0)) {
    fail("0 == semop(set_id, &operation, 1)", __LINE__);
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
