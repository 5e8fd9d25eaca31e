// SPDX-License-Identifier: MIT
// The handlers for fatal signals, in children that die of them.

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <streambuf>
#include <string>

#include "captured_errors.h"
#include "children.h"
#include "kept_traces.h"
#include "processes.h"
#include "stack.h"

namespace {

void tell(const char* line) {
  if (write(STDERR_FILENO, line, std::strlen(line)) < 0) std::_Exit(99);
}

void tellShutdown() {
  tell(Thread::shuttingDown() ? "shutting down\n" : "not shutting down\n");
}

// Expects `text` to be `start`, a trace's frames, and `finish`.
void expectTrace(const std::string& text, const std::string& start, const std::string& finish) {
  const std::string before = start + "Stack trace:\n", after = "\nEnd of stack trace\n\n" + finish;
  ASSERT_GT(text.size(), before.size() + after.size()) << text;
  EXPECT_EQ(text.substr(0, before.size()), before) << text;
  EXPECT_EQ(text.substr(text.size() - after.size()), after) << text;
  EXPECT_EQ(text.find("Stack trace:", before.size()), std::string::npos) << "one trace only:\n"
                                                                         << text;
}

const struct {
  int signal;
  int number;
  const char* start;
} caught[] = {
    {SIGILL, 4, "signal 4 caught: "},    {SIGTRAP, 5, "signal 5 caught: "},
    {SIGBUS, 7, "signal 7 caught: "},    {SIGFPE, 8, "signal 8 caught: "},
    {SIGSEGV, 11, "signal 11 caught: "},
};

// --- Real faults -----------------------------------------------------------

// Reads a page without permission.
void touchForbiddenPage() {
  void* page = mmap(nullptr, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (page == MAP_FAILED) std::_Exit(98);
  const volatile char* byte = static_cast<const volatile char*>(page);
  (void)*byte;
}

// Reads a page after the end of its file.
void touchMissingPage() {
  std::FILE* file = std::tmpfile();
  if (file == nullptr) std::_Exit(98);
  void* page = mmap(nullptr, 4096, PROT_READ, MAP_SHARED, fileno(file), 0);
  if (page == MAP_FAILED) std::_Exit(98);
  const volatile char* byte = static_cast<const volatile char*>(page);
  (void)*byte;
}

// Other machines have other signals for these, or none.
#if defined(__x86_64__) || defined(__i386__)

// Executes an invalid instruction.
void runIntoTrap() {
  __builtin_trap();
}

void divideByZero() {
  int quotient = 1, remainder = 0;
  const int zero = 0;
  __asm__ volatile("idivl %2" : "+a"(quotient), "+d"(remainder) : "r"(zero));
}

#endif

// --- Tests -----------------------------------------------------------------

TEST(stack, RecordsAPosition) {
  EXPECT_EQ(lastFile, nullptr);
  EXPECT_EQ(lastLine, -1);
  stack::position("tools/launch", 42);
  EXPECT_STREQ(lastFile, "tools/launch");
  EXPECT_EQ(lastLine, 42);
  stack::position("tools/main", 7);
  EXPECT_STREQ(lastFile, "tools/main");
  EXPECT_EQ(lastLine, 7);
  stack::position(nullptr, -1);
  EXPECT_EQ(lastFile, nullptr);
  EXPECT_EQ(lastLine, -1);
}

TEST(stack, InstallsNoHandlerUnasked) {
  for (const int signal : {SIGILL, SIGTRAP, SIGABRT, SIGBUS, SIGFPE, SIGSEGV}) {
    struct sigaction current = {};
    ASSERT_EQ(sigaction(signal, nullptr, &current), 0);
    EXPECT_NE(current.sa_handler, signalHandler) << "signal " << signal;
    EXPECT_NE(current.sa_handler, SIGABRThandler) << "signal " << signal;
  }
}

void anotherHandler(int) {}

TEST(stack, InstallsTheHandlersOfTheFatalSignals) {
  EXPECT_EQ(sigHandler, signalHandler);
  for (void (*const handler)(int) : {signalHandler, anotherHandler}) {
    const processEnd end = runSharingChild([handler] {
      sigHandler = handler;
      stack::installHandler();
      for (int signal = 1; signal < 32; signal++) {
        struct sigaction current = {};
        if (sigaction(signal, nullptr, &current) != 0) continue;
        if (current.sa_handler == handler)
          tell((std::to_string(signal) + " fatal\n").c_str());
        else if (current.sa_handler == SIGABRThandler)
          tell((std::to_string(signal) + " abort\n").c_str());
      }
    });
    EXPECT_EQ(end.ending, "exit 0");
    EXPECT_EQ(end.errors, "4 fatal\n5 fatal\n6 abort\n7 fatal\n8 fatal\n11 fatal\n");
  }
}

TEST(signalHandler, WritesSignalAndTraceAndReturns) {
  for (const auto& c : caught) {
    SCOPED_TRACE(c.start);
    ASSERT_EQ(c.signal, c.number);
    const processEnd end = runSharingChild([&] {
      stack::installHandler();
      tellShutdown();
      std::raise(c.signal);
      tellShutdown();
    });
    EXPECT_EQ(end.ending, "exit 0");
    expectTrace(end.errors, "not shutting down\n" + std::string(c.start) + "\n", "shutting down\n");
  }
}

TEST(signalHandler, NamesTheRecordedPosition) {
  for (const auto& c : caught) {
    SCOPED_TRACE(c.start);
    const processEnd end = runSharingChild([&] {
      stack::installHandler();
      stack::position("../tools/launch", 42);
      std::raise(c.signal);
      tellShutdown();
    });
    EXPECT_EQ(end.ending, "exit 0");
    expectTrace(end.errors, c.start + std::string(" after line 42 in ../tools/launch\n"),
                "shutting down\n");
  }
}

TEST(signalHandler, NamesNoPositionThatWasForgotten) {
  const processEnd end = runSharingChild([] {
    stack::position("../tools/launch", 42);
    stack::position(nullptr, 42);
    signalHandler(SIGSEGV);
  });
  EXPECT_EQ(end.ending, "exit 0");
  expectTrace(end.errors, "signal 11 caught: \n", "");
}

TEST(signalHandler, NamesAPositionThatWasSetDirectly) {
  const processEnd end = runSharingChild([] {
    lastFile = "somewhere";
    signalHandler(SIGFPE);
  });
  EXPECT_EQ(end.ending, "exit 0");
  expectTrace(end.errors, "signal 8 caught:  after line -1 in somewhere\n", "");
}

TEST(signalHandler, AbortsTheSecondTime) {
  for (const auto& c : caught) {
    for (const bool positioned : {false, true}) {
      SCOPED_TRACE(c.start);
      const processEnd end = runSharingChild([&] {
        stack::installHandler();
        if (positioned) stack::position("../tools/launch", 42);
        std::raise(c.signal);
        tell("between\n");
        std::raise(c.signal);
        tell("not reached\n");
      });
      EXPECT_EQ(end.ending, "signal 6");
      expectTrace(end.errors,
                  c.start + std::string(positioned ? " after line 42 in ../tools/launch\n" : "\n"),
                  "between\n");
    }
  }
}

TEST(signalHandler, AbortsOnASecondSignalOfAnotherKind) {
  const processEnd end = runSharingChild([] {
    stack::installHandler();
    std::raise(SIGILL);
    std::raise(SIGFPE);
    tell("not reached\n");
  });
  EXPECT_EQ(end.ending, "signal 6");
  expectTrace(end.errors, "signal 4 caught: \n", "");
}

TEST(signalHandler, AbortsOnASecondSignalWhileItWrites) {
  // Raises a signal at the first byte that it gets, and drops all bytes.
  class faulty : public std::streambuf {
   protected:
    int_type overflow(int_type c) override {
      if (!m_raised) {
        m_raised = true;
        std::raise(SIGFPE);
      }
      return traits_type::not_eof(c);
    }

   private:
    bool m_raised = false;
  };
  const processEnd end = runSharingChild([] {
    static faulty target;
    std::cerr.rdbuf(&target);
    stack::installHandler();
    std::raise(SIGILL);
    tell("not reached\n");
  });
  EXPECT_EQ(end.ending, "signal 6");
  EXPECT_EQ(end.errors, "");
}

TEST(signalHandler, WorksWithoutBeingInstalled) {
  const processEnd twice = runSharingChild([] {
    signalHandler(15);
    signalHandler(15);
  });
  EXPECT_EQ(twice.ending, "signal 6");
  expectTrace(twice.errors, "signal 15 caught: \n", "");
}

TEST(signalHandler, LetsARealFaultEndTheProcess) {
  const struct {
    const char* start;
    void (*fault)();
  } cases[] = {
    {"signal 11 caught: ", touchForbiddenPage},
    {"signal 7 caught: ", touchMissingPage},
#if defined(__x86_64__) || defined(__i386__)
    {"signal 4 caught: ", runIntoTrap},
    {"signal 8 caught: ", divideByZero},
#endif
  };
  for (const auto& c : cases) {
    for (const bool positioned : {false, true}) {
      SCOPED_TRACE(c.start);
      const processEnd end = runSharingChild([&] {
        stack::installHandler();
        if (positioned) stack::position("../tools/launch", 42);
        c.fault();
        tell("not reached\n");
      });
      EXPECT_EQ(end.ending, "signal 6");
      expectTrace(end.errors,
                  c.start + std::string(positioned ? " after line 42 in ../tools/launch\n" : "\n"),
                  "");
    }
  }
}

TEST(SIGABRThandler, OnlyBeginsTheShutdown) {
  const processEnd end = runSharingChild([] {
    stack::installHandler();
    stack::position("../tools/launch", 42);
    tellShutdown();
    std::raise(SIGABRT);
    tellShutdown();
    std::raise(SIGABRT);
    tellShutdown();
  });
  EXPECT_EQ(end.ending, "exit 0");
  EXPECT_EQ(end.errors, "not shutting down\nshutting down\nshutting down\n");
}

TEST(SIGABRThandler, LetsAnAbortGoOn) {
  for (const bool positioned : {false, true}) {
    const processEnd end = runSharingChild([positioned] {
      stack::installHandler();
      if (positioned) stack::position("../tools/launch", 42);
      std::abort();
    });
    EXPECT_EQ(end.ending, "signal 6");
    EXPECT_EQ(end.errors, "");
  }
}

TEST(SIGABRThandler, IsNoFatalSignalThatIsCounted) {
  const processEnd end = runSharingChild([] {
    stack::installHandler();
    std::raise(SIGABRT);
    std::raise(SIGSEGV);
    tell("still here\n");
  });
  EXPECT_EQ(end.ending, "exit 0");
  expectTrace(end.errors, "signal 11 caught: \n", "still here\n");
}

// The last one: from here on, the process counts as hit.
TEST(theHandlers, ReturnToTheProcessThatCallsThem) {
  EXPECT_FALSE(Thread::shuttingDown());
  SIGABRThandler(SIGABRT);
  EXPECT_TRUE(Thread::shuttingDown());
  const capturedErrors errors;
  signalHandler(15);
  expectTrace(errors.str(), "signal 15 caught: \n", "");
}

}  // namespace
