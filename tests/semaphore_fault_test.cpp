// SPDX-License-Identifier: MIT
#include <sys/ipc.h>
#include <sys/mman.h>
#include <sys/sem.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <iterator>
#include <string>
#include <string_view>

#include "children.h"
#include "reports.h"
#include "section_state.h"
#include "semaphore_sets.h"
#include "system_calls.h"
#include "threading.h"

namespace semaphore_fault_test {

namespace {

// What goes wrong, and what is printed about the calls on standard output.
struct faultPlan {
  bool tellCalls = false;  // the calls for the set of six
  bool tellSets = false;   // the sizes of the sets that are created and removed
  bool tellHave = false;   // the operations, and whether the section is held meanwhile

  int signal = 0;  // comes while the set is made

  bool drawFails = false;
  bool drawIsZero = false;
  bool createFails = false;
  int createResult = -1;
  int createError = 0;

  int valueNumber = -1;  // the semaphore whose value is wrong
  int valueTurn = 0;     // the first (0) or the second (1) time it is asked for
  int value = 0;

  int operationNumber = -1;  // the semaphore whose operation fails
  int operationChange = 0;   // the operation that fails
  int operationError = 0;    // 0 lets it succeed without doing it
  bool operationFailed = false;

  bool removalFails = false;
};

faultPlan plan;
int turn = 0;  // how often the value of `plan.valueNumber` was asked for

// All existing sets, shared with the children: a child that aborts removes none.
struct knownSet {
  int id;
  int size;
};
struct setLedger {
  std::size_t count;
  knownSet sets[100];
};

setLedger& ledger() {
  static auto* const shared = static_cast<setLedger*>(
      mmap(nullptr, sizeof(setLedger), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  return *shared;
}

void enter(int id, int size) {
  if (ledger().count < std::size(ledger().sets)) ledger().sets[ledger().count++] = {id, size};
}

// The size of a set, 0 when it is not known.
int sizeOf(int id) {
  for (std::size_t i = 0; i < ledger().count; ++i) {
    if (ledger().sets[i].id == id) return ledger().sets[i].size;
  }
  return 0;
}

void strike(int id) {
  for (std::size_t i = 0; i < ledger().count; ++i) {
    if (ledger().sets[i].id == id) {
      ledger().sets[i] = ledger().sets[--ledger().count];
      return;
    }
  }
}

// Removes what children left behind, and returns the sizes: "6 ".
std::string removeLeftovers() {
  std::string result;
  while (ledger().count > 0) {
    const knownSet set = ledger().sets[--ledger().count];
    result += std::to_string(set.size) + ' ';
    if (set.id != 0) systemCalls::semctl.real(set.id, 0, IPC_RMID, {});  // 0 was never created
  }
  return result;
}

// Runs `body` in a child without a set.  The child's calls follow `fault`.
template <class Body>
processEnd runWith(const faultPlan& fault, Body body) {
  ledger();  // shared with the child from here on
  return runFreshChild([&] {
    reportTeller handler;  // gets no report of a failed semaphore call
    plan = fault;
    turn = 0;
    const int result = body();
    plan = {};
    return result;
  });
}

// Enters the section `id` in a child whose set exists already.
processEnd takeWith(const faultPlan& fault, sectionId id) {
  return runSharingChild([&] {
    reportTeller handler;
    plan = fault;
    {
      criticalSection section(id, false);
      tell("okay", section.okay());
    }
    plan = {};
    return 0;
  });
}

int useASection() {
  criticalSection section(CS_REFCOUNT, false);
  tell("okay", section.okay());
  return 0;
}

int get(key_t key, int count, int flags) {
  if (plan.tellSets) dprintf(STDOUT_FILENO, "create %d\n", count);
  if (count == 1 && plan.drawFails) {
    errno = ENOSPC;
    return -1;
  }
  if (count == 1 && plan.drawIsZero) {
    enter(0, 1);
    return 0;
  }
  if (count == 6) {
    if (plan.tellCalls) dprintf(STDOUT_FILENO, "semget %ld 6 %o\n", static_cast<long>(key), flags);
    if (plan.createFails) {
      errno = plan.createError;
      return plan.createResult;
    }
  }
  const int result = systemCalls::semget.real(key, count, flags);
  if (result >= 0) enter(result, count);
  if (plan.signal != 0 && count == 6) {
    semaphoreEndBy(plan.signal);
    tell("set exists", setExists(result) ? 1 : 0);
  }
  return result;
}

int control(int set, int number, int command, semaphoreArgument argument) {
  if (command == GETVAL) {
    if (plan.tellCalls) dprintf(STDOUT_FILENO, "GETVAL %d\n", number);
    if (number == plan.valueNumber && turn++ == plan.valueTurn) return plan.value;
  }
  if (command == IPC_RMID) {
    const int size = sizeOf(set);
    if (plan.tellSets) dprintf(STDOUT_FILENO, "remove %d\n", size);
    if (plan.tellCalls && size == 6) dprintf(STDOUT_FILENO, "RMID %d\n", number);
    if (plan.removalFails && size == 6) {
      errno = EPERM;
      return -1;
    }
    strike(set);
    if (plan.drawIsZero && set == 0) return 0;
  }
  return systemCalls::semctl.real(set, number, command, argument);
}

int operate(int set, sembuf* operations, std::size_t count) {
  const int number = operations->sem_num;
  const int change = operations->sem_op;
  if (plan.tellCalls) {
    dprintf(STDOUT_FILENO, "semop %d: %+d, flags %o, %d operation\n", number, change,
            static_cast<unsigned>(operations->sem_flg), static_cast<int>(count));
  }
  if (plan.tellHave) {
    dprintf(STDOUT_FILENO, "semop %+d: have %d\n", change,
            criticalSection::have(static_cast<sectionId>(number)));
  }
  if (number == plan.operationNumber && change == plan.operationChange) {
    if (plan.operationError == 0) return 0;
    if (plan.operationFailed) {
      dprintf(STDOUT_FILENO, "tried again\n");
      _exit(9);
    }
    plan.operationFailed = true;
    errno = plan.operationError;
    return -1;
  }
  return systemCalls::semop.real(set, operations, count);
}

const replacedCalls here(__FILE__, [] {
  systemCalls::semget.replace(get);
  systemCalls::semctl.replace(control);
  systemCalls::semop.replace(operate);
});

}  // namespace

// --- The calls as they should be -------------------------------------------

TEST(SemaphoreCalls, AreTheseInThisOrder) {
  faultPlan fault;
  fault.tellCalls = true;
  const processEnd end = runWith(fault, [] {
    semaphoreSet(false);
    tell("open", 1);
    { useASection(); }
    semaphoreClose();
    return 0;
  });
  EXPECT_EQ(end.output,
            "semget 0 6 666\n"
            "GETVAL 0\n"
            "semop 0: +1, flags 4000, 1 operation\n"
            "GETVAL 0\n"
            "GETVAL 1\n"
            "semop 1: +1, flags 4000, 1 operation\n"
            "GETVAL 1\n"
            "GETVAL 2\n"
            "semop 2: +1, flags 4000, 1 operation\n"
            "GETVAL 2\n"
            "GETVAL 3\n"
            "semop 3: +1, flags 4000, 1 operation\n"
            "GETVAL 3\n"
            "GETVAL 4\n"
            "semop 4: +1, flags 4000, 1 operation\n"
            "GETVAL 4\n"
            "GETVAL 5\n"
            "semop 5: +1, flags 4000, 1 operation\n"
            "GETVAL 5\n"
            "open 1\n"
            "semop 2: -1, flags 0, 1 operation\n"
            "okay 1\n"
            "semop 2: +1, flags 0, 1 operation\n"
            "RMID 0\n");
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
  EXPECT_EQ(removeLeftovers(), "");
}

TEST(SemaphoreCalls, FindTheSectionOwnedOnlyWhileItIsTaken) {
  faultPlan fault;
  fault.tellHave = true;
  const processEnd end = takeWith(fault, CS_NETWORK);
  EXPECT_EQ(end.output,
            "semop -1: have 0\n"
            "okay 1\n"
            "semop +1: have 0\n");
  EXPECT_EQ(end.ending, "exit 0");
}

TEST(SemaphoreCalls, DrawASetOfOneSoThatTheRealOneIsNotZero) {
  for (const bool drawIsZero : {false, true}) {
    SCOPED_TRACE(drawIsZero ? "the kernel starts with 0" : "the kernel has given sets before");
    faultPlan fault;
    fault.tellSets = true;
    fault.drawIsZero = drawIsZero;
    const processEnd end = runWith(fault, [] {
      useASection();
      semaphoreClose();
      return 0;
    });
    EXPECT_EQ(end.output,
              "create 1\n"
              "create 6\n"
              "remove 1\n"
              "okay 1\n"
              "remove 6\n");
    EXPECT_EQ(end.errors, "");
    EXPECT_EQ(end.ending, "exit 0");
    EXPECT_EQ(removeLeftovers(), "");
  }
}

TEST(SemaphoreCalls, RemoveWhatTheyCreateByTheEndOfTheProcess) {
  const processEnd end = runFreshChild([] {
    useASection();
    semaphoreRelease();
    useASection();
    semaphoreRelease();
    useASection();
    return 0;
  });
  EXPECT_EQ(end.output, "okay 1\nokay 1\nokay 1\n");
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
  EXPECT_EQ(removeLeftovers(), "");
}

TEST(SemaphoreCalls, MakeASignalWaitUntilTheSetCanBeRemoved) {
  faultPlan fault;
  fault.signal = SIGURG;  // which ends no process by itself
  const processEnd end = runWith(fault, [] {
    const int set = semaphoreSet(false);
    tell("afterwards", setExists(set) ? 1 : 0);
    return 0;
  });
  EXPECT_EQ("set exists 1\nafterwards 0\n", end.output);
  EXPECT_EQ("exit 0", end.ending);
  fault.signal = SIGTERM;
  const processEnd ended = runWith(fault, [] { return semaphoreSet(false); });
  EXPECT_EQ("set exists 1\n", ended.output);
  EXPECT_EQ("signal 15", ended.ending);
  EXPECT_EQ("", removeLeftovers());
}

// --- Creating the set fails ------------------------------------------------

TEST(SemaphoreFailure, OfCreatingTheSetAborts) {
  static const struct {
    const char* what;
    int result;
    int error;
    bool drawFails;
  } cases[] = {
      {"no space for sets", -1, ENOSPC, true}, {"no space for the second set", -1, ENOSPC, false},
      {"no memory", -1, ENOMEM, false},        {"an id of 0", 0, 0, false},
      {"a negative id", -2, 0, false},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.what);
    faultPlan fault;
    fault.createFails = true;
    fault.createResult = row.result;
    fault.createError = row.error;
    fault.drawFails = row.drawFails;
    const processEnd end = runWith(fault, useASection);
    EXPECT_TRUE(isFailureLine(end.errors, "result > 0"));
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(end.ending, "signal 6");
    EXPECT_EQ(removeLeftovers(), "");
  }
}

TEST(SemaphoreFailure, OfCreatingTheSetAbortsHoweverItIsAskedFor) {
  faultPlan fault;
  fault.createFails = true;
  fault.createError = ENOSPC;
  const processEnd asked = runWith(fault, [] { return semaphoreSet(false); });
  EXPECT_TRUE(isFailureLine(asked.errors, "result > 0"));
  EXPECT_EQ(asked.ending, "signal 6");

  const processEnd checked = runWith(fault, [] {
    criticalSection section(CS_STDOUT, true);
    return 0;
  });
  EXPECT_TRUE(isFailureLine(checked.errors, "result > 0"));
  EXPECT_EQ(checked.ending, "signal 6");
  EXPECT_EQ(removeLeftovers(), "");
}

TEST(SemaphoreFailure, OfASemaphoreThatIsNotZeroAtFirstAborts) {
  for (int number = 0; number < 6; ++number) {
    for (const int value : {1, 2, -1}) {
      SCOPED_TRACE(testing::Message() << "semaphore " << number << " has " << value);
      faultPlan fault;
      fault.valueNumber = number;
      fault.valueTurn = 0;
      fault.value = value;
      const processEnd end = runWith(fault, useASection);
      EXPECT_TRUE(isFailureLine(end.errors, "0 == semctl(result, offset, GETVAL)"));
      EXPECT_EQ(end.output, "");
      EXPECT_EQ(end.ending, "signal 6");
      EXPECT_EQ(removeLeftovers(), "");
    }
  }
}

TEST(SemaphoreFailure, OfTheFirstOperationAborts) {
  for (int number = 0; number < 6; ++number) {
    for (const int error : {EAGAIN, EINVAL, EIDRM}) {
      SCOPED_TRACE(testing::Message() << "semaphore " << number << ", error " << error);
      faultPlan fault;
      fault.operationNumber = number;
      fault.operationChange = +1;
      fault.operationError = error;
      const processEnd end = runWith(fault, useASection);
      EXPECT_TRUE(isFailureLine(end.errors, "0 == semop (result, &operation, 1)"));
      EXPECT_EQ(end.output, "");
      EXPECT_EQ(end.ending, "signal 6");
      EXPECT_EQ(removeLeftovers(), "");
    }
  }
}

TEST(SemaphoreFailure, OfASemaphoreThatIsNotOneAfterwardsAborts) {
  for (int number = 0; number < 6; ++number) {
    for (const int value : {0, 2, -1}) {
      SCOPED_TRACE(testing::Message() << "semaphore " << number << " has " << value);
      faultPlan fault;
      fault.valueNumber = number;
      fault.valueTurn = 1;
      fault.value = value;
      const processEnd end = runWith(fault, useASection);
      EXPECT_TRUE(isFailureLine(end.errors, "1 == semctl(result, offset, GETVAL)"));
      EXPECT_EQ(end.output, "");
      EXPECT_EQ(end.ending, "signal 6");
      EXPECT_EQ(removeLeftovers(), "");
    }
  }
}

// --- Using the set fails ---------------------------------------------------

TEST(SemaphoreFailure, OfTakingASectionAborts) {
  for (const sectionId id : sections) {
    for (const int error : {EIDRM, EINVAL, ENOMEM}) {
      SCOPED_TRACE(testing::Message() << "section " << id << ", error " << error);
      faultPlan fault;
      fault.operationNumber = id;
      fault.operationChange = -1;
      fault.operationError = error;
      const processEnd end = takeWith(fault, id);
      EXPECT_TRUE(isFailureLine(end.errors, "0 == semop(set_id, &operation, 1)"));
      EXPECT_EQ(end.output, "");
      EXPECT_EQ(end.ending, "signal 6");
      EXPECT_EQ(removeLeftovers(), "");
    }
  }
}

TEST(SemaphoreFailure, AbortsWhereItsLineCannotBeWritten) {
  faultPlan fault;
  fault.operationNumber = CS_REFCOUNT;
  fault.operationChange = -1;
  fault.operationError = EIDRM;
  const processEnd end = runSharingChild([&] {
    close(STDERR_FILENO);
    plan = fault;
    criticalSection section(CS_REFCOUNT, false);
    plan = {};
    return 0;
  });
  EXPECT_EQ(end.ending, "signal 6");
  EXPECT_EQ(removeLeftovers(), "");
}

TEST(SemaphoreFailure, OfGivingASectionBackAborts) {
  for (const sectionId id : sections) {
    for (const int error : {EIDRM, EINVAL, ERANGE}) {
      SCOPED_TRACE(testing::Message() << "section " << id << ", error " << error);
      faultPlan fault;
      fault.operationNumber = id;
      fault.operationChange = +1;
      fault.operationError = error;
      const processEnd end = takeWith(fault, id);
      EXPECT_TRUE(isFailureLine(end.errors, "0 == semop(set_id, &operation, 1)"));
      EXPECT_EQ(end.output, "okay 1\n");
      EXPECT_EQ(end.ending, "signal 6");
      EXPECT_EQ(removeLeftovers(), "");
    }
  }
}

TEST(SemaphoreFailure, IncludesACallThatASignalInterrupts) {
  faultPlan creating;
  creating.operationNumber = CS_STDOUT;
  creating.operationChange = +1;
  creating.operationError = EINTR;
  const processEnd created = runWith(creating, useASection);
  EXPECT_TRUE(isFailureLine(created.errors, "0 == semop (result, &operation, 1)"));
  EXPECT_EQ(created.output, "");
  EXPECT_EQ(created.ending, "signal 6");
  EXPECT_EQ(removeLeftovers(), "");

  faultPlan inUse;
  inUse.operationNumber = CS_STACK;
  inUse.operationError = EINTR;
  for (const int change : {-1, +1}) {
    SCOPED_TRACE(change);
    inUse.operationChange = change;
    const processEnd used = takeWith(inUse, CS_STACK);
    EXPECT_TRUE(isFailureLine(used.errors, "0 == semop(set_id, &operation, 1)"));
    EXPECT_EQ(used.output, change < 0 ? "" : "okay 1\n");
    EXPECT_EQ(used.ending, "signal 6");
    EXPECT_EQ(removeLeftovers(), "");
  }
}

TEST(SemaphoreFailure, OfRemovingTheSetIsPassedOver) {
  faultPlan fault;
  fault.removalFails = true;
  const processEnd end = runWith(fault, [] {
    semaphoreSet(false);
    tell("close", semaphoreSet(true));
    tell("open", semaphoreSet(false));
    return 0;
  });
  EXPECT_EQ(end.output, "close -3\nopen -3\n");
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.ending, "exit 0");
  EXPECT_EQ(removeLeftovers(), "6 ");
}

TEST(SemaphoreFailure, OfTheOwnersBoundIsAnOrdinaryAssertion) {
  // As if the set had a seventh semaphore.
  faultPlan fault;
  fault.operationNumber = 6;
  fault.operationChange = -1;
  fault.operationError = 0;
  const processEnd end = takeWith(fault, CS_COUNT);
  const std::string start =
      "assert 0, severity 4, audience 31: index < CS_COUNT | ../utilities/unix/semaphore_unx @ ";
  ASSERT_EQ(end.output.substr(0, start.size()), start);
  const std::string_view line = std::string_view(end.output).substr(start.size());
  EXPECT_GT(line.size(), 1U) << end.output;
  EXPECT_EQ(line.find_first_not_of("0123456789"), line.size() - 1) << end.output;
  EXPECT_EQ(line.back(), '\n') << end.output;
  EXPECT_EQ(end.ending, "signal 6");
}

}  // namespace semaphore_fault_test
