// SPDX-License-Identifier: MIT
#include "semaphores.h"

#include <sys/ipc.h>
#include <sys/sem.h>

#include <algorithm>

namespace hopopen {

namespace {

constexpr int OF_ONE_SET = 6;  // semaphores in the set that hoplaunch draws

// The fourth argument of `semctl`, which its callers define, as far as it is used here.
union semaphoreArgument {
  seminfo* info;
};

}  // namespace

std::optional<int> semaphoreSetsLeft() {
  seminfo limits = {};
  seminfo used = {};
  semaphoreArgument ofLimits;
  semaphoreArgument ofUsed;
  ofLimits.info = &limits;
  ofUsed.info = &used;
  if (semctl(0, 0, IPC_INFO, ofLimits) < 0 || semctl(0, 0, SEM_INFO, ofUsed) < 0) {
    return {};
  }
  const int sets = limits.semmni - used.semusz;
  return std::max(0, std::min(sets, (limits.semmns - used.semaem) / OF_ONE_SET));
}

}  // namespace hopopen
