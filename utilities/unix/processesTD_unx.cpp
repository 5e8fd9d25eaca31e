// Who the calling thread is.

#include <unistd.h>

#include <ostream>

#include "processes.h"

int Thread::processId() {
  return getpid();
}

std::ostream& operator<<(std::ostream& out, thisThreadId) {
  return out << Thread::processId() << '/' << Thread::threadId();
}
