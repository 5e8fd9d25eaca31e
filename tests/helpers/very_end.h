// A function that runs as the very last of a process: after every function that
// was registered with `atexit` and after the destructors of all other static
// objects.  For one source file of a program only.
#pragma once

/// What runs; none unless a test sets it.
inline void (*atVeryEnd)() = nullptr;

struct veryEnd {
  veryEnd() = default;
  veryEnd(const veryEnd&) = delete;
  veryEnd& operator=(const veryEnd&) = delete;
  ~veryEnd() {
    if (atVeryEnd != nullptr) atVeryEnd();
  }
};

// What is constructed first is destroyed last.
__attribute__((init_priority(101))) static veryEnd theVeryEnd;
