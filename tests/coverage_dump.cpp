// SPDX-License-Identifier: MIT
// Linked into the executables of a build that measures coverage.  It also writes the
// counters when a process ends without the functions that `exit` runs.  (The compiler
// does so when a process becomes another program, and when it forks.)

#include <sys/resource.h>

#include <array>
#include <cstddef>

namespace {

// What tests allow a program is not meant for the counters: while they are written, limits
// are as high as they may be.
class liftedLimits {
 public:
  liftedLimits() {
    for (std::size_t i = 0; i < RESOURCES.size(); ++i) {
      rlimit& limit = m_given[i];
      if (getrlimit(RESOURCES[i], &limit) == 0) {
        const rlimit most{limit.rlim_max, limit.rlim_max};
        setrlimit(RESOURCES[i], &most);
      }
    }
  }
  ~liftedLimits() {
    for (std::size_t i = 0; i < RESOURCES.size(); ++i) {
      setrlimit(RESOURCES[i], &m_given[i]);
    }
  }
  liftedLimits(const liftedLimits&) = delete;
  liftedLimits& operator=(const liftedLimits&) = delete;

 private:
  static constexpr std::array RESOURCES{RLIMIT_AS, RLIMIT_FSIZE};
  std::array<rlimit, RESOURCES.size()> m_given{};
};

}  // namespace

extern "C" {

void __gcov_dump();

void __real___gcov_dump_one(void* root);
void __real___gcov_exit();
[[noreturn]] void __real_abort();
[[noreturn]] void __real__exit(int status);
[[noreturn]] void __real__Exit(int status);
[[noreturn]] void __real___assert_fail(const char* assertion, const char* file, unsigned int line,
                                       const char* function);

void __wrap___gcov_dump_one(void* root);
void __wrap___gcov_exit();
[[noreturn]] void __wrap_abort();
[[noreturn]] void __wrap__exit(int status);
[[noreturn]] void __wrap__Exit(int status);
[[noreturn]] void __wrap___assert_fail(const char* assertion, const char* file, unsigned int line,
                                       const char* function);

void __wrap___gcov_dump_one(void* root) {
  const liftedLimits lifted;
  __real___gcov_dump_one(root);
}

void __wrap___gcov_exit() {
  const liftedLimits lifted;
  __real___gcov_exit();
}

void __wrap_abort() {
  __gcov_dump();
  __real_abort();
}

void __wrap__exit(int status) {
  __gcov_dump();
  __real__exit(status);
}

void __wrap__Exit(int status) {
  __gcov_dump();
  __real__Exit(status);
}

void __wrap___assert_fail(const char* assertion, const char* file, unsigned int line,
                          const char* function) {
  __gcov_dump();
  __real___assert_fail(assertion, file, line, function);
}

}  // extern "C"
