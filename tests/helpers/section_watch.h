// SPDX-License-Identifier: MIT
// What the library does to the critical sections, seen at the system call.  For programs
// that say WRAPS.
//
//     const replacedCalls here(__FILE__, sectionWatch::start);
#pragma once

#include <sys/sem.h>

#include <cstddef>

#include "system_calls.h"
#include "threading.h"

struct sectionWatch {
  static inline int entries[CS_COUNT];
  static inline bool held[CS_COUNT];

  /// Watches until the end of the test.
  static void start() { systemCalls::semop.replace(operate); }

 private:
  // A section is taken by -1 and given back by +1.
  static int operate(int set, sembuf* operations, std::size_t count) {
    const int result = systemCalls::semop.real(set, operations, count);
    if (result == 0 && count == 1 && operations->sem_num < CS_COUNT) {
      held[operations->sem_num] = operations->sem_op < 0;
      if (operations->sem_op < 0) {
        entries[operations->sem_num]++;
      }
    }
    return result;
  }
};

/// How often `action` takes a section.
template <class Action>
int entriesDuring(sectionId section, Action&& action) {
  const int before = sectionWatch::entries[section];
  action();
  return sectionWatch::entries[section] - before;
}
