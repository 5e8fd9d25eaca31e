// SPDX-License-Identifier: MIT
// Looks into System V semaphore sets: into one, and at all those of the system.
#pragma once

#include <gtest/gtest.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

/// The fourth argument of `semctl`.  Callers have to define its type.
union semaphoreArgument {
  int val;
  semid_ds* buf;
  unsigned short* array;
  seminfo* info;
};

inline int semaphoreValue(int set, int number) {
  return semctl(set, number, GETVAL);
}

inline bool setExists(int set) {
  return semctl(set, 0, GETVAL) >= 0;
}

/// Whether a set was removed.  If not, removes it.
inline bool isGone(int set) {
  if (!setExists(set)) return true;
  semctl(set, 0, IPC_RMID);
  return false;
}

/// The values of the first six semaphores, such as "1 1 0 1 1 1".
inline std::string sixValues(int set) {
  std::string result;
  for (int i = 0; i < 6; ++i) {
    if (i > 0) result += ' ';
    result += std::to_string(semaphoreValue(set, i));
  }
  return result;
}

/// Waits until a process waits for a semaphore.  False after a minute.
inline bool someoneWaits(int set, int number) {
  for (int i = 0; i < 60000; ++i) {
    if (semctl(set, number, GETNCNT) == 1) return true;
    usleep(1000);
  }
  return false;
}

/// The ids of the sets that this process can see.
inline std::vector<int> setsOfAll() {
  std::vector<int> result;
  std::ifstream in("/proc/sysvipc/sem");
  std::string line;
  EXPECT_TRUE(std::getline(in, line)) << "/proc/sysvipc/sem cannot be read";
  while (std::getline(in, line)) {
    std::istringstream fields(line);
    int key = 0;
    int id = 0;
    fields >> key >> id;
    result.push_back(id);
  }
  return result;
}

/// The sets on whose first semaphore `process` acted last.
inline std::vector<int> setsOf(pid_t process) {
  std::vector<int> result;
  for (const int id : setsOfAll()) {
    if (semctl(id, 0, GETPID) == process) {
      result.push_back(id);
    }
  }
  return result;
}
