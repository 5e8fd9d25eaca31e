// Tells the leak checker of the sanitizers that a stack trace does not free the
// texts of its lines, on purpose: it may be written while the heap is broken.
// For one source file of a program only.
#pragma once

extern "C" const char* __lsan_default_suppressions() {
  return "leak:backtrace_symbols\n";
}
