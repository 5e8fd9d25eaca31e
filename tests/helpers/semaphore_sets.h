// Looks into System V semaphore sets, and tells what the library says of them.
#pragma once

#include <sys/ipc.h>
#include <sys/sem.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>

#include "threading.h"

/// The fourth argument of `semctl`, which its callers define.
union semaphoreArgument {
  int val;
  semid_ds* buf;
  unsigned short* array;
  seminfo* info;
};

/// All sections.
inline constexpr sectionId sections[] = {CS_STDOUT,  CS_LOGOUT,     CS_REFCOUNT,
                                         CS_NETWORK, CS_NAME_ALLOC, CS_STACK};

inline int semaphoreValue(int set, int number) {
  return semctl(set, number, GETVAL);
}

inline bool setExists(int set) {
  return semctl(set, 0, GETVAL) >= 0;
}

/// Whether a set was removed; if it was not, it is now.
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

/// Waits until a process waits for a semaphore; false when that takes a minute.
inline bool someoneWaits(int set, int number) {
  for (int i = 0; i < 60000; ++i) {
    if (semctl(set, number, GETNCNT) == 1) return true;
    usleep(1000);
  }
  return false;
}

/// Whether `text` is exactly the one line of a failed semaphore call.
inline testing::AssertionResult isFailureLine(std::string_view text, std::string_view expression) {
  const std::string start = std::string(expression) + " in ../utilities/unix/semaphore_unx@";
  std::size_t end = start.size();
  if (text.starts_with(start)) {
    while (end < text.size() && text[end] >= '0' && text[end] <= '9') ++end;
    if (end > start.size() && text.substr(end) == "\n") return testing::AssertionSuccess();
  }
  return testing::AssertionFailure()
         << "not the line \"" << start << "NNN\\n\": " << testing::PrintToString(std::string(text));
}

/// Tells a number on standard output.
inline void tell(const char* name, int value) {
  dprintf(STDOUT_FILENO, "%s %d\n", name, value);
}

/// The sections that the calling thread is told to have: "0 0 1 0 0 0".
inline std::string allHave() {
  std::string result;
  for (const sectionId id : sections) {
    if (!result.empty()) result += ' ';
    result += criticalSection::have(id) ? '1' : '0';
  }
  return result;
}

/// Tells all of that on standard output.
inline void tellState(const char* when, int set) {
  dprintf(STDOUT_FILENO, "%s: %s, have %s\n", when, sixValues(set).c_str(), allHave().c_str());
}
