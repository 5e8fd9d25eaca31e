// SPDX-License-Identifier: MIT
// The driver within the test's own process: `execvp` records and fails, the clock
// does not move, and nobody sleeps.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/sem.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "assoclist.h"
#include "captured_errors.h"
#include "children.h"
#include "configDB.h"
#include "events.h"
#include "fake_clock.h"
#include "launch.h"
#include "main2.h"
#include "semaphore_sets.h"
#include "system.h"
#include "system_calls.h"
#include "texts.h"
#include "threading.h"
#include "trace.h"

namespace driver_test {

namespace {

using Strings = std::vector<std::string>;

// What `execvp` was called with.
struct Calls {
  int error = ENOENT;  // what `execvp` fails with
  std::string logName;
  void (*meanwhile)() = nullptr;  // called during `execvp`

  int executions = 0;
  std::string program;
  Strings vector;
  std::string log;           // at the call
  int logFlags = -1;         // of the log's descriptor
  std::size_t setsLeft = 0;  // at the call
};

Calls calls;

// The flags of this process's descriptor for a file, -1 when there is none.
int descriptorFlags(const std::string& file) {
  for (int descriptor = 0; descriptor < 256; ++descriptor) {
    std::error_code error;
    const auto target =
        std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), error);
    if (!error && target == file) {
      return fcntl(descriptor, F_GETFD);
    }
  }
  return -1;
}

int firstSection = -1;  // the first that was taken in this process

int operate(int set, sembuf* operations, std::size_t count) {
  if (operations->sem_op < 0 && firstSection < 0) {
    firstSection = operations->sem_num;
  }
  return systemCalls::semop.real(set, operations, count);
}

// Before other objects take sections, and during the tests.
[[gnu::constructor(101)]] void watchSections() {
  systemCalls::semop.replace(operate);
}

int execute(const char* file, char* const* arguments) {
  ++calls.executions;
  calls.program = file;
  calls.vector.clear();
  for (; *arguments != nullptr; ++arguments) {
    calls.vector.emplace_back(*arguments);
  }
  calls.setsLeft = setsOf(getpid()).size();
  calls.log = readFile(calls.logName);
  calls.logFlags = descriptorFlags(calls.logName);
  if (calls.meanwhile != nullptr) {
    calls.meanwhile();
  }
  errno = calls.error;
  return -1;
}

const replacedCalls here(__FILE__, watchSections);

class Driver : public testing::Test {
 protected:
  Driver() {
    std::string pattern = std::filesystem::temp_directory_path() / "hoplaunch-driver-XXXXXX";
    EXPECT_NE(nullptr, mkdtemp(pattern.data()));
    folder = std::filesystem::canonical(pattern);
    calls = Calls();
    calls.logName = folder + "/log";
    systemCalls::execvp.replace(execute);
    fakeClock::stopAt({1700000000, 250000});  // 2023-11-14 22:13:20 UTC
  }
  ~Driver() override { std::filesystem::remove_all(folder); }

  // The options with the log's added.
  assocList logged(const Strings& options) const {
    assocList result(options);
    result["log"] = calls.logName;
    return result;
  }
  static std::string log() { return readFile(calls.logName); }

  // Each sleep in seconds, blank separated.
  static std::string sleeps() {
    std::string result;
    for (const timespec& one : fakeClock::sleeps) {
      result += std::to_string(one.tv_sec) + "." + std::to_string(one.tv_nsec) + " ";
    }
    return result;
  }

  std::string folder;
};

TEST_F(Driver, TakesTheOutputSectionFirst) {
  EXPECT_EQ(process({"no URI"}, assocList()), -1);
  EXPECT_EQ(firstSection, 0);
}

TEST_F(Driver, SuppliesAnEmptyHostName) {
  EXPECT_EQ("", InterfaceFinder::FQDN());
}

TEST_F(Driver, WritesTheLogBeforeTheProgramIsExecuted) {
  EXPECT_EQ(-1, process({"vnc://h:5901/?shared=1", "ignored"},
                        logged({"style=separate", "portArg=port", "program=a/b\\c"})));
  EXPECT_EQ(1, calls.executions);
  EXPECT_EQ("a/b\\c", calls.program);
  EXPECT_EQ((Strings{"c", "--autoreconnect", "0", "-shared", "1", "-port", "5901", "h"}),
            calls.vector);
  EXPECT_EQ(
      "20231114T221320: URI = vnc://h:5901/?shared=1\n"
      "executable: a/b\\c\n"
      "\t\"c\"\n"
      "\t\"--autoreconnect\"\n"
      "\t\"0\"\n"
      "\t\"-shared\"\n"
      "\t\"1\"\n"
      "\t\"-port\"\n"
      "\t\"5901\"\n"
      "\t\"h\"\n",
      calls.log);
  EXPECT_EQ(calls.log + "_execv() failed; path = a/b\\c errno = 2 No such file or directory\n",
            log());
  EXPECT_EQ("5.0 ", sleeps());
}

TEST_F(Driver, LogsTheErrorOfAFailedExecution) {
  struct {
    int error;
    const char* text;
  } const cases[] = {
      {1, "1 Operation not permitted"}, {5, "5 Input/output error"},
      {8, "8 Exec format error"},       {12, "12 Cannot allocate memory"},
      {26, "26 Text file busy"},        {12345, "12345 Unknown error 12345"},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.error);
    std::filesystem::remove(calls.logName);
    calls.error = one.error;
    fakeClock::sleeps.clear();
    EXPECT_EQ(-1, process({"ssh://h/"}, logged({"program=x"})));
    EXPECT_EQ(std::string("20231114T221320: URI = ssh://h/\n"
                          "executable: x\n"
                          "\t\"x\"\n"
                          "\t\"h\"\n"
                          "_execv() failed; path = x errno = ") +
                  one.text + "\n",
              log());
    EXPECT_EQ("5.0 ", sleeps());
  }
}

TEST_F(Driver, WaitsWithoutALogToo) {
  for (const char* option : {"log=", "log=/no/such/log", "log=/dev/full"}) {
    SCOPED_TRACE(option);
    fakeClock::sleeps.clear();
    EXPECT_EQ(-1, process({"ssh://h/"}, assocList(Strings{option})));
    EXPECT_EQ("5.0 ", sleeps());
  }
  EXPECT_EQ(3, calls.executions);
}

TEST_F(Driver, DoesNotWaitForABadUri) {
  EXPECT_EQ(-1, process({"no URI %41"}, logged({"program=x"})));
  EXPECT_EQ("Bad URI \"no URI %41\"\n", log());
  EXPECT_EQ(0, calls.executions);
  EXPECT_EQ("", sleeps());
}

TEST_F(Driver, DoesNotWaitForASchemeWithoutAProgram) {
  EXPECT_EQ(-1, process({"ftp://h/"}, logged({})));
  EXPECT_EQ("20231114T221320: URI = ftp://h/\nno executable for scheme ftp\n", log());
  EXPECT_EQ(0, calls.executions);
  EXPECT_EQ("", sleeps());
}

TEST_F(Driver, KeepsTheLogFromOtherPrograms) {
  EXPECT_EQ(-1, process({"ssh://h/"}, logged({})));
  EXPECT_EQ(FD_CLOEXEC, calls.logFlags);
}

TEST_F(Driver, RemovesTheSemaphoresBeforeTheProgramIsExecuted) {
  EXPECT_EQ(-1, process({"ssh://h/"}, logged({})));
  EXPECT_EQ(1, calls.executions);
  EXPECT_EQ(0U, calls.setsLeft);
}

// The child exits with 0 when all is well.
TEST_F(Driver, HasSectionsAgainAfterAFailedExecution) {
  semaphoreRelease();  // of tests that ran before in this process
  const processEnd end = runChild([this] {
    std::printf("%d", getpid());
    const bool failed = process({"ssh://h/"}, logged({})) == -1 && calls.setsLeft == 0;
    bool taken = false;
    {
      const criticalSection section(CS_REFCOUNT, false);
      taken = section.okay() && criticalSection::have(CS_REFCOUNT) && setsOf(getpid()).size() == 1;
    }
    const bool launchedAgain = process({"ssh://h/"}, logged({})) == -1 && calls.setsLeft == 0;
    const bool edited = !editableConfigDB().null();
    return (failed ? 0 : 1) + (taken ? 0 : 2) + (launchedAgain ? 0 : 4) + (edited ? 0 : 8);
  });
  EXPECT_EQ(end.ending, "exit 0")
      << "1: the launch went wrong, 2: no section, 4: the second launch went wrong, 8: no edit";
  EXPECT_EQ(0U, setsOf(std::stoi(end.output)).size());
}

TEST_F(Driver, LeavesTheSemaphoresOfItsParentAlone) {
  { const criticalSection section(CS_STDOUT, false); }
  const std::size_t before = setsOf(getpid()).size();
  ASSERT_EQ(1U, before);
  const int id = semaphoreSet(false);
  const processEnd end = runChild([this] {
    process({"ssh://h/"}, logged({}));
    return 0;
  });
  EXPECT_EQ(end.ending, "exit 0");
  EXPECT_EQ(id, semaphoreSet(false));
  EXPECT_EQ(1, semaphoreValue(id, CS_STDOUT)) << "the parent's set is gone";
  EXPECT_EQ(1, semaphoreValue(id, CS_REFCOUNT));
}

// For tests that follow in this process.
void restoreItems() {
  {
    editableConfigDB editor;
    editor.set("PROGRAMS", Strings{"VNC=vncviewer", "SSH=putty"}, DistName(), false);
    editor.set("VNC_OPTIONS", Strings{"-autoreconnect=0"}, DistName(), false);
    editor.set("URI_SCHEME", std::string("VNC"), DistName(), false);
  }
  threadedConfigDB::refresh();
}

TEST_F(Driver, AppliesItemsForTheRun) {
  ThreadData::instance(false);
  EXPECT_EQ(-1, process({"ftp://h/"}, logged({})));
  const int before = configDB(RT_READ).version();
  EXPECT_EQ(-1,
            process({"vnc://h/"}, logged({"uri_scheme=SSH", "PROGRAMS=vnc=xyz", "VNC_OPTIONS=a=1",
                                          "dummy=changed", "foo=1", "DefaultLanguage=French"})));
  EXPECT_EQ("xyz", calls.program);
  EXPECT_EQ((Strings{"xyz", "-a=1", "h"}), calls.vector);
  const configDB published(RT_READ);
  EXPECT_EQ(before + 1, published.version());
  EXPECT_EQ(published.ptr(), threadedConfigDB::local().ptr());
  EXPECT_EQ((Strings{"SSH"}), published.find("URI_SCHEME").all());
  EXPECT_EQ((Strings{"VNC"}), published.find("URI_SCHEME").getDefaults());
  EXPECT_TRUE(published.find("URI_SCHEME").getDN().empty());
  EXPECT_FALSE(published.find("URI_SCHEME").isDN());
  EXPECT_EQ((Strings{"vnc=xyz"}), published.find("PROGRAMS").all());
  EXPECT_EQ((Strings{"changed"}), published.find("DUMMY").all());
  EXPECT_EQ((Strings{"dummy"}), published.find("DUMMY").getDefaults());
  EXPECT_EQ((Strings{"French"}), published.find("defaultLanguage").all());
  EXPECT_EQ(&configDB::dummy(), &published.find("foo")) << "an item was made for an option";
  EXPECT_EQ(&configDB::dummy(), &published.find("log")) << "an item was made for an option";
  restoreItems();
}

TEST_F(Driver, SwitchesFlagsOnWhateverTheirValue) {
  EXPECT_EQ(0, traceFlag::level("hoplaunch"));
  EXPECT_EQ(-1, process({"ftp://h/"},
                        logged({"hoplaunch=0", "reportThread=", "reportStack=5", "CONFIGDB=1"})));
  EXPECT_EQ(1, traceFlag::level("hoplaunch"));
  EXPECT_EQ(1, traceFlag::level("reportThread"));
  EXPECT_EQ(1, traceFlag::level("reportStack"));
  EXPECT_EQ(0, traceFlag::level("configDB")) << "flag names heed letter case";
  for (const char* name : {"hoplaunch", "reportThread", "reportStack"}) {
    traceFlag::set(name, 0);
  }
}

// Items come before flags, and letter case does not count for them.  An option that
// either has used does not reach the launch.
TEST_F(Driver, KeepsTheNamesOfItemsAndFlagsFromTheLaunch) {
  const processEnd end = runSharingChild([this] {
    static traceFlag style("style", 0);
    static traceFlag both("PORTARG", 0);
    ThreadData::instance(false);
    process({"ftp://h/"}, logged({}));  // the first read publishes the database
    {
      editableConfigDB editor;
      editor.set("portArg", std::string("none"), DistName(), false);
    }
    calls.meanwhile = [] {
      for (const std::string& element : calls.vector) {
        dprintf(STDERR_FILENO, "%s ", element.c_str());
      }
      dprintf(STDERR_FILENO, "style %u both %u item %s\n", style.level(), both.level(),
              configDB(RT_READ).find("portArg").all().front().c_str());
    };
    process({"ssh://h:1/?a=b"}, logged({"style=separate", "PORTARG=P"}));
  });
  EXPECT_EQ("putty -a=b h:1 style 1 both 0 item P\n", end.errors);
  EXPECT_EQ("exit 0", end.ending);
}

TEST_F(Driver, HandlesReportsForAllBehindTheStoringHandler) {
  ThreadData::instance(false);
  const capturedErrors errors;
  calls.meanwhile = [] {
    commonEvent(FAILURE, AUD_ALL, EC_COMMENT, "stored", "meanwhile");
    std::string handlers;
    for (const auto& [priority, handler] : ThreadedEventHandlerList::local().theMap) {
      handlers += std::to_string(priority) + " " + handler->name() + "\n";
    }
    EXPECT_EQ("10 storingHandler\n100 stderrHandler\n", handlers);
    commonEvent shown(SUCCESS, AUD_ALL, EC_COMMENT, "shown", "meanwhile");
    EXPECT_TRUE(ThreadedEventHandlerList::local().theMap.rbegin()->second->handle(shown));
    EXPECT_EQ(AUD_NULL, shown.audience());
  };
  EXPECT_EQ(-1, process({"ssh://h/"}, logged({})));
  EXPECT_EQ("20231114T221320.250000: Success: commonEvent/comment \"shown\" | meanwhile\n",
            errors.str());
  EXPECT_EQ(0U, ThreadedEventHandlerList::local().theMap.count(100)) << "it outlived the run";
}

TEST_F(Driver, LetsNoReportReachStandardError) {
  ThreadData::instance(false);
  EXPECT_EQ(-1, process({"ftp://h/"}, logged({})));  // the first read publishes the database
  {
    editableConfigDB editor;
    editor.set("driver_test.root", std::string("DC=com"), DistName(), true);
  }
  const std::string before = storingHandler::theInstance().str();
  const capturedErrors errors;
  EXPECT_EQ(-1, process({"ftp://h/"}, logged({"driver_test.root=x"})));
  EXPECT_EQ("", errors.str());
  EXPECT_EQ(
      "20231114T221320: Failure: commonEvent/Data mis-match \"driver_test.root DN=>non-DN\""
      " | configDB::set{scalar}\n",
      storingHandler::theInstance().str().substr(before.size()));
}

TEST_F(Driver, LeavesItsArgumentsAlone) {
  const Strings arguments{"ftp://h/"};
  const assocList options = logged({"URI_SCHEME=VNC", "hoplaunch=1", "foo=1"});
  const assocList copy = options;
  EXPECT_EQ(-1, process(arguments, options));
  EXPECT_EQ((Strings{"ftp://h/"}), arguments);
  EXPECT_EQ(copy, options);
  traceFlag::set("hoplaunch", 0);
}

TEST_F(Driver, LaunchesByTheRemainingOptionsAlone) {
  ThreadData::instance(false);
  EXPECT_EQ(-1, processAug({"ssh://h:1/"}, logged({"PROGRAMS=SSH=xyz", "STYLE=Separate",
                                                   "portarg=P", "hoplaunch=1"})));
  EXPECT_EQ("putty", calls.program);
  EXPECT_EQ((Strings{"putty", "-P", "1", "h"}), calls.vector);
  EXPECT_EQ(0, traceFlag::level("hoplaunch"));
}

TEST_F(Driver, TakesAnArgumentOfAMegabyte) {
  const std::string large(1 << 20, 'v');
  const std::string uri = "vnc://h/?a=" + large;
  EXPECT_EQ(-1, process({uri}, logged({"x=" + large})));
  EXPECT_EQ((Strings{"vncviewer", "--autoreconnect=0", "-a=" + large, "h"}), calls.vector);
  EXPECT_EQ("20231114T221320: URI = " + uri +
                "\nexecutable: vncviewer\n\t\"vncviewer\"\n\t\"--autoreconnect=0\"\n\t\"-a=" +
                large + "\"\n\t\"h\"\n",
            calls.log);
}

TEST_F(Driver, TakesABadUriOfAMegabyte) {
  const std::string large(1 << 20, 'v');
  EXPECT_EQ(-1, process({large}, logged({})));
  EXPECT_EQ("Bad URI \"" + large + "\"\n", log());
}

TEST_F(Driver, LogsNulBytesOfTheRawUriAsTheyAre) {
  const std::string uri("ssh://h/\0rest", 13);
  EXPECT_EQ(-1, process({uri}, logged({})));
  EXPECT_EQ((Strings{"putty", "h"}), calls.vector);
  EXPECT_EQ("20231114T221320: URI = " + uri + "\nexecutable: putty\n\t\"putty\"\n\t\"h\"\n",
            calls.log);
}

}  // namespace

}  // namespace driver_test
