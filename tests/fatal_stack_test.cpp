// SPDX-License-Identifier: MIT
// Faults after which little still works: an overflowed stack, and a broken allocator.
// This program's allocator is the C library's until a test makes it fail.

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string>

#include "children.h"
#include "kept_traces.h"
#include "stack.h"

namespace {

volatile int kept = 0;  // stops calls from becoming jumps

}  // namespace

// Sanitizers bring an allocator of their own, and counters are written with one.
#if !defined(SANITIZED) && !defined(COUNTED)
#define BROKEN_ALLOCATOR
namespace {

enum allocatorState { WORKS, FAULTS, IS_BROKEN };
volatile allocatorState allocator = WORKS;
volatile int* volatile nowhere = nullptr;

// Faults once, and then shows that it was used again.
void useAllocator() {
  if (allocator == FAULTS) {
    allocator = IS_BROKEN;
    *nowhere = 1;
  } else if (allocator == IS_BROKEN) {
    const char said[] = "the allocator was used again\n";
    if (write(STDERR_FILENO, said, sizeof said - 1) > 0) _exit(97);
    _exit(98);
  }
}

}  // namespace

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void __libc_free(void* block);

void* malloc(std::size_t size) {
  useAllocator();
  return __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) {
  useAllocator();
  return __libc_calloc(count, size);
}
void* realloc(void* block, std::size_t size) {
  useAllocator();
  return __libc_realloc(block, size);
}
void free(void* block) {
  useAllocator();
  __libc_free(block);
}
}

TEST(signalHandler, TracesAFaultOfTheAllocatorWithoutAllocating) {
  const processEnd end = runSharingChild([] {
    stack::installHandler();
    allocator = FAULTS;
    kept = kept + (std::malloc(1) != nullptr ? 1 : 0);
  });
  EXPECT_EQ(end.ending, "signal 6") << end.errors;
  EXPECT_EQ(end.errors.rfind("signal 11 caught: \nStack trace:\n", 0), 0U) << end.errors;
  EXPECT_NE(end.errors.find("(malloc+0x"), std::string::npos) << end.errors;
  EXPECT_NE(end.errors.find("\nEnd of stack trace\n\n"), std::string::npos) << end.errors;
  EXPECT_EQ(end.errors.find("used again"), std::string::npos) << end.errors;
}

#endif

// Exported, so that its name is in the trace.
[[gnu::noinline]] void overflow(int depth) {
  volatile char page[4096];
  page[0] = static_cast<char>(depth);
  void (*volatile again)(int) = overflow;
  again(depth + 1);
  kept = kept + page[0];
}

namespace {

// Expects one whole trace of signal 11 with a line that has `part`.
void expectTrace(const processEnd& end, const std::string& part) {
  EXPECT_EQ(end.ending, "signal 6") << end.errors;
  const std::string begin = "signal 11 caught: \nStack trace:\n";
  const std::string finish = "\nEnd of stack trace\n\n";
  ASSERT_GT(end.errors.size(), begin.size() + finish.size()) << end.errors;
  EXPECT_EQ(end.errors.substr(0, begin.size()), begin);
  EXPECT_EQ(end.errors.substr(end.errors.size() - finish.size()), finish);
  EXPECT_NE(end.errors.find(part), std::string::npos) << end.errors;
}

TEST(signalHandler, TracesAnOverflownStack) {
  const processEnd end = runSharingChild([] {
    const rlimit small = {1024 * 1024, 1024 * 1024};
    setrlimit(RLIMIT_STACK, &small);
    stack::installHandler();
#if defined(BROKEN_ALLOCATOR)
    allocator = IS_BROKEN;
#endif
    overflow(0);
  });
  expectTrace(end, "(overflow(int)+0x");
}

TEST(signalHandler, HasAnAlternateStackForEachSignalThatItIsInstalledFor) {
  const processEnd end = runSharingChild([] {
    stack::installHandler();
    for (const int signal : {SIGILL, SIGTRAP, SIGABRT, SIGBUS, SIGFPE, SIGSEGV}) {
      struct sigaction current = {};
      if (sigaction(signal, nullptr, &current) != 0 || (current.sa_flags & SA_ONSTACK) == 0) {
        std::_Exit(1);
      }
    }
    stack_t alternate = {};
    if (sigaltstack(nullptr, &alternate) != 0 || alternate.ss_flags != 0) std::_Exit(2);
  });
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(signalHandler, LeavesAnAlternateStackOfTheProgramAlone) {
  static char own[128 * 1024];
  const processEnd end = runSharingChild([] {
    stack_t alternate = {};
    alternate.ss_sp = own;
    alternate.ss_size = sizeof own;
    if (sigaltstack(&alternate, nullptr) != 0) std::_Exit(1);
    stack::installHandler();
    stack_t current = {};
    if (sigaltstack(nullptr, &current) != 0 || current.ss_sp != own) std::_Exit(2);
  });
  EXPECT_EQ(end.ending, "exit 0");
}

}  // namespace
