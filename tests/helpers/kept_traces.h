// Tells the leak checker of the sanitizers that a stack trace does not free the
// texts of its lines, on purpose: it may be written while the heap is broken.
#pragma once

extern "C" [[gnu::weak]] const char* __lsan_default_suppressions() {
  return "leak:backtrace_symbols\n";
}
