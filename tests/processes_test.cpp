// SPDX-License-Identifier: MIT
#include <signal.h>
#include <sys/types.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <sstream>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <vector>

#include "children.h"
#include "processes.h"
#include "reports.h"
#include "threading.h"

namespace processes_test {

namespace {

using ::tell;

void tell(const char* text) {
  dprintf(STDOUT_FILENO, "%s\n", text);
}

// A thread that runs a function.
class functionThread : public Thread {
 public:
  functionThread(bool fullWeight, bool (*body)()) : Thread(fullWeight), m_body(body) {}
  bool execute() override { return m_body(); }
  Thread* clone() const override { return new functionThread(*this); }

 private:
  bool (*m_body)();
};

// Reports its shutdown.
class notified : public shutdownNotified {
 public:
  explicit notified(const char* name) : m_name(name) {}
  void shutdown() override { tell(m_name); }

 private:
  const char* m_name;
};

}  // namespace

// --- Ids -------------------------------------------------------------------

TEST(ThreadIds, AreTheProcessIdAndMinusOne) {
  EXPECT_EQ(Thread::processId(), getpid());
  EXPECT_EQ(Thread::threadId(), -1);
}

TEST(ThreadIds, AreTheChildsOwnInAChild) {
  const processEnd end = runChild([] {
    tell("own", Thread::processId() == getpid() && Thread::processId() != getppid());
    tell("thread", Thread::threadId());
    return 0;
  });
  EXPECT_EQ(end.output, "own 1\nthread -1\n");
}

TEST(ThreadIds, StreamAsProcessSlashThread) {
  std::ostringstream out;
  out << thisThreadId() << " and " << thisThreadId();
  const std::string one = std::to_string(getpid()) + "/-1";
  EXPECT_EQ(out.str(), one + " and " + one);
}

// --- Full-weight threads ---------------------------------------------------

TEST(Thread, EndsWithZeroForTrueAndOneForFalse) {
  static const struct {
    const char* what;
    bool (*body)();
    int status;
  } cases[] = {
      {"true", [] { return true; }, 0x0000},
      {"false", [] { return false; }, 0x0100},
      {"exit(7)",
       [] {
         std::exit(7);
         return true;
       },
       0x0700},
      {"killed", [] { return kill(getpid(), SIGKILL) != 0; }, 9},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.what);
    functionThread thread(true, row.body);
    ASSERT_TRUE(thread.create());
    EXPECT_TRUE(thread.waitFor());
    EXPECT_EQ(thread.status(), row.status);
  }
}

TEST(Thread, RunsItsBodyInAChildProcessOnly) {
  const processEnd end = runFreshChild([] {
    static const pid_t parent = getpid();
    static int runs = 0;
    functionThread thread(true, [] {
      ++runs;
      tell("runs in the child", getpid() != parent && getppid() == parent);
      return true;
    });
    const bool created = thread.create();
    const bool ended = thread.waitFor();
    tell("created", created);
    tell("ended", ended);
    tell("runs in the parent", runs);
    return 0;
  });
  EXPECT_EQ(end.output, "runs in the child 1\ncreated 1\nended 1\nruns in the parent 0\n");
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(Thread, SharesTheSectionsThoughNoneWasTakenBefore) {
  const processEnd end = runFreshChild([] {
    functionThread thread(true, [] {
      dprintf(STDOUT_FILENO, "%d ", semaphoreSet(false));
      return true;
    });
    if (!thread.create() || !thread.waitFor()) return 1;
    dprintf(STDOUT_FILENO, "%d", semaphoreSet(false));
    return 0;
  });
  int inTheChild = 0;
  int inTheParent = 0;
  ASSERT_EQ(std::sscanf(end.output.c_str(), "%d %d", &inTheChild, &inTheParent), 2) << end.output;
  EXPECT_GT(inTheChild, 0);
  EXPECT_EQ(inTheChild, inTheParent);
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(Thread, EndsItsChildWithTheExitFunctions) {
  const processEnd end = runFreshChild([] {
    static const pid_t parent = getpid();
    std::atexit([] { tell(getpid() == parent ? "exit of the parent" : "exit of the child"); });
    functionThread thread(true, [] {
      tell("body");
      return true;
    });
    if (!thread.create() || !thread.waitFor()) return 1;
    tell("waited");
    return 0;
  });
  EXPECT_EQ(end.output, "body\nexit of the child\nwaited\nexit of the parent\n");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(Thread, RunsBesideItsCreatorAndOthers) {
  std::vector<std::unique_ptr<Thread>> threads;
  for (int i = 0; i < 8; ++i) {
    threads.push_back(std::make_unique<functionThread>(true, [] { return false; }));
    ASSERT_TRUE(threads.back()->create());
  }
  while (!threads.empty()) {
    EXPECT_TRUE(threads.back()->waitFor());
    EXPECT_EQ(threads.back()->status(), 0x0100);
    threads.pop_back();
  }
}

TEST(Thread, IsNotWaitedForUnlessItWasStarted) {
  const processEnd end = runFreshChild([] {
    reportTeller handler;
    functionThread thread(true, [] { return true; });
    tell("waited", thread.waitFor());
    return 0;
  });
  EXPECT_EQ(end.output, "waited 0\n");  // and nothing is reported
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(Thread, ReportsASecondWait) {
  const processEnd end = runFreshChild([] {
    reportTeller handler;
    functionThread thread(true, [] { return true; });
    tell("created", thread.create());
    tell("waited", thread.waitFor());
    tell("waited", thread.waitFor());
    return 0;
  });
  // 10 is ECHILD
  EXPECT_EQ(end.output,
            "created 1\n"
            "waited 1\n"
            "O/S 10, severity 2, audience 31: waitpid() | Thread::waitFor()\n"
            "waited 0\n");
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(Thread, CanBeStartedAgain) {
  functionThread thread(true, [] { return false; });
  for (int i = 0; i < 2; ++i) {
    ASSERT_TRUE(thread.create());
    EXPECT_TRUE(thread.waitFor());
    EXPECT_EQ(thread.status(), 0x0100);
  }
}

TEST(Thread, IsCopiedWithItsChild) {
  functionThread original(true, [] { return false; });
  ASSERT_TRUE(original.create());
  const std::unique_ptr<Thread> copy(original.clone());
  EXPECT_TRUE(copy->waitFor());
  EXPECT_EQ(copy->status(), 0x0100);
}

TEST(Thread, WritesNothingInTheBase) {
  functionThread thread(true, [] { return true; });
  std::ostringstream out;
  out << '<';
  thread.write(out);
  out << '>';
  EXPECT_EQ(out.str(), "<>");
  EXPECT_TRUE(std::has_virtual_destructor_v<Thread>);
}

// --- Light-weight threads --------------------------------------------------

TEST(Thread, IsNotImplementedAsALightWeightThread) {
  const processEnd end = runFreshChild([] {
    reportTeller handler;
    functionThread thread(false, [] {
      tell("runs");
      return true;
    });
    tell("created", thread.create());
    tell("waited", thread.waitFor());
    return 0;
  });
  EXPECT_EQ(end.output,
            "commonEvent 6, severity 2, audience 31: light-weight threads | Thread::createT()\n"
            "created 0\n"
            "commonEvent 6, severity 2, audience 31: light-weight threads | Thread::waitForT()\n"
            "waited 0\n");
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
}

// --- Shutdown --------------------------------------------------------------

TEST(Shutdown, IsAFlagThatGoesUpOnce) {
  const processEnd end = runFreshChild([] {
    tell("stopping", Thread::processStopping());
    tell("shutting down", Thread::shuttingDown());
    Thread::shutDown();
    tell("shutting down", Thread::shuttingDown());
    Thread::shutDown();
    tell("shutting down", Thread::shuttingDown());
    tell("stopping", Thread::processStopping());
    return 0;
  });
  EXPECT_EQ(end.output,
            "stopping 0\n"
            "shutting down 0\n"
            "shutting down 1\n"
            "shutting down 1\n"
            "stopping 0\n");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(Shutdown, OfAChildIsItsOwn) {
  const processEnd end = runFreshChild([] {
    functionThread thread(true, [] {
      Thread::shutDown();
      return Thread::shuttingDown();
    });
    tell("good", thread.create() && thread.waitFor() && thread.status() == 0);
    tell("shutting down", Thread::shuttingDown());
    return 0;
  });
  EXPECT_EQ(end.output, "good 1\nshutting down 0\n");
}

TEST(Shutdown, DoesNotCallTheNotifiersByItself) {
  const processEnd end = runFreshChild([] {
    notified one("one");
    Thread::shutDown();
    return 0;
  });
  EXPECT_EQ(end.output, "");
}

TEST(ShutdownNotified, AreToldOnceInTheOrderOfConstruction) {
  const processEnd end = runFreshChild([] {
    notified one("one");
    notified two("two");
    notified three("three");
    shutdownNotified::callShutdowns();
    tell("again");
    shutdownNotified::callShutdowns();
    notified four("four");
    shutdownNotified::callShutdowns();
    return 0;
  });
  EXPECT_EQ(end.output, "one\ntwo\nthree\nagain\n");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(ShutdownNotified, NeedNotBe) {
  const processEnd end = runFreshChild([] {
    shutdownNotified::callShutdowns();
    notified late("late");
    shutdownNotified::callShutdowns();  // this process has had its call
    return 0;
  });
  EXPECT_EQ(end.output, "");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(ShutdownNotified, AreNotToldOnceDestroyed) {
  const processEnd end = runFreshChild([] {
    notified one("one");
    std::optional<notified> two("two");
    notified three("three");
    two.reset();
    { notified four("four"); }
    shutdownNotified::callShutdowns();
    return 0;
  });
  EXPECT_EQ(end.output, "one\nthree\n");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(ShutdownNotified, AreToldOnceAtTheAddressOfADestroyedOne) {
  const processEnd end = runFreshChild([] {
    std::optional<notified> place;
    for (const char* const name : {"first", "second", "third"}) place.emplace(name);
    shutdownNotified::callShutdowns();
    return 0;
  });
  EXPECT_EQ(end.output, "third\n");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(ShutdownNotified, IncludeCopies) {
  const processEnd end = runFreshChild([] {
    notified one("one");
    notified copy(one);
    notified assigned("other");
    assigned = one;
    shutdownNotified::callShutdowns();
    return 0;
  });
  EXPECT_EQ(end.output, "one\none\none\n");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(ShutdownNotified, MayConstructAndDestroyOthers) {
  const processEnd end = runFreshChild([] {
    static std::optional<notified> victim;
    static std::optional<notified> added;
    class meddler : public shutdownNotified {
      void shutdown() override {
        tell("meddler");
        victim.reset();
        added.emplace("added");
      }
    };
    notified one("one");
    meddler two;
    victim.emplace("victim");
    notified four("four");
    shutdownNotified::callShutdowns();
    return 0;
  });
  // The added one may be notified or not; it came last.
  EXPECT_EQ(end.output.substr(0, 17), "one\nmeddler\nfour\n");
  EXPECT_TRUE(end.output.substr(17) == "" || end.output.substr(17) == "added\n") << end.output;
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(ShutdownNotified, MayAskForTheShutdownsAgain) {
  const processEnd end = runFreshChild([] {
    class asker : public shutdownNotified {
      void shutdown() override {
        tell("asker");
        callShutdowns();
      }
    };
    asker one;
    notified two("two");
    shutdownNotified::callShutdowns();
    return 0;
  });
  EXPECT_EQ(end.output, "asker\ntwo\n");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(ShutdownNotified, CarryACookieThatIsReallyClearedInTheEnd) {
  alignas(notified) static unsigned char place[sizeof(notified)];
  const auto cookie = [] {
    // It is after the pointer to the virtual table.
    std::uint32_t result;
    std::memcpy(&result, place + sizeof(void*), sizeof result);
    return result;
  };
  notified* const one = new (place) notified("one");
  EXPECT_EQ(cookie(), 0x1F2E3D4CU);
  one->~notified();
  EXPECT_EQ(cookie(), 0U);
}

TEST(ShutdownNotified, AreNotToldWithoutTheirCookie) {
  const processEnd end = runFreshChild([] {
    alignas(notified) static unsigned char place[sizeof(notified)];
    const notified one("one");
    static_cast<void>(new (place) notified("two"));
    const notified three("three");
    // The second one is overwritten without its end.
    const std::uint32_t somethingElse = 0x1F2E3D4D;
    std::memcpy(place + sizeof(void*), &somethingElse, sizeof somethingElse);
    shutdownNotified::callShutdowns();
    return 0;
  });
  EXPECT_EQ(end.output, "one\nthree\n");
  EXPECT_EQ(end.ending, "exit 0");
}

// --- The watcher -----------------------------------------------------------

TEST(ExitWaitThread, TellsItsNameAndCopiesItself) {
  const exitWaitThread watcher(true);
  std::ostringstream out;
  watcher.write(out);
  EXPECT_EQ(out.str(), "exitWaitThread");

  const std::unique_ptr<Thread> copy(watcher.clone());
  ASSERT_NE(copy, nullptr);
  EXPECT_NE(copy.get(), &watcher);
  const Thread& copied = *copy;
  EXPECT_EQ(typeid(copied), typeid(exitWaitThread));
}

TEST(ExitWaitThread, CallsTheShutdownsAtOnceWhenShuttingDown) {
  const processEnd end = runFreshChild([] {
    notified one("one");
    exitWaitThread watcher(true);
    Thread::shutDown();
    tell("done", watcher.execute());
    tell("done", watcher.execute());
    return 0;
  });
  EXPECT_EQ(end.output, "one\ndone 1\ndone 1\n");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(ExitWaitThread, WaitsForTheShutdown) {
  const processEnd end = runFreshChild([] {
    notified one("one");
    signal(SIGALRM, [](int) { Thread::shutDown(); });
    exitWaitThread watcher(true);
    ualarm(100000, 0);
    tell("done", watcher.execute());
    return 0;
  });
  EXPECT_EQ(end.output, "one\ndone 1\n");
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(ExitWaitThread, TellsTheNotifiersOfItsOwnProcess) {
  const processEnd end = runFreshChild([] {
    notified one("one");
    Thread::shutDown();
    exitWaitThread watcher(true);
    tell("good", watcher.create() && watcher.waitFor() && watcher.status() == 0);
    shutdownNotified::callShutdowns();
    return 0;
  });
  // Once in the child and once in the parent.
  EXPECT_EQ(end.output, "one\ngood 1\none\n");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(ExitWaitThread, IsNotImplementedAsALightWeightThread) {
  const processEnd end = runFreshChild([] {
    reportTeller handler;
    exitWaitThread watcher(false);
    tell("created", watcher.create());
    return 0;
  });
  EXPECT_EQ(end.output,
            "commonEvent 6, severity 2, audience 31: light-weight threads | Thread::createT()\n"
            "created 0\n");
}

}  // namespace processes_test
