// SPDX-License-Identifier: MIT
// A function that runs as the very last one of a process: after every function
// that was registered with `atexit`, and after the destructors of all other
// static objects.
#pragma once

#include <utility>

/// The function; none unless a test sets it.
inline void (*atVeryEnd)() = nullptr;

struct veryEnd {
  veryEnd() = default;
  veryEnd(const veryEnd&) = delete;
  veryEnd& operator=(const veryEnd&) = delete;
  ~veryEnd() {
    if (const auto run = std::exchange(atVeryEnd, nullptr); run != nullptr) run();
  }
};

// The object that is constructed first is destroyed last.
__attribute__((init_priority(101))) static veryEnd theVeryEnd;
