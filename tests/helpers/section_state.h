// SPDX-License-Identifier: MIT
// What the library says about its critical sections and of their semaphore set.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>

#include "children.h"
#include "semaphore_sets.h"
#include "threading.h"

/// All sections.
inline constexpr sectionId sections[] = {CS_STDOUT,  CS_LOGOUT,     CS_REFCOUNT,
                                         CS_NETWORK, CS_NAME_ALLOC, CS_STACK};

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
