// Linked into the executables of a build that measures coverage: the counters are also
// written where a process ends without running what `exit` runs.  (Where it becomes
// another program, and where it forks, the compiler sees to that.)

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
