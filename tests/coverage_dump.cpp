// Linked into the executables of a build that measures coverage.  It also writes the
// counters when a process ends without the functions that `exit` runs.  (The compiler
// does so when a process becomes another program, and when it forks.)

extern "C" {

void __gcov_dump();

[[noreturn]] void __real_abort();
[[noreturn]] void __real__exit(int status);
[[noreturn]] void __real__Exit(int status);
[[noreturn]] void __real___assert_fail(const char* assertion, const char* file, unsigned int line,
                                       const char* function);

[[noreturn]] void __wrap_abort();
[[noreturn]] void __wrap__exit(int status);
[[noreturn]] void __wrap__Exit(int status);
[[noreturn]] void __wrap___assert_fail(const char* assertion, const char* file, unsigned int line,
                                       const char* function);

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
