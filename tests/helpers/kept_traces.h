// SPDX-License-Identifier: MIT
// Makes the leak checker of the sanitizers ignore the lines of stack traces.  A trace
// does not free them on purpose: it may be written while the heap is broken.
#pragma once

extern "C" [[gnu::weak]] const char* __lsan_default_suppressions() {
  return "leak:backtrace_symbols\n";
}
