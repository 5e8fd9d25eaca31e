// SPDX-License-Identifier: MIT
// The trace of a crash on an overflowed stack, where little still works.

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstdlib>

#include "stack.h"

namespace {

const char* const traced = "Stack trace:(.|\n)*End of stack trace";

// Uses up the stack; `depth` keeps the compiler from making a loop of it.
__attribute__((noinline)) int overflow(volatile char* above, int depth) {
  volatile char piece[4096];
  piece[0] = static_cast<char>(depth);
  piece[4095] = *above;
  const int result = depth == 0x7FFFFFFF ? 0 : overflow(piece, depth + 1);
  return result + piece[4095];
}

[[maybe_unused]] __attribute__((noinline)) int crash() {
  int* volatile nowhere = nullptr;
  return *nowhere;
}

void begin() {
  alarm(20);
  stack::installHandler();
}

void byAbort(int) {}

}  // namespace

TEST(CrashTrace, IsWrittenForAnOverflownStack) {
  EXPECT_EXIT(
      {
        begin();
        volatile char start = 0;
        std::exit(overflow(&start, 0));
      },
      testing::KilledBySignal(SIGABRT), traced);
}

TEST(CrashTrace, NamesTheSignalOfAnOverflownStack) {
  EXPECT_EXIT(
      {
        begin();
        volatile char start = 0;
        std::exit(overflow(&start, 0));
      },
      testing::KilledBySignal(SIGABRT), "11");
}

TEST(CrashTrace, IsWrittenForAFaultElsewhereAsBefore) {
#ifdef SANITIZED
  GTEST_SKIP() << "the sanitizer ends the program first";
#else
  EXPECT_EXIT(
      {
        begin();
        std::exit(crash());
      },
      testing::KilledBySignal(SIGABRT), traced);
#endif
}

TEST(CrashTrace, HandlersAreThoseThatSignalInstalls) {
  begin();
  for (const int number : {SIGILL, SIGTRAP, SIGBUS, SIGFPE, SIGSEGV}) {
    struct sigaction found {};
    ASSERT_EQ(sigaction(number, nullptr, &found), 0);
    EXPECT_EQ(found.sa_handler, signalHandler) << number;
    EXPECT_NE(found.sa_flags & SA_ONSTACK, 0) << number;
    EXPECT_NE(found.sa_flags & SA_RESTART, 0) << number;
  }
  struct sigaction found {};
  ASSERT_EQ(sigaction(SIGABRT, nullptr, &found), 0);
  EXPECT_EQ(found.sa_handler, SIGABRThandler);
}

TEST(CrashTrace, HasAStackOfItsOwn) {
  begin();
  stack_t found{};
  ASSERT_EQ(sigaltstack(nullptr, &found), 0);
  EXPECT_EQ(found.ss_flags & SS_DISABLE, 0);
  EXPECT_GE(found.ss_size, static_cast<std::size_t>(MINSIGSTKSZ));
}

TEST(CrashTrace, HandlerOfTheProgramIsCalledOnAnOverflownStack) {
  EXPECT_EXIT(
      {
        alarm(20);
        sigHandler = [](int) {
          const char text[] = "the program's own\n";
          if (write(2, text, sizeof text - 1) > 0) {
            _exit(3);
          }
        };
        stack::installHandler();
        volatile char start = 0;
        std::exit(overflow(&start, 0));
      },
      testing::ExitedWithCode(3), "the program's own");
}

TEST(CrashTrace, MayBeInstalledTwice) {
  EXPECT_EXIT(
      {
        begin();
        std::signal(SIGUSR1, byAbort);
        stack::installHandler();
        volatile char start = 0;
        std::exit(overflow(&start, 0));
      },
      testing::KilledBySignal(SIGABRT), traced);
}
