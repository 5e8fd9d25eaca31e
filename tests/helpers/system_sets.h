// The semaphore sets that the system has.
#pragma once

#include <gtest/gtest.h>
#include <sys/ipc.h>
#include <sys/sem.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

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
