// SPDX-License-Identifier: MIT
// Who the calling thread is.

#include <unistd.h>

#include <ostream>

#include "conversion.h"
#include "processes.h"

int Thread::processId() {
  return getpid();
}

std::ostream& operator<<(std::ostream& out, thisThreadId) {
  // As a text, so that no flag and no locale of the stream changes it.
  return out << int2decimal(Thread::processId()) + '/' + int2decimal(Thread::threadId());
}
