// SPDX-License-Identifier: MIT
// Who removes the set of semaphores, and when: an assertion, and the process that adopts.

#include <gtest/gtest.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <sstream>
#include <string>

#include "asserts.h"
#include "children.h"
#include "events.h"
#include "semaphore_sets.h"
#include "threading.h"

namespace edges_sections_test {

namespace {

// What a child wrote, and how it ended.
struct Child {
  std::string ending;
  int set = -1;
  bool seen = false;
};

// For the test to read.
void put(int value) {
  dprintf(STDOUT_FILENO, "%d\n", value);
}

Child inChild(const std::function<void()>& work) {
  const processEnd end = runChild([&] {
    work();
    _exit(98);
  });
  Child result;
  result.ending = end.ending;
  std::istringstream output(end.output);
  output >> result.set >> result.seen;
  return result;
}

// Writes whether the set still exists when it gets the report of an assertion.
class setWatch : public eventHandler {
 public:
  explicit setWatch(int set) : eventHandler(1), m_set(set) {}
  bool handle(eventReport&) override {
    put(setExists(m_set) ? 1 : 0);
    return true;
  }
  const char* name() const override { return "setWatch"; }

 private:
  int m_set;
};

// Removes what a failing test has left.
class Remover {
 public:
  explicit Remover(int set) : m_set(set) {}
  Remover(const Remover&) = delete;
  Remover& operator=(const Remover&) = delete;
  ~Remover() { semctl(m_set, 0, IPC_RMID); }

 private:
  int m_set;
};

int madeSet() {
  const criticalSection section(CS_STDOUT, false);
  return semaphoreSet(false);
}

}  // namespace

TEST(SectionsOfAnAssertion, AreRemovedAfterItsReport) {
  const Child child = inChild([] {
    const int set = madeSet();
    put(set);
    const setWatch watch(set);
    ASSERT(set < 0);
  });
  ASSERT_GT(child.set, 0);
  const Remover remover(child.set);
  EXPECT_EQ(child.ending, "signal 6");
  EXPECT_TRUE(child.seen) << "the set was gone before the report";
  EXPECT_FALSE(setExists(child.set));
}

TEST(SectionsOfAnAssertion, AreRemovedWhileOneIsHeld) {
  const Child child = inChild([] {
    const criticalSection section(CS_NETWORK, false);
    put(semaphoreSet(false));
    ASSERT(!section.okay());
  });
  ASSERT_GT(child.set, 0);
  const Remover remover(child.set);
  EXPECT_EQ(child.ending, "signal 6");
  EXPECT_FALSE(setExists(child.set));
}

TEST(SectionsOfAnAssertion, AtAFixedPositionAreRemoved) {
  const Child child = inChild([] {
    put(madeSet());
    ASSERT_AT(false, "../test", 7);
  });
  ASSERT_GT(child.set, 0);
  const Remover remover(child.set);
  EXPECT_EQ(child.ending, "signal 6");
  EXPECT_FALSE(setExists(child.set));
}

TEST(SectionsOfAnAssertion, InAChildStayThoseOfTheParent) {
  const int set = madeSet();
  ASSERT_GT(set, 0);
  const Child child = inChild([set] {
    put(set);
    ASSERT(set < 0);
  });
  EXPECT_EQ(child.ending, "signal 6");
  EXPECT_TRUE(setExists(set));
}

TEST(SectionsOfAnAssertion, WithoutASetAbortAsBefore) {
  const Child child = inChild([] {
    put(1);
    ASSERT(false);
  });
  EXPECT_EQ(child.ending, "signal 6");
}

TEST(AdoptedSections, AreRemovedByTheOneThatAdopts) {
  const int set = madeSet();
  const Child child = inChild([set] {
    put(set);
    semaphoreAdopt();
    std::exit(0);
  });
  EXPECT_EQ(child.ending, "exit 0");
  EXPECT_FALSE(setExists(set));
}

TEST(AdoptedSections, ThatNobodyAdoptsAreTheCreators) {
  const int set = madeSet();
  const Child child = inChild([set] {
    put(set);
    std::exit(0);
  });
  EXPECT_EQ(child.ending, "exit 0");
  EXPECT_TRUE(setExists(set));
}

TEST(AdoptedSections, OutliveTheCreatorThatDetaches) {
  // The creator ends by _exit, as in daemon(3); its child adopts, works and ends.
  const Child creator = inChild([] {
    put(madeSet());
    const pid_t ending = getpid();
    if (fork() == 0) {
      alarm(20);
      semaphoreAdopt();
      while (getppid() == ending) {
        usleep(1000);
      }
      put(criticalSection(CS_LOGOUT, false).okay() ? 1 : 0);
      std::exit(0);
    }
    _exit(5);
  });
  EXPECT_EQ(creator.ending, "exit 5");
  ASSERT_GT(creator.set, 0);
  const Remover remover(creator.set);
  for (int turn = 0; turn < 500 && setExists(creator.set); turn++) {
    usleep(10000);
  }
  EXPECT_FALSE(setExists(creator.set));
}

TEST(AdoptedSections, AreRemovedByAnAssertionOfTheOneThatAdopts) {
  const int set = madeSet();
  const Child child = inChild([set] {
    put(set);
    semaphoreAdopt();
    ASSERT(set < 0);
  });
  EXPECT_EQ(child.ending, "signal 6");
  EXPECT_FALSE(setExists(set));
}

TEST(AdoptedSections, ByTheCreatorItselfChangeNothing) {
  const Child child = inChild([] {
    const int set = madeSet();
    semaphoreAdopt();
    put(set);
    std::exit(0);
  });
  ASSERT_GT(child.set, 0);
  EXPECT_FALSE(setExists(child.set));
}

}  // namespace edges_sections_test
