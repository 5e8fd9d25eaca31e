// SPDX-License-Identifier: MIT
// The system's functions that the library and the programs call, as tests see them: each can
// be replaced, so that it fails, answers what the test wants, or is watched.  After each test
// all are the real ones again.
//
// A program of tests says WRAPS in CMakeLists.txt.  A source replaces what all its tests need
// in one place, under the name of the file; a test or a fixture may replace more.
//
//     int failingFork() { errno = EAGAIN; return -1; }
//     const replacedCalls here(__FILE__, [] { systemCalls::fork.replace(failingFork); });
//
// Replacements hold before `main`, and in children too.  What calls through here neither
// allocates nor changes `errno`.
#pragma once

#include <fcntl.h>
#include <regex.h>
#include <sys/sem.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/types.h>
#include <ucontext.h>

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <ctime>

union semaphoreArgument;  // semaphore_sets.h

/// What all functions that can be replaced have in common.
class replaceableCall {
 public:
  replaceableCall(const replaceableCall&) = delete;
  replaceableCall& operator=(const replaceableCall&) = delete;

  /// Makes all functions the real ones again.
  static void restoreAll();

 protected:
  constexpr replaceableCall() = default;
  ~replaceableCall() = default;

  void remember();
  virtual void restore() = 0;

 private:
  replaceableCall* m_next = nullptr;  // of those that are replaced
  bool m_replaced = false;
};

template <class Function>
class systemCall;

/// A function of the system.
template <class Result, class... Arguments>
class systemCall<Result(Arguments...)> final : public replaceableCall {
 public:
  using function = Result (*)(Arguments...);

  constexpr systemCall(const char* itsName, function actual)
      : name(itsName), real(actual), m_called(actual) {}

  /// From now to the end of the test, `by` is called instead.
  void replace(function by) {
    m_called = by;
    remember();
  }

  /// For what the linker calls instead of the function.
  Result operator()(Arguments... arguments) const { return m_called(arguments...); }

  const char* const name;
  const function real;  ///< the system's own

 private:
  void restore() override { m_called = real; }

  function m_called;
};

namespace systemCalls {

// Files.  `open` has a mode that counts only where it creates one.
extern systemCall<int(const char* path, int flags, mode_t mode)> open;
extern systemCall<int(int descriptor, int command, std::intptr_t argument)> fcntl;
extern systemCall<int(int descriptor)> close;
extern systemCall<ssize_t(int descriptor, void* data, std::size_t size)> read;
extern systemCall<ssize_t(int descriptor, const void* data, std::size_t size)> write;
extern systemCall<int(int descriptor)> fsync;
extern systemCall<int(int descriptor, int what)> flock;
extern systemCall<int(int descriptor, mode_t mode)> fchmod;
extern systemCall<int(const char* path, mode_t mode)> mkdir;
extern systemCall<int(const char* from, const char* to)> rename;
extern systemCall<int(const char* path)> unlink;
extern systemCall<ssize_t(const char* path, char* into, std::size_t size)> readlink;
extern systemCall<int(const char* path, struct stat* details)> stat;
extern systemCall<int(const char* path, struct stat* details)> lstat;
extern systemCall<int(int descriptor, struct stat* details)> fstat;
extern systemCall<int(const char* path, struct stat64* details)> stat64;

// Processes.
extern systemCall<pid_t()> fork;
extern systemCall<pid_t(pid_t child, int* status, int options)> waitpid;
extern systemCall<int(const char* file, char* const* arguments)> execvp;

// Semaphores.
extern systemCall<int(key_t key, int count, int flags)> semget;
extern systemCall<int(int set, int number, int command, semaphoreArgument argument)> semctl;
extern systemCall<int(int set, sembuf* operations, std::size_t count)> semop;

// The clock, and chance.
extern systemCall<int(timeval* now, void* zone)> gettimeofday;
extern systemCall<int(const timespec* request, timespec* remainder)> nanosleep;
extern systemCall<long()> random;
extern systemCall<void(unsigned int seed)> srandom;

// Texts.
extern systemCall<int(regex_t* expression, const char* pattern, int flags)> regcomp;
extern systemCall<int(const regex_t* expression, const char* subject, std::size_t positions,
                      regmatch_t* found, int flags)>
    regexec;
extern systemCall<void(regex_t* expression)> regfree;
extern systemCall<int(int c, locale_t locale)> tolower_l;
extern systemCall<int(int c, locale_t locale)> toupper_l;
extern systemCall<char*(int code, char* buffer, std::size_t size)> strerror_r;

// Reports to the system, and stacks.
extern systemCall<void(int priority, const char* format, std::va_list arguments)> syslog;
extern systemCall<int(ucontext_t* context)> getcontext;
extern systemCall<char**(void* const* frames, int count)> backtrace_symbols;

// `new (std::nothrow) T[n]`, which yields null where there is no memory.
extern systemCall<void*(std::size_t size)> newArray;

}  // namespace systemCalls

/// Replaces functions before each test of one source; an object at namespace scope.
class replacedCalls {
 public:
  /// `file` is `__FILE__`.
  replacedCalls(const char* file, void (*replace)());
  replacedCalls(const replacedCalls&) = delete;
  replacedCalls& operator=(const replacedCalls&) = delete;

 private:
  friend class callsOfTests;

  const char* m_file;
  void (*m_replace)();
  const replacedCalls* m_next;
};
