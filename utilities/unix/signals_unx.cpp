// SPDX-License-Identifier: MIT
#include <execinfo.h>
#include <ucontext.h>

#include <csignal>
#include <cstdlib>
#include <ostream>

#include "../standard_error.h"
#include "frames.h"
#include "processes.h"
#include "stack.h"

const char* lastFile = nullptr;
int lastLine = -1;
void (*sigHandler)(int) = signalHandler;

namespace {

// Gives the handlers a stack to run on when the program's own has overflowed.  If the program
// already has one for this, it stays.
void giveStack() {
  static char room[131072];
  stack_t alternate{};
  if (sigaltstack(nullptr, &alternate) == 0 && (alternate.ss_flags & SS_DISABLE) != 0) {
    alternate.ss_sp = room;
    alternate.ss_size = sizeof room;
    alternate.ss_flags = 0;
    sigaltstack(&alternate, nullptr);
  }
  for (const int sig : {SIGILL, SIGTRAP, SIGBUS, SIGFPE, SIGSEGV, SIGABRT}) {
    struct sigaction installed {};
    if (sigaction(sig, nullptr, &installed) == 0) {
      installed.sa_flags |= SA_ONSTACK;
      sigaction(sig, &installed, nullptr);
    }
  }
}

// Writes what `stack` writes, but does not allocate: the fault may be in the allocator, or
// may have interrupted its work.
void writeTrace(std::ostream& out) {
  ucontext_t context;
  if (getcontext(&context) != 0) {
    out << "getcontext failed\n";
    return;
  }
  out << "Stack trace:\n";
  void* frames[100];
  internal::writeFrames(out, frames, backtrace(frames, 100));
  out << "End of stack trace\n";
}

}  // namespace

void stack::installHandler() {
  for (const int sig : {SIGILL, SIGTRAP, SIGBUS, SIGFPE, SIGSEGV}) {
    std::signal(sig, sigHandler);
  }
  std::signal(SIGABRT, SIGABRThandler);
  giveStack();
  // The first call loads a library.  In a handler it would be too late for that.
  void* frame = nullptr;
  backtrace(&frame, 1);
}

void stack::position(const char* file, int line) {
  lastFile = file;
  lastLine = file != nullptr ? line : -1;
}

void signalHandler(int sig) {
  static constinit volatile std::sig_atomic_t done = 0;
  if (done != 0) {
    std::abort();
  }
  done = 1;
  std::ostream& out = internal::standardError();
  out << "signal " << sig << " caught: ";
  if (lastFile != nullptr) {
    out << " after line " << lastLine << " in " << lastFile;
  }
  out << std::endl;
  writeTrace(out);
  out << std::endl;
  Thread::shutDown();
}

void SIGABRThandler(int) {
  Thread::shutDown();
}
