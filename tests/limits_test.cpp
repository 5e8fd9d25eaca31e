// SPDX-License-Identifier: MIT
// What the library does not do.  Its headers say so: callers rely on it, or must know it.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string>
#include <thread>

#include "children.h"
#include "conversion.h"
#include "datetime.h"
#include "events.h"
#include "html_escape.h"
#include "processes.h"
#include "semaphore_sets.h"
#include "threading.h"
#include "trace.h"

namespace limits_test {

namespace {

// --- Critical sections -------------------------------------------------------

void change(int set, unsigned short section, short by) {
  sembuf operation = {section, by, 0};
  if (semop(set, &operation, 1) != 0) {
    std::_Exit(90);
  }
}

TEST(SemaphoreSet, MayBeUsedByEveryUser) {
  const int set = semaphoreSet(false);
  semid_ds details = {};
  semaphoreArgument argument{};
  argument.buf = &details;
  ASSERT_EQ(semctl(set, 0, IPC_STAT, argument), 0);
  EXPECT_EQ(details.sem_perm.mode & 0777, 0666);
}

TEST(SemaphoreSet, OfRootMayBeHeldByAnotherUserWhileALaunchWaits) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "needs root";
  }
  const int set = semaphoreSet(false);
  const pid_t other = fork();
  if (other == 0) {
    if (setuid(65534) != 0) std::_Exit(91);
    change(set, CS_REFCOUNT, -1);
    while (semctl(set, CS_REFCOUNT, GETNCNT) == 0) usleep(1000);
    usleep(20000);
    std::_Exit(semctl(set, CS_REFCOUNT, GETNCNT) == 1 ? 0 : 92);
  }
  while (semaphoreValue(set, CS_REFCOUNT) != 0) usleep(1000);
  const pid_t waiting = fork();
  if (waiting == 0) {
    const criticalSection section(CS_REFCOUNT, false);
    std::_Exit(0);
  }
  int status = -1;
  EXPECT_EQ(waitpid(other, &status, 0), other);
  EXPECT_EQ(endingOf(status), "exit 0");
  EXPECT_EQ(waitpid(waiting, &status, WNOHANG), 0) << "it still waits";
  change(set, CS_REFCOUNT, 1);
  EXPECT_EQ(waitpid(waiting, &status, 0), waiting);
  EXPECT_EQ(endingOf(status), "exit 0");
}

TEST(CriticalSection, AbortsAProcessThatWaitsAndIsStoppedAndContinued) {
  const int set = semaphoreSet(false);
  change(set, CS_NETWORK, -1);
  const pid_t waiting = fork();
  if (waiting == 0) {
    const rlimit noCore = {0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    close(STDERR_FILENO);
    const criticalSection section(CS_NETWORK, false);
    std::_Exit(0);
  }
  ASSERT_TRUE(someoneWaits(set, CS_NETWORK));
  int status = -1;
  kill(waiting, SIGSTOP);
  ASSERT_EQ(waitpid(waiting, &status, WUNTRACED), waiting);
  kill(waiting, SIGCONT);
  EXPECT_EQ(waitpid(waiting, &status, 0), waiting);
  EXPECT_EQ(endingOf(status), "signal 6");
  change(set, CS_NETWORK, 1);
}

// Whether a child of a plain `fork` waits for a section that its parent holds.
std::string forkedChildOfAHolder(bool setFirst) {
  const processEnd end = runFreshChild([setFirst] {
    if (setFirst) {
      semaphoreSet(false);
    }
    int ready[2];
    if (pipe(ready) != 0) return 9;
    const pid_t child = fork();
    if (child == 0) {
      char byte = 0;
      if (read(ready[0], &byte, 1) != 1) std::_Exit(9);
      alarm(2);
      { const criticalSection section(CS_STDOUT, false); }
      std::exit(0);
    }
    const criticalSection section(CS_STDOUT, false);
    if (write(ready[1], "x", 1) != 1) return 9;
    int status = -1;
    waitpid(child, &status, 0);
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM ? 1 : 0;
  });
  return end.ending == "exit 1" ? "waits" : end.ending == "exit 0" ? "goes on" : end.ending;
}

TEST(CriticalSection, ExcludesAForkedChildOnlyIfTheSetWasMadeFirst) {
  EXPECT_EQ(forkedChildOfAHolder(true), "waits");
  EXPECT_EQ(forkedChildOfAHolder(false), "goes on");
}

// --- Threads and plugins -----------------------------------------------------

TEST(ThreadData, IsOneForAllThreadsOfTheProcess) {
  const ThreadData* mine = &ThreadData::instance(true);
  const ThreadData* theirs = nullptr;
  int id = 0;
  std::thread([&] {
    theirs = &ThreadData::instance(true);
    id = Thread::threadId();
  }).join();
  EXPECT_EQ(theirs, mine);
  EXPECT_EQ(id, -1);
  EXPECT_FALSE(mine->threadSafe());
}

class lateDatatype : public ThreadedDatatype {
 public:
  ThreadedDataObject* create() const override { return nullptr; }
  const char* name() const override { return "late"; }
};

TEST(Plugin, CannotTakeASlotOnceTheThreadDataIsBuilt) {
  const processEnd end = runSharingChild([] {
    ThreadData::instance(true);
    const lateDatatype late;
    return 0;
  });
  EXPECT_EQ(end.ending, "signal 6");
}

TEST(Plugin, HasTheFlagsOfTheProgramAndItsOwnOnceItIsLoaded) {
  EXPECT_EQ(traceFlag::level("plugin"), -1);
  void* const loaded = dlopen(LIMITS_PLUGIN, RTLD_NOW);
  ASSERT_NE(loaded, nullptr) << dlerror();
  EXPECT_EQ(traceFlag::level("plugin"), 2);
  // It is never unloaded: the registry never forgets a flag.
}

// --- Reports -----------------------------------------------------------------

class plainEvent : public eventReport {
 public:
  explicit plainEvent(const std::string& operation)
      : eventReport(WARNING, AUD_ALL, 7, "", operation) {}
  ~plainEvent() override { report(); }
  const char* domain() const override { return "limits"; }
};

TEST(eventReport, WritesTheBytesOfItsOperationAsTheyAre) {
  const storingHandler stored(1, AUD_ALL, WARNING);
  plainEvent("a\nFatal: forged\x1b\xff");
  EXPECT_NE(stored.str().find("a\nFatal: forged\x1b\xff"), std::string::npos) << stored.str();
}

TEST(storingHandler, KeepsEveryReport) {
  const storingHandler stored(1, AUD_ALL, WARNING);
  plainEvent("first");
  const std::size_t one = stored.str().size();
  for (int i = 0; i < 9999; i++) {
    plainEvent("again");
  }
  EXPECT_EQ(stored.str().size(), 10000 * one);
  EXPECT_NE(stored.str().find("first"), std::string::npos);
}

// --- Escaping ----------------------------------------------------------------

TEST(javaScriptEscape, LeavesBackslashesDoubleQuotesAndTags) {
  EXPECT_EQ(javaScriptEscape("a\\"), "a\\");
  EXPECT_EQ(javaScriptEscape("\\';alert(1)//"), "\\\\';alert(1)//");
  EXPECT_EQ(javaScriptEscape("\"</script>"), "\"</script>");
}

TEST(HTMLescape, LeavesSingleQuotesAndWhatScriptsRead) {
  EXPECT_EQ(HTMLescape("' onclick='alert(1)", false), "' onclick='alert(1)");
  EXPECT_EQ(HTMLescape("javascript:alert(1)", false), "javascript:alert(1)");
}

TEST(LDAPescape, LeavesBlanksAtTheEndsAndWhatFiltersRead) {
  EXPECT_EQ(LDAPescape(" a "), " a ");
  EXPECT_EQ(LDAPescape("#41"), "#41");
  EXPECT_EQ(LDAPescape("*)(uid=*"), "*)(uid=*");
}

TEST(CSVescape, LeavesFormulasAndOtherSeparators) {
  EXPECT_EQ(CSVescape("=cmd|' /C calc'!A0"), "=cmd|' /C calc'!A0");
  EXPECT_EQ(CSVescape("+1"), "+1");
  EXPECT_EQ(CSVescape("-1"), "-1");
  EXPECT_EQ(CSVescape("@SUM(A1)"), "@SUM(A1)");
  EXPECT_EQ(CSVescape("a;b\tc"), "a;b\tc");
}

// --- The clock ---------------------------------------------------------------

TEST(DateTimeNow, TakesLocalTimeForUTCWithThisCLibrary) {
  setenv("TZ", "AAA+7", 1);
  tzset();
  const DateTime local = DateTime::now(LOCAL_TIME);
  const double difference = local - DateTime::now(0);
  EXPECT_LE(difference, 0.0);
  EXPECT_GT(difference, -60.0);
}

}  // namespace

}  // namespace limits_test
