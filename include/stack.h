// SPDX-License-Identifier: MIT
// Stack traces and the handler for fatal signals.
//
// A `stack` is a value without content: the trace is taken when it is written,
// of the thread that writes it.  Traces may be written before `main`, in a forked child
// and at exit.  The signal handler does more than a handler is promised to be able to
// (it writes to a stream): it is the last thing that a broken process does.
//
// What is kept here is for one thread of a process only.
#pragma once

#include <iosfwd>
#include <list>
#include <string>
#include <string_view>

#pragma GCC visibility push(default)

/// Writes a trace of the calling thread's stack.
class stack {
 public:
  stack() = default;

  /// Writes "Stack trace:", at most 100 frames from the innermost out, each on a
  /// line of its own with its C++ name made readable, and "End of stack trace".  A
  /// function of the program has a name only if the program exports it, as `-rdynamic`
  /// has it do; a static, position-independent program exports by a `--dynamic-list`
  /// and needs a table of the older form, `--hash-style=sysv`.
  std::ostream& write(std::ostream& out) const;

  /// Installs `sigHandler` for SIGILL, SIGTRAP, SIGBUS, SIGFPE and SIGSEGV, and
  /// `SIGABRThandler` for SIGABRT.  For programs that want a trace of their
  /// crashes; the library never calls it.  The handlers have a stack of their own, so that an
  /// overflown one has its trace, too: that of the program if `sigaltstack` was called before,
  /// which is then to be of 64 KiB or more.
  static void installHandler();

  /// Records the source position that the fatal-signal handler names.  `file` is
  /// not copied and must stay; null forgets the position.
  static void position(const char* file, int line);

 private:
  std::list<void*> m_data;
};

/// Calls `write`.
std::ostream& operator<<(std::ostream& out, const stack& trace);

/// The last source position recorded, null and -1 when none was.
extern const char* lastFile;
extern int lastLine;

/// The handler that `installHandler` installs: `signalHandler` unless changed.
extern void (*sigHandler)(int);

/// Writes the signal, the recorded position and a stack trace to standard error,
/// begins the shutdown and returns, so that the fault happens again; the second
/// call in a process aborts.  It allocates nothing, since the fault may be one of the
/// allocator.  (Without `installHandler`, the first trace of a process may load a library.)
void signalHandler(int sig);
/// Begins the shutdown and lets the abort go on.
void SIGABRThandler(int sig);

/// Makes one line of `backtrace_symbols` readable: the mangled name between
/// "(_Z" and the next "+" is replaced by `demangle`'s reading of it.
std::string convertSymbol(std::string_view line);

/// A reading of a mangled function name (Itanium C++ ABI, section 5.1) without
/// its "_Z": enough for functions with simple arguments.  What it does not
/// understand it marks or passes over.
///
///     demangle("N3foo3barEiPKc")   // foo::bar(int, const char*)
std::string demangle(std::string_view mangled);

#pragma GCC visibility pop
