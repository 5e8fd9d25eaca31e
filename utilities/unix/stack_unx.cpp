// SPDX-License-Identifier: MIT
#include "stack.h"

#include <execinfo.h>
#include <ucontext.h>

#include <cerrno>
#include <cstdio>
#include <list>
#include <ostream>
#include <string>

#include "frames.h"
#include "lasting.h"

namespace {

// The lines of every trace stay until the end: they help to read a core file.
std::list<char**>& kept() {
  static internal::lasting<std::list<char**>> traces;
  return *traces;
}

// A line of `backtrace_symbols`, which asks the loader for names.  A static program has
// none there: then the line is the address in brackets, and we look up the name.
std::string named(const char* line, const void* frame) {
  const internal::frameName found =
      line[0] == '[' ? internal::exportedName(frame) : internal::frameName();
  if (found.symbol == nullptr) {
    return line;
  }
  char distance[24];
  std::snprintf(distance, sizeof distance, "+%#lx) ", found.distance);
  return std::string(program_invocation_name) + '(' + found.symbol + distance + line;
}

}  // namespace

std::ostream& stack::write(std::ostream& out) const {
  ucontext_t context;
  if (getcontext(&context) != 0) {
    return out << "getcontext failed\n";
  }
  out << "Stack trace:\n";
  void* frames[100];
  const int count = backtrace(frames, 100);
  char** const lines = backtrace_symbols(frames, count);
  kept().push_back(lines);
  for (int i = 0; lines != nullptr && i < count; i++) {
    out << convertSymbol(named(lines[i], frames[i])) << '\n';
  }
  return out << "End of stack trace\n";
}

std::ostream& operator<<(std::ostream& out, const stack& trace) {
  return trace.write(out);
}
