// SPDX-License-Identifier: MIT
#include <sched.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "children.h"
#include "section_state.h"
#include "semaphore_sets.h"
#include "threading.h"
#include "very_end.h"

namespace semaphore_set_test {

TEST(SemaphoreSet, KeepsItsId) {
  const processEnd end = runFreshChild([] {
    const int set = semaphoreSet(false);
    tell("positive", set > 0);
    { criticalSection section(CS_STDOUT, false); }
    tell("same", semaphoreSet(false) == set && semaphoreSet(false) == set);
    return 0;
  });
  EXPECT_EQ(end.output, "positive 1\nsame 1\n");
}

TEST(SemaphoreSet, CannotBeRemovedBeforeItExists) {
  const processEnd end = runFreshChild([] {
    tell("first", semaphoreSet(true));
    tell("second", semaphoreSet(true));
    tell("created", semaphoreSet(false) > 0);
    criticalSection section(CS_STDOUT, false);
    tell("okay", section.okay());
    return 0;
  });
  EXPECT_EQ(end.output, "first -2\nsecond -2\ncreated 1\nokay 1\n");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(SemaphoreSet, IsRemovedForGood) {
  const processEnd end = runFreshChild([] {
    const int set = semaphoreSet(false);
    tell("exists", setExists(set));
    tell("close", semaphoreSet(true));
    tell("exists", setExists(set));
    tell("open", semaphoreSet(false));
    tell("close again", semaphoreSet(true));
    tell("open again", semaphoreSet(false));
    return 0;
  });
  EXPECT_EQ(end.output, "exists 1\nclose -3\nexists 0\nopen -3\nclose again -3\nopen again -3\n");
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(SemaphoreClose, RemovesTheSetForGood) {
  const processEnd end = runFreshChild([] {
    const int set = semaphoreSet(false);
    semaphoreClose();
    tell("exists", setExists(set));
    tell("open", semaphoreSet(false));
    return 0;
  });
  EXPECT_EQ(end.output, "exists 0\nopen -3\n");
  EXPECT_EQ(end.ending, "exit 0");
}

// --- After the set was removed at exit -------------------------------------

TEST(SemaphoreClose, MakesCheckedSectionsDoNothing) {
  for (const sectionId id : sections) {
    SCOPED_TRACE(testing::Message() << "section " << id);
    const processEnd end = runFreshChild([id] {
      semaphoreSet(false);
      semaphoreClose();
      {
        criticalSection section(id, true);
        tell("okay", section.okay());
        tell("have", criticalSection::have(id));
      }
      tell("open", semaphoreSet(false));
      return 0;
    });
    EXPECT_EQ(end.output, "okay 0\nhave 0\nopen -3\n");
    EXPECT_EQ(end.errors, "");
    EXPECT_EQ(end.ending, "exit 0");
  }
}

TEST(SemaphoreClose, MakesUncheckedSectionsAbort) {
  for (const sectionId id : sections) {
    SCOPED_TRACE(testing::Message() << "section " << id);
    const processEnd end = runFreshChild([id] {
      semaphoreSet(false);
      semaphoreClose();
      criticalSection section(id, false);
      return 0;
    });
    EXPECT_TRUE(isFailureLine(end.errors, "set_id == FINISH_VALUE && checked"));
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(end.ending, "signal 6");
  }
}

TEST(SemaphoreClose, LetsASectionThatIsHeldGoWithoutAWord) {
  const processEnd end = runFreshChild([] {
    {
      criticalSection section(CS_STACK, false);
      semaphoreClose();
      tell("okay", section.okay());
    }
    // Nothing at all was done, so the owner is still set.
    tell("have", criticalSection::have(CS_STACK));
    return 0;
  });
  EXPECT_EQ(end.output, "okay 1\nhave 1\n");
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(CriticalSection, DoesNothingInAStaticDestructorWhenChecked) {
  const processEnd end = runFreshChild([] {
    static int set = 0;
    { criticalSection section(CS_REFCOUNT, false); }
    set = semaphoreSet(false);
    atVeryEnd = [] {
      tell("exists", setExists(set));
      tell("open", semaphoreSet(false));
      criticalSection section(CS_REFCOUNT, true);
      tell("okay", section.okay());
    };
    return 0;
  });
  EXPECT_EQ(end.output, "exists 0\nopen -3\nokay 0\n");
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(CriticalSection, AbortsInAStaticDestructorWhenUnchecked) {
  const processEnd end = runFreshChild([] {
    { criticalSection section(CS_REFCOUNT, false); }
    atVeryEnd = [] { criticalSection section(CS_REFCOUNT, false); };
    return 0;
  });
  EXPECT_TRUE(isFailureLine(end.errors, "set_id == FINISH_VALUE && checked"));
  EXPECT_EQ(end.ending, "signal 6");
}

// --- Children --------------------------------------------------------------

TEST(SemaphoreSet, OfAParentIsLeftAloneByItsChild) {
  static const struct {
    const char* what;
    int (*child)();
    const char* told;
  } cases[] = {
      {"exit", [] { return 0; }, ""},
      {"a section and exit",
       [] {
         criticalSection section(CS_NETWORK, false);
         tell("okay", section.okay());
         return 0;
       },
       "okay 1\n"},
      {"semaphoreClose",
       [] {
         semaphoreClose();
         tell("open", semaphoreSet(false));
         criticalSection section(CS_NETWORK, true);
         tell("okay", section.okay());
         return 0;
       },
       "open -3\nokay 0\n"},
      {"semaphoreSet(true)",
       [] {
         tell("close", semaphoreSet(true));
         return 0;
       },
       "close -3\n"},
      {"semaphoreRelease",
       [] {
         semaphoreRelease();
         return 0;
       },
       ""},
      {"semaphoreRelease and a section",
       [] {
         semaphoreRelease();
         criticalSection section(CS_NETWORK, false);
         tell("okay", section.okay());
         return 0;
       },
       "okay 1\n"},
      {"a child of its own",
       [] {
         const processEnd end = runChild([] { return 0; });
         return end.ending == "exit 0" ? 0 : 1;
       },
       ""},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.what);
    const processEnd end = runFreshChild([&] {
      const int set = semaphoreSet(false);
      const processEnd inner = runChild(row.child);
      dprintf(STDOUT_FILENO, "%s[%s%s]\n", inner.ending.c_str(), inner.output.c_str(),
              inner.errors.c_str());
      tellState("afterwards", set);
      tell("same", semaphoreSet(false) == set);
      criticalSection section(CS_NETWORK, false);
      tell("okay", section.okay());
      return 0;
    });
    EXPECT_EQ(end.output, std::string("exit 0[") + row.told +
                              "]\nafterwards: 1 1 1 1 1 1, have 0 0 0 0 0 0\nsame 1\nokay 1\n");
    EXPECT_EQ(end.errors, "");
    EXPECT_EQ(end.ending, "exit 0");
  }
}

TEST(SemaphoreSet, OfAChildIsRemovedByTheChild) {
  struct {
    const char* what;
    bool parentHasOne;
  } const cases[] = {{"made as there was none", false}, {"made after a release", true}};
  for (const auto& row : cases) {
    SCOPED_TRACE(row.what);
    semaphoreRelease();
    const int parents = row.parentHasOne ? semaphoreSet(false) : -2;
    const processEnd end = runChild([&] {
      if (row.parentHasOne) semaphoreRelease();
      { criticalSection section(CS_NETWORK, false); }
      dprintf(STDOUT_FILENO, "%d", semaphoreSet(false));
      return 0;
    });
    EXPECT_EQ(end.errors, "");
    EXPECT_EQ(end.ending, "exit 0");
    const int childs = std::atoi(end.output.c_str());
    ASSERT_GT(childs, 0) << end.output;
    if (childs != parents) {
      EXPECT_TRUE(isGone(childs)) << childs;
    }
    if (row.parentHasOne) {
      EXPECT_TRUE(setExists(parents)) << parents;
    }
  }
  semaphoreRelease();
}

// --- Release before another program takes over -----------------------------

TEST(SemaphoreRelease, RemovesTheSet) {
  const processEnd end = runFreshChild([] {
    const int set = semaphoreSet(false);
    semaphoreRelease();
    tell("exists", setExists(set));
    return 0;
  });
  EXPECT_EQ(end.output, "exists 0\n");
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(SemaphoreRelease, DoesNothingWithoutASet) {
  const processEnd end = runFreshChild([] {
    semaphoreRelease();
    semaphoreRelease();
    criticalSection section(CS_STDOUT, false);
    tell("okay", section.okay());
    return 0;
  });
  EXPECT_EQ(end.output, "okay 1\n");
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(SemaphoreRelease, LetsTheNextSectionCreateANewSetThatIsRemovedAtExit) {
  const processEnd end = runFreshChild([] {
    const int first = semaphoreSet(false);
    for (int i = 0; i < 3; ++i) {
      semaphoreRelease();
      {
        criticalSection section(CS_LOGOUT, false);
        if (!section.okay() || !criticalSection::have(CS_LOGOUT)) return 1;
      }
      const int next = semaphoreSet(false);
      if (next <= 0 || setExists(first) || sixValues(next) != "1 1 1 1 1 1") return 2;
      dprintf(STDOUT_FILENO, "%d ", next);
    }
    return 0;
  });
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
  int sets[3] = {0, 0, 0};
  ASSERT_EQ(std::sscanf(end.output.c_str(), "%d %d %d", &sets[0], &sets[1], &sets[2]), 3)
      << end.output;
  for (const int set : sets) EXPECT_TRUE(isGone(set)) << set;
}

TEST(SemaphoreRelease, AlsoLeavesNoSetWhenAStaticDestructorNeedsASection) {
  for (const bool again : {false, true}) {
    SCOPED_TRACE(again ? "with a section after the release" : "released last");
    const processEnd end = runFreshChild([again] {
      semaphoreSet(false);
      semaphoreRelease();
      if (again) {
        criticalSection section(CS_STDOUT, false);
      }
      atVeryEnd = [] {
        { criticalSection section(CS_REFCOUNT, true); }
        dprintf(STDOUT_FILENO, "%d", semaphoreSet(false));
      };
      return 0;
    });
    EXPECT_EQ(end.errors, "");
    EXPECT_EQ(end.ending, "exit 0");
    const int set = std::atoi(end.output.c_str());
    ASSERT_NE(set, 0) << end.output;
    EXPECT_TRUE(set < 0 || isGone(set)) << set;
  }
}

// --- Where the kernel's first id is 0 --------------------------------------

namespace {

bool enterNewNamespace() {
  return unshare(CLONE_NEWIPC) == 0 || unshare(CLONE_NEWUSER | CLONE_NEWIPC) == 0;
}

void tellAllSets() {
  seminfo counts = {};
  semaphoreArgument argument;
  argument.info = &counts;
  if (semctl(0, 0, SEM_INFO, argument) < 0) tell("SEM_INFO fails", errno);
  dprintf(STDOUT_FILENO, "%d sets of %d semaphores\n", counts.semusz, counts.semaem);
}

}  // namespace

TEST(SemaphoreSet, WorksWhereTheKernelsFirstIdIsZero) {
  const processEnd probe = runFreshChild([] {
    if (!enterNewNamespace()) {
      dprintf(STDOUT_FILENO, "%s", std::strerror(errno));
      return 1;
    }
    const int first = semget(IPC_PRIVATE, 1, 0600);
    tell("first id", first);
    semctl(first, 0, IPC_RMID);
    return 0;
  });
  if (probe.ending == "exit 1") GTEST_SKIP() << "no new IPC namespace: " << probe.output;
  ASSERT_EQ(probe.output, "first id 0\n");

  const processEnd end = runFreshChild([] {
    if (!enterNewNamespace()) return 1;
    tellAllSets();
    for (int i = 0; i < 3; ++i) {
      const processEnd user = runChild([] {
        {
          criticalSection section(CS_STDOUT, false);
          tell("okay", section.okay());
        }
        const int set = semaphoreSet(false);
        tell("positive", set > 0);
        tellState("afterwards", set);
        tellAllSets();
        return 0;
      });
      dprintf(STDOUT_FILENO, "%s%s%s\n", user.output.c_str(), user.errors.c_str(),
              user.ending.c_str());
      tellAllSets();
    }
    return 0;
  });
  const std::string oneUse =
      "okay 1\n"
      "positive 1\n"
      "afterwards: 1 1 1 1 1 1, have 0 0 0 0 0 0\n"
      "1 sets of 6 semaphores\n"
      "exit 0\n"
      "0 sets of 0 semaphores\n";
  EXPECT_EQ(end.output, "0 sets of 0 semaphores\n" + oneUse + oneUse + oneUse);
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(SemaphoreRelease, LeavesNoSetWhereTheKernelsFirstIdIsZero) {
  const processEnd end = runFreshChild([] {
    if (!enterNewNamespace()) return 1;
    { criticalSection section(CS_STDOUT, false); }
    semaphoreRelease();
    tellAllSets();
    { criticalSection section(CS_STDOUT, false); }
    tellAllSets();
    return 0;
  });
  if (end.ending == "exit 1") GTEST_SKIP() << "no new IPC namespace";
  EXPECT_EQ(end.output, "0 sets of 0 semaphores\n1 sets of 6 semaphores\n");
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
}

}  // namespace semaphore_set_test
