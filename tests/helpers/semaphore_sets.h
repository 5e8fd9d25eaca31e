// Looks into System V semaphore sets, and prints what the library says about them.
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

/// The fourth argument of `semctl`.  Callers have to define its type.
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

/// Whether `text` is exactly one line, that of a failed semaphore call.
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

/// Prints a number on standard output.
inline void tell(const char* name, int value) {
  dprintf(STDOUT_FILENO, "%s %d\n", name, value);
}

/// The sections that the library says the calling thread has: "0 0 1 0 0 0".
inline std::string allHave() {
  std::string result;
  for (const sectionId id : sections) {
    if (!result.empty()) result += ' ';
    result += criticalSection::have(id) ? '1' : '0';
  }
  return result;
}

/// Prints all of that on standard output.
inline void tellState(const char* when, int set) {
  dprintf(STDOUT_FILENO, "%s: %s, have %s\n", when, sixValues(set).c_str(), allHave().c_str());
}
