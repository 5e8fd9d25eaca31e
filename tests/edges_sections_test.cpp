// Who removes the set of semaphores, and when: an assertion, and the process that adopts.

#include <gtest/gtest.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <string>

#include "asserts.h"
#include "events.h"
#include "threading.h"

namespace edges_sections_test {

namespace {

bool exists(int set) {
  return semctl(set, 0, GETVAL) >= 0;
}

// Runs `work` in a child, and returns what it wrote and how it ended.
struct Child {
  int status = -1;
  int set = -1;
  bool seen = false;
};

class Report {
 public:
  explicit Report(int out) : m_out(out) {}
  void put(int value) const {
    if (write(m_out, &value, sizeof value) != sizeof value) {
      _exit(99);
    }
  }

 private:
  int m_out;
};

Child inChild(const std::function<void(const Report&)>& work) {
  int ends[2];
  EXPECT_EQ(pipe(ends), 0);
  const pid_t pid = fork();
  if (pid == 0) {
    alarm(20);
    close(ends[0]);
    work(Report(ends[1]));
    _exit(98);
  }
  close(ends[1]);
  Child result;
  int value = 0;
  if (read(ends[0], &value, sizeof value) == sizeof value) {
    result.set = value;
  }
  if (read(ends[0], &value, sizeof value) == sizeof value) {
    result.seen = value != 0;
  }
  close(ends[0]);
  waitpid(pid, &result.status, 0);
  return result;
}

bool aborted(const Child& child) {
  return WIFSIGNALED(child.status) && WTERMSIG(child.status) == SIGABRT;
}

bool leftWith(const Child& child, int status) {
  return WIFEXITED(child.status) && WEXITSTATUS(child.status) == status;
}

// Writes whether the set is still there when the report of an assertion comes by.
class setWatch : public eventHandler {
 public:
  setWatch(const Report& report, int set) : eventHandler(1), m_report(report), m_set(set) {}
  bool handle(eventReport&) override {
    m_report.put(exists(m_set) ? 1 : 0);
    return true;
  }
  const char* name() const override { return "setWatch"; }

 private:
  const Report& m_report;
  int m_set;
};

// Removes what a test that fails has left.
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
  const Child child = inChild([](const Report& report) {
    const int set = madeSet();
    report.put(set);
    const setWatch watch(report, set);
    ASSERT(set < 0);
  });
  ASSERT_GT(child.set, 0);
  const Remover remover(child.set);
  EXPECT_TRUE(aborted(child)) << child.status;
  EXPECT_TRUE(child.seen) << "the set was gone before the report";
  EXPECT_FALSE(exists(child.set));
}

TEST(SectionsOfAnAssertion, AreRemovedWhileOneIsHeld) {
  const Child child = inChild([](const Report& report) {
    const criticalSection section(CS_NETWORK, false);
    report.put(semaphoreSet(false));
    ASSERT(!section.okay());
  });
  ASSERT_GT(child.set, 0);
  const Remover remover(child.set);
  EXPECT_TRUE(aborted(child)) << child.status;
  EXPECT_FALSE(exists(child.set));
}

TEST(SectionsOfAnAssertion, AtAFixedPositionAreRemoved) {
  const Child child = inChild([](const Report& report) {
    report.put(madeSet());
    ASSERT_AT(false, "../test", 7);
  });
  ASSERT_GT(child.set, 0);
  const Remover remover(child.set);
  EXPECT_TRUE(aborted(child)) << child.status;
  EXPECT_FALSE(exists(child.set));
}

TEST(SectionsOfAnAssertion, InAChildStayThoseOfTheParent) {
  const int set = madeSet();
  ASSERT_GT(set, 0);
  const Child child = inChild([set](const Report& report) {
    report.put(set);
    ASSERT(set < 0);
  });
  EXPECT_TRUE(aborted(child)) << child.status;
  EXPECT_TRUE(exists(set));
}

TEST(SectionsOfAnAssertion, WithoutASetAbortAsBefore) {
  const Child child = inChild([](const Report& report) {
    report.put(1);
    ASSERT(false);
  });
  EXPECT_TRUE(aborted(child)) << child.status;
}

TEST(AdoptedSections, AreRemovedByTheOneThatAdopts) {
  const int set = madeSet();
  const Child child = inChild([set](const Report& report) {
    report.put(set);
    semaphoreAdopt();
    std::exit(0);
  });
  EXPECT_TRUE(leftWith(child, 0)) << child.status;
  EXPECT_FALSE(exists(set));
}

TEST(AdoptedSections, ThatNobodyAdoptsAreTheCreators) {
  const int set = madeSet();
  const Child child = inChild([set](const Report& report) {
    report.put(set);
    std::exit(0);
  });
  EXPECT_TRUE(leftWith(child, 0)) << child.status;
  EXPECT_TRUE(exists(set));
}

TEST(AdoptedSections, OutliveTheCreatorThatDetaches) {
  // The creator ends by _exit, as in daemon(3); its child adopts, works and ends.
  const Child creator = inChild([](const Report& report) {
    report.put(madeSet());
    const pid_t ending = getpid();
    if (fork() == 0) {
      alarm(20);
      semaphoreAdopt();
      while (getppid() == ending) {
        usleep(1000);
      }
      report.put(criticalSection(CS_LOGOUT, false).okay() ? 1 : 0);
      std::exit(0);
    }
    _exit(5);
  });
  EXPECT_TRUE(leftWith(creator, 5)) << creator.status;
  ASSERT_GT(creator.set, 0);
  const Remover remover(creator.set);
  for (int turn = 0; turn < 500 && exists(creator.set); turn++) {
    usleep(10000);
  }
  EXPECT_FALSE(exists(creator.set));
}

TEST(AdoptedSections, AreRemovedByAnAssertionOfTheOneThatAdopts) {
  const int set = madeSet();
  const Child child = inChild([set](const Report& report) {
    report.put(set);
    semaphoreAdopt();
    ASSERT(set < 0);
  });
  EXPECT_TRUE(aborted(child)) << child.status;
  EXPECT_FALSE(exists(set));
}

TEST(AdoptedSections, ByTheCreatorItselfChangeNothing) {
  const Child child = inChild([](const Report& report) {
    const int set = madeSet();
    semaphoreAdopt();
    report.put(set);
    std::exit(0);
  });
  ASSERT_GT(child.set, 0);
  EXPECT_FALSE(exists(child.set));
}

}  // namespace edges_sections_test
