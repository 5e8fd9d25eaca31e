// SPDX-License-Identifier: MIT
#include <sys/ipc.h>
#include <sys/sem.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <string>
#include <type_traits>

#include "children.h"
#include "section_state.h"
#include "semaphore_sets.h"
#include "threading.h"

namespace semaphore_test {

namespace {

template <class T>
concept canBeNewed = requires {
  new T(CS_STDOUT, false);
};
template <class T>
concept canBeNewedAsArray = requires {
  new T[1]{{CS_STDOUT, false}};
};

// A static initialiser enters this section.
const bool takenBeforeMain = [] {
  criticalSection section(CS_NETWORK, true);
  return section.okay() && criticalSection::have(CS_NETWORK);
}();

}  // namespace

TEST(SectionId, NumbersTheSemaphores) {
  EXPECT_EQ(static_cast<int>(CS_STDOUT), 0);
  EXPECT_EQ(static_cast<int>(CS_LOGOUT), 1);
  EXPECT_EQ(static_cast<int>(CS_REFCOUNT), 2);
  EXPECT_EQ(static_cast<int>(CS_NETWORK), 3);
  EXPECT_EQ(static_cast<int>(CS_NAME_ALLOC), 4);
  EXPECT_EQ(static_cast<int>(CS_STACK), 5);
  EXPECT_EQ(static_cast<int>(CS_COUNT), 6);
}

TEST(CriticalSection, LivesInItsScopeOnly) {
  EXPECT_FALSE(std::is_copy_constructible_v<criticalSection>);
  EXPECT_FALSE(std::is_copy_assignable_v<criticalSection>);
  EXPECT_FALSE(canBeNewed<criticalSection>);
  EXPECT_FALSE(canBeNewedAsArray<criticalSection>);
  EXPECT_TRUE(std::has_virtual_destructor_v<criticalSection>);
}

TEST(CriticalSection, WorksBeforeMain) {
  EXPECT_TRUE(takenBeforeMain);
}

TEST(CriticalSection, TheFirstCreatesAPrivateSetWithAllSixAtOne) {
  const processEnd end = runFreshChild([] {
    { criticalSection first(CS_STDOUT, false); }
    const int set = semaphoreSet(false);
    semid_ds details = {};
    semaphoreArgument argument;
    argument.buf = &details;
    const int result = semctl(set, 0, IPC_STAT, argument);
    dprintf(STDOUT_FILENO, "result %d, %lu semaphores, mode %o, key %d: %s\n", result,
            static_cast<unsigned long>(details.sem_nsems),
            static_cast<unsigned>(details.sem_perm.mode) & 0777U,
            static_cast<int>(details.sem_perm.__key), sixValues(set).c_str());
    return 0;
  });
  EXPECT_EQ(end.output, "result 0, 6 semaphores, mode 666, key 0: 1 1 1 1 1 1\n");
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(CriticalSection, TheSetIsGoneAfterTheEndOfTheProcess) {
  const processEnd end = runFreshChild([] {
    { criticalSection first(CS_NETWORK, false); }
    dprintf(STDOUT_FILENO, "%d", semaphoreSet(false));
    return 0;
  });
  const int set = std::atoi(end.output.c_str());
  ASSERT_GT(set, 0) << end.output;
  EXPECT_TRUE(isGone(set)) << set;
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(CriticalSection, TakesItsOwnSemaphoreForItsScope) {
  static const struct {
    sectionId id;
    const char* told;
  } cases[] = {
      {CS_STDOUT, "inside: 0 1 1 1 1 1, have 1 0 0 0 0 0\n"},
      {CS_LOGOUT, "inside: 1 0 1 1 1 1, have 0 1 0 0 0 0\n"},
      {CS_REFCOUNT, "inside: 1 1 0 1 1 1, have 0 0 1 0 0 0\n"},
      {CS_NETWORK, "inside: 1 1 1 0 1 1, have 0 0 0 1 0 0\n"},
      {CS_NAME_ALLOC, "inside: 1 1 1 1 0 1, have 0 0 0 0 1 0\n"},
      {CS_STACK, "inside: 1 1 1 1 1 0, have 0 0 0 0 0 1\n"},
  };
  for (const bool checked : {false, true}) {
    for (const auto& row : cases) {
      SCOPED_TRACE(testing::Message() << "section " << row.id << ", checked " << checked);
      const processEnd end = runFreshChild([&] {
        const int set = semaphoreSet(false);
        tellState("before", set);
        {
          criticalSection section(row.id, checked);
          tell("okay", section.okay());
          tellState("inside", set);
        }
        tellState("after", set);
        return 0;
      });
      EXPECT_EQ(end.output, std::string("before: 1 1 1 1 1 1, have 0 0 0 0 0 0\n"
                                        "okay 1\n") +
                                row.told + "after: 1 1 1 1 1 1, have 0 0 0 0 0 0\n");
      EXPECT_EQ(end.errors, "");
      EXPECT_EQ(end.ending, "exit 0");
    }
  }
}

TEST(CriticalSection, CanBeAMember) {
  const processEnd end = runFreshChild([] {
    {
      struct {
        criticalSection section{CS_STACK, false};
      } owner;
      tellState("inside", semaphoreSet(false));
    }
    tellState("after", semaphoreSet(false));
    return 0;
  });
  EXPECT_EQ(end.output,
            "inside: 1 1 1 1 1 0, have 0 0 0 0 0 1\n"
            "after: 1 1 1 1 1 1, have 0 0 0 0 0 0\n");
}

TEST(CriticalSection, CanBeTakenAgainAndAgain) {
  const processEnd end = runFreshChild([] {
    const int set = semaphoreSet(false);
    for (int i = 0; i < 1000; ++i) {
      criticalSection section(CS_REFCOUNT, false);
      if (!section.okay() || semaphoreSet(false) != set) return 1;
    }
    tellState("after", set);
    return 0;
  });
  EXPECT_EQ(end.output, "after: 1 1 1 1 1 1, have 0 0 0 0 0 0\n");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(CriticalSection, HaveMeansTheOneAndNoOther) {
  const processEnd end = runFreshChild([] {
    const int set = semaphoreSet(false);
    criticalSection outer(CS_STDOUT, false);
    {
      criticalSection inner(CS_STACK, false);
      tellState("two", set);
    }
    tellState("one again", set);
    return 0;
  });
  EXPECT_EQ(end.output,
            "two: 0 1 1 1 1 0, have 0 0 0 0 0 0\n"
            "one again: 0 1 1 1 1 1, have 1 0 0 0 0 0\n");
}

TEST(CriticalSection, HaveIsFalseForEachPairOfSections) {
  const processEnd end = runFreshChild([] {
    for (const sectionId outer : sections) {
      for (const sectionId inner : sections) {
        if (outer == inner) continue;
        criticalSection first(outer, false);
        criticalSection second(inner, false);
        if (allHave() != "0 0 0 0 0 0") dprintf(STDOUT_FILENO, "%d in %d\n", inner, outer);
      }
    }
    return 0;
  });
  EXPECT_EQ(end.output, "");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(CriticalSection, AllSixCanBeHeldAtOnceInAnyOrder) {
  const processEnd end = runFreshChild([] {
    const int set = semaphoreSet(false);
    {
      criticalSection stack(CS_STACK, false);
      criticalSection out(CS_STDOUT, false);
      criticalSection names(CS_NAME_ALLOC, false);
      criticalSection log(CS_LOGOUT, false);
      criticalSection network(CS_NETWORK, false);
      criticalSection counts(CS_REFCOUNT, false);
      tellState("six", set);
    }
    tellState("none", set);
    return 0;
  });
  EXPECT_EQ(end.output,
            "six: 0 0 0 0 0 0, have 0 0 0 0 0 0\n"
            "none: 1 1 1 1 1 1, have 0 0 0 0 0 0\n");
}

TEST(CriticalSection, BlocksForeverWhenItIsTakenTwice) {
  const int set = semaphoreSet(false);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    limitLife();
    criticalSection once(CS_STACK, false);
    criticalSection twice(CS_STACK, false);
    std::_Exit(0);
  }
  EXPECT_TRUE(someoneWaits(set, CS_STACK));
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, WNOHANG), 0) << endingOf(status);
  kill(child, SIGKILL);
  EXPECT_EQ(waitpid(child, &status, 0), child);
  // A process that died inside a section leaves it taken.
  EXPECT_EQ(sixValues(set), "1 1 1 1 1 0");
  semaphoreRelease();
}

TEST(CriticalSection, StaysTakenByAProcessThatEndsInside) {
  const int set = semaphoreSet(false);
  const processEnd end = runChild([] {
    criticalSection section(CS_NETWORK, false);
    std::exit(section.okay() ? 0 : 1);  // no destructor of a local object runs
    return 2;
  });
  EXPECT_EQ(end.ending, "exit 0");
  EXPECT_EQ(sixValues(set), "1 1 1 0 1 1");
  semaphoreRelease();
}

TEST(CriticalSection, TheOwnersAreEachProcesssOwn) {
  const int set = semaphoreSet(false);
  int toChild[2];
  int toParent[2];
  ASSERT_EQ(pipe(toChild), 0);
  ASSERT_EQ(pipe(toParent), 0);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  char byte = 'x';
  if (child == 0) {
    limitLife();
    bool good = false;
    {
      criticalSection section(CS_NETWORK, false);
      good = criticalSection::have(CS_NETWORK) && write(toParent[1], &byte, 1) == 1 &&
             read(toChild[0], &byte, 1) == 1;
    }
    std::_Exit(good ? 0 : 1);
  }
  ASSERT_EQ(read(toParent[0], &byte, 1), 1);
  EXPECT_EQ(semaphoreValue(set, CS_NETWORK), 0);
  EXPECT_FALSE(criticalSection::have(CS_NETWORK));
  {
    criticalSection other(CS_STDOUT, false);
    EXPECT_TRUE(criticalSection::have(CS_STDOUT));
  }
  EXPECT_EQ(write(toChild[1], &byte, 1), 1);
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(endingOf(status), "exit 0");
  EXPECT_EQ(sixValues(set), "1 1 1 1 1 1");
  for (const int end : {toChild[0], toChild[1], toParent[0], toParent[1]}) close(end);
  semaphoreRelease();
}

// --- Real failures ---------------------------------------------------------

TEST(CriticalSection, AbortsWhenSomeoneElseRemovedTheSet) {
  const processEnd taking = runFreshChild([] {
    semctl(semaphoreSet(false), 0, IPC_RMID);
    criticalSection section(CS_STDOUT, false);
    return 0;
  });
  EXPECT_TRUE(isFailureLine(taking.errors, "0 == semop(set_id, &operation, 1)"));
  EXPECT_EQ(taking.ending, "signal 6");

  const processEnd giving = runFreshChild([] {
    criticalSection section(CS_STDOUT, false);
    semctl(semaphoreSet(false), 0, IPC_RMID);
    return 0;
  });
  EXPECT_TRUE(isFailureLine(giving.errors, "0 == semop(set_id, &operation, 1)"));
  EXPECT_EQ(giving.ending, "signal 6");
}

TEST(CriticalSection, AbortsForWhatIsNoSection) {
  for (const int id : {6, 7, 1000, -1}) {
    SCOPED_TRACE(testing::Message() << "section " << id);
    const processEnd end = runSharingChild([id] {
      criticalSection section(static_cast<sectionId>(id), false);
      return 0;
    });
    EXPECT_TRUE(isFailureLine(end.errors, "0 == semop(set_id, &operation, 1)"));
    EXPECT_EQ(end.ending, "signal 6");
  }
}

}  // namespace semaphore_test
