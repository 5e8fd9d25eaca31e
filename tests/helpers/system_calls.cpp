// SPDX-License-Identifier: MIT
#include "system_calls.h"

#include <execinfo.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include <cstring>
#include <new>

#include "semaphore_sets.h"

namespace {

constinit replaceableCall* replaced = nullptr;  // the last of a list

constinit const replacedCalls* ofSources = nullptr;  // likewise

// The functions that have arguments of any number.  Only what `open` creates has a mode.
bool hasMode(int flags) {
  return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
}

bool hasArgument(int semctlCommand) {
  switch (semctlCommand) {
    case GETVAL:
    case GETPID:
    case GETNCNT:
    case GETZCNT:
    case IPC_RMID:
      return false;
    default:
      return true;
  }
}

}  // namespace

// The linker gives the system's functions the name __real_NAME, and calls __wrap_NAME instead
// of NAME.  Where `time_t` is wider than `long`, the headers use others instead of some.
#ifdef WIDE_TIME
#define WRAPPED(prefix, name, wide) prefix##wide
#else
#define WRAPPED(prefix, name, wide) prefix##name
#endif
#define REAL_OPEN WRAPPED(__real_, open, open64)
#define WRAP_OPEN WRAPPED(__wrap_, open, open64)
#define WRAP_OPEN_2 WRAPPED(__wrap_, __open_2, __open64_2)
#define REAL_FCNTL WRAPPED(__real_, fcntl, __fcntl_time64)
#define WRAP_FCNTL WRAPPED(__wrap_, fcntl, __fcntl_time64)
#define REAL_SEMCTL WRAPPED(__real_, semctl, __semctl64)
#define WRAP_SEMCTL WRAPPED(__wrap_, semctl, __semctl64)

extern "C" {
int REAL_OPEN(const char* path, int flags, ...);
int WRAP_OPEN(const char* path, int flags, ...);
int WRAP_OPEN_2(const char* path, int flags);
ssize_t __wrap___read_chk(int descriptor, void* data, std::size_t size, std::size_t room);
ssize_t __wrap___readlink_chk(const char* path, char* into, std::size_t size, std::size_t room);
int REAL_FCNTL(int descriptor, int command, ...);
int WRAP_FCNTL(int descriptor, int command, ...);
int REAL_SEMCTL(int set, int number, int command, ...);
int WRAP_SEMCTL(int set, int number, int command, ...);
void __wrap_syslog(int priority, const char* format, ...);
void __wrap___syslog_chk(int priority, int flag, const char* format, ...);
void __real_vsyslog(int priority, const char* format, std::va_list arguments);
void __wrap_vsyslog(int priority, const char* format, std::va_list arguments);
void __wrap___vsyslog_chk(int priority, int flag, const char* format, std::va_list arguments);
}

#define WRAP(result, name, parameters, arguments) \
  WRAP_NAMES(result, name, __real_##name, __wrap_##name, parameters, arguments)
#define WRAP_WIDE(result, name, wide, parameters, arguments)                                       \
  WRAP_NAMES(result, name, WRAPPED(__real_, name, wide), WRAPPED(__wrap_, name, wide), parameters, \
             arguments)
#define WRAP_NAMES(result, name, actual, wrapper, parameters, arguments)    \
  extern "C" result actual parameters;                                      \
  extern "C" result wrapper parameters;                                     \
  constinit systemCall<result parameters> systemCalls::name(#name, actual); \
  result wrapper parameters {                                               \
    return systemCalls::name arguments;                                     \
  }

WRAP(int, close, (int descriptor), (descriptor))
WRAP(ssize_t, read, (int descriptor, void* data, std::size_t size), (descriptor, data, size))
WRAP(ssize_t, write, (int descriptor, const void* data, std::size_t size), (descriptor, data, size))
WRAP(int, fsync, (int descriptor), (descriptor))
WRAP(int, flock, (int descriptor, int what), (descriptor, what))
WRAP(int, fchmod, (int descriptor, mode_t mode), (descriptor, mode))
WRAP(int, mkdir, (const char* path, mode_t mode), (path, mode))
WRAP(int, rename, (const char* from, const char* to), (from, to))
WRAP(int, unlink, (const char* path), (path))
WRAP(ssize_t, readlink, (const char* path, char* into, std::size_t size), (path, into, size))
WRAP_WIDE(int, lstat, __lstat64_time64, (const char* path, struct stat* details), (path, details))
WRAP_WIDE(int, fstat, __fstat64_time64, (int descriptor, struct stat* details),
          (descriptor, details))
#ifndef WIDE_TIME
WRAP(int, stat, (const char* path, struct stat* details), (path, details))
#endif
WRAP_WIDE(int, stat64, __stat64_time64, (const char* path, struct stat64* details), (path, details))
WRAP(pid_t, fork, (), ())
WRAP(pid_t, waitpid, (pid_t child, int* status, int options), (child, status, options))
WRAP(int, execvp, (const char* file, char* const* arguments), (file, arguments))
WRAP(int, semget, (key_t key, int count, int flags), (key, count, flags))
WRAP(int, semop, (int set, sembuf* operations, std::size_t count), (set, operations, count))
WRAP_WIDE(int, gettimeofday, __gettimeofday64, (timeval * now, void* zone), (now, zone))
WRAP_WIDE(int, nanosleep, __nanosleep64, (const timespec* request, timespec* remainder),
          (request, remainder))
WRAP(long, random, (), ())
WRAP(void, srandom, (unsigned int seed), (seed))
WRAP(int, regcomp, (regex_t * expression, const char* pattern, int flags),
     (expression, pattern, flags))
WRAP(int, regexec,
     (const regex_t* expression, const char* subject, std::size_t positions, regmatch_t* found,
      int flags),
     (expression, subject, positions, found, flags))
WRAP(void, regfree, (regex_t * expression), (expression))
WRAP(int, tolower_l, (int c, locale_t locale), (c, locale))
WRAP(int, toupper_l, (int c, locale_t locale), (c, locale))
WRAP(char*, strerror_r, (int code, char* buffer, std::size_t size), (code, buffer, size))
WRAP(int, getcontext, (ucontext_t * context), (context))
WRAP(char**, backtrace_symbols, (void* const* frames, int count), (frames, count))

#undef WRAP
#undef WRAP_WIDE
#undef WRAP_NAMES

// One function of the C library then serves both.
#ifdef WIDE_TIME
constinit systemCall<int(const char*, struct stat*)> systemCalls::stat(
    "stat", [](const char* path, struct stat* details) {
      static_assert(sizeof(struct stat) == sizeof(struct stat64));
      return __real___stat64_time64(path, reinterpret_cast<struct stat64*>(details));
    });
#endif

constinit systemCall<int(const char*, int, mode_t)> systemCalls::open(
    "open", [](const char* path, int flags, mode_t mode) { return REAL_OPEN(path, flags, mode); });

int WRAP_OPEN(const char* path, int flags, ...) {
  mode_t mode = 0;
  if (hasMode(flags)) {
    std::va_list more;
    va_start(more, flags);
    mode = va_arg(more, mode_t);
    va_end(more);
  }
  return systemCalls::open(path, flags, mode);
}

// Where calls are checked, compiler and C library choose which have names of their own.
int WRAP_OPEN_2(const char* path, int flags) {
  return systemCalls::open(path, flags, 0);
}

ssize_t __wrap___read_chk(int descriptor, void* data, std::size_t size, std::size_t) {
  return systemCalls::read(descriptor, data, size);
}

ssize_t __wrap___readlink_chk(const char* path, char* into, std::size_t size, std::size_t) {
  return systemCalls::readlink(path, into, size);
}

constinit systemCall<int(int, int, std::intptr_t)> systemCalls::fcntl(
    "fcntl", [](int descriptor, int command, std::intptr_t argument) {
      return REAL_FCNTL(descriptor, command, argument);
    });

// The third argument is a number, an address or nothing: it goes on as it came.
int WRAP_FCNTL(int descriptor, int command, ...) {
  std::va_list more;
  va_start(more, command);
  const auto argument = va_arg(more, std::intptr_t);
  va_end(more);
  return systemCalls::fcntl(descriptor, command, argument);
}

constinit systemCall<int(int, int, int, semaphoreArgument)> systemCalls::semctl(
    "semctl", [](int set, int number, int command, semaphoreArgument argument) {
      return REAL_SEMCTL(set, number, command, argument);
    });

int WRAP_SEMCTL(int set, int number, int command, ...) {
  semaphoreArgument argument = {};
  if (hasArgument(command)) {
    std::va_list more;
    va_start(more, command);
    argument = va_arg(more, semaphoreArgument);
    va_end(more);
  }
  return systemCalls::semctl(set, number, command, argument);
}

// The memory comes from the throwing form, which is the partner of `delete[]`.
constinit systemCall<void*(std::size_t)> systemCalls::newArray("newArray",
                                                               [](std::size_t size) -> void* {
                                                                 try {
                                                                   return ::operator new[](size);
                                                                 } catch (const std::bad_alloc&) {
                                                                   return nullptr;
                                                                 }
                                                               });

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return systemCalls::newArray(size);
}

constinit systemCall<void(int, const char*, std::va_list)> systemCalls::syslog("syslog",
                                                                               __real_vsyslog);

// The C library has it under four names.
void __wrap_syslog(int priority, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  systemCalls::syslog(priority, format, arguments);
  va_end(arguments);
}

void __wrap___syslog_chk(int priority, int, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  systemCalls::syslog(priority, format, arguments);
  va_end(arguments);
}

void __wrap_vsyslog(int priority, const char* format, std::va_list arguments) {
  systemCalls::syslog(priority, format, arguments);
}

void __wrap___vsyslog_chk(int priority, int, const char* format, std::va_list arguments) {
  systemCalls::syslog(priority, format, arguments);
}

void replaceableCall::remember() {
  if (!m_replaced) {
    m_replaced = true;
    m_next = replaced;
    replaced = this;
  }
}

void replaceableCall::restoreAll() {
  while (replaced != nullptr) {
    replaceableCall& call = *replaced;
    call.restore();
    call.m_replaced = false;
    replaced = call.m_next;
  }
}

replacedCalls::replacedCalls(const char* file, void (*replace)())
    : m_file(file), m_replace(replace), m_next(ofSources) {
  ofSources = this;
}

/// Gives each test what its source replaces, and takes all of it back.
class callsOfTests : public testing::EmptyTestEventListener {
  void OnTestStart(const testing::TestInfo& test) override {
    replaceableCall::restoreAll();
    for (const replacedCalls* each = ofSources; each != nullptr; each = each->m_next) {
      if (std::strcmp(each->m_file, test.file()) == 0) {
        each->m_replace();
      }
    }
  }
  void OnTestEnd(const testing::TestInfo&) override { replaceableCall::restoreAll(); }
};

namespace {

// gtest deletes it.
[[maybe_unused]] const bool listening = [] {
  testing::UnitTest::GetInstance()->listeners().Append(new callsOfTests);
  return true;
}();

}  // namespace
