// SPDX-License-Identifier: MIT
// The log.  A click leaves nothing else behind: no file and no semaphore set.

#include <sched.h>
#include <sys/ipc.h>
#include <sys/sem.h>

#include <cstdint>

#include "hopopen_runner.h"

namespace hopopen_log_test {

namespace {

namespace fs = std::filesystem;
using door::Machine;
using door::Outcome;
using door::Strings;
using door::Variables;

// The log with "TIME" for each time, which must have the form 20261120T195147.
std::string withoutTimes(const std::string& log) {
  std::string result;
  for (const std::string& line : split(log, '\n')) {
    const std::size_t colon = line.find(": URI = ");
    if (colon == std::string::npos) {
      result += line + "\n";
      continue;
    }
    EXPECT_EQ(15U, colon) << line;
    EXPECT_EQ(colon, line.find_first_not_of("0123456789T")) << line;
    EXPECT_EQ('T', line.at(8)) << line;
    result += "TIME" + line.substr(colon) + "\n";
  }
  return result;
}

TEST(Log, TellsALaunch) {
  const Machine machine;
  machine.define("a",
                 "name = \"A\"\nschemes = [\"vnc\"]\nprograms = [\"a\"]\n"
                 "arguments = [\"-x\", \"a \\\"b\\\"\\n\", \"{host}\"]\n");
  machine.program("a", "real");
  fs::create_symlink("../real/a", machine.path("bin/a"));
  EXPECT_EQ(42, machine.run({"--log=log", "vnc://h"}).status);
  EXPECT_EQ("TIME: URI = \"vnc://h\"\nexecutable: " + machine.path("real/a") +
                "\n\t\"a\"\n\t\"-x\"\n\t\"a \\\"b\\\"\\n\"\n\t\"h\"\n",
            withoutTimes(machine.read("work/log")));
}

TEST(Log, TellsARefusal) {
  const Machine machine;
  machine.plain();
  const Outcome refused = machine.run({"vnc://h:0", "--log", machine.path("log")});
  EXPECT_EQ(2, refused.status);
  EXPECT_TRUE(refused.err.ends_with(" (port)\n")) << refused.err;
  EXPECT_EQ("TIME: URI = \"vnc://h:0\"\n" + refused.err, withoutTimes(machine.read("log")));
}

TEST(Log, TellsARefusalAlsoWhenItIsQuiet) {
  const Machine machine;
  machine.plain();
  const Outcome refused = machine.run({"--quiet", "--log=log", "vnc://h:0"});
  EXPECT_EQ("", refused.err);
  const std::string log = withoutTimes(machine.read("work/log"));
  EXPECT_TRUE(log.starts_with("TIME: URI = \"vnc://h:0\"\nhopopen: ")) << log;
  EXPECT_TRUE(log.ends_with(" (port)\n")) << log;
}

TEST(Log, TellsThatAProgramCouldNotBeStarted) {
  const Machine machine;
  machine.plain();
  machine.write("bin/plain", "nothing that runs\n");
  const Outcome refused = machine.run({"--log=log", "vnc://h"});
  EXPECT_EQ(3, refused.status);
  const std::string log = machine.read("work/log");
  EXPECT_TRUE(log.ends_with("\n" + refused.err)) << log;
  EXPECT_TRUE(refused.err.ends_with(" (start)\n")) << refused.err;
}

TEST(Log, IsAppendedTo) {
  const Machine machine;
  machine.plain();
  machine.write("work/log", "an earlier line\n");
  machine.run({"--log=log", "vnc://first"});
  machine.run({"--log=log", "vnc://second"});
  const std::string executable = "executable: " + machine.path("bin/plain") + "\n";
  EXPECT_EQ("an earlier line\nTIME: URI = \"vnc://first\"\n" + executable +
                "\t\"plain\"\n\t\"first\"\nTIME: URI = \"vnc://second\"\n" + executable +
                "\t\"plain\"\n\t\"second\"\n",
            withoutTimes(machine.read("work/log")));
}

TEST(Log, HasTheWholeLinkInPrintableCharacters) {
  const Machine machine;
  machine.plain();
  const std::string tail(300, 'x');
  machine.run({"--log=log", "vnc://h\x1B[1m\n\"\\\xC3\xA4" + tail});
  const std::string log = withoutTimes(machine.read("work/log"));
  EXPECT_TRUE(log.starts_with("TIME: URI = \"vnc://h\\x1B[1m\\x0A\\x22\\x5C\\xC3\\xA4" + tail +
                              "\"\nhopopen: "))
      << log;
  EXPECT_TRUE(door::isPlain(log)) << log;
  EXPECT_EQ(2U, countOf(log, "\n")) << log;
}

TEST(Log, HasNoPassword) {
  const Machine machine;
  machine.define("a",
                 "name = \"A\"\nschemes = [\"vnc\"]\nprograms = [\"a\"]\narguments = []\n"
                 "[environment]\nP = \"{password}\"\n");
  machine.program("a");
  machine.run({"--log=log", "vnc://u:secret@h?VncPassword=secret&Password=secret"});
  machine.run({"--log=log", "vnc://u:secret@h/secret-path"});
  const std::string log = withoutTimes(machine.read("work/log"));
  EXPECT_TRUE(contains(log, "URI = \"vnc://u:***@h?VncPassword=***&Password=***\"\n")) << log;
  EXPECT_TRUE(contains(log, "URI = \"vnc://u:***@h/secret-path\"\n")) << log;
  EXPECT_EQ(2U, countOf(log, "secret")) << log;
}

TEST(Log, ThatCannotBeOpenedStopsNothing) {
  const Machine machine;
  machine.plain();
  for (const std::string& name : {machine.path("missing/log"), machine.path("work"),
                                  std::string("/dev/full"), machine.path("bin/plain/log")}) {
    const Outcome launch = machine.run({"--log", name, "vnc://h"});
    EXPECT_EQ(42, launch.status) << name;
    ASSERT_TRUE(launch.viewer) << name;
    EXPECT_EQ((Strings{"plain", "h"}), launch.viewer->arguments);
  }
}

// The paths and contents of all files of a machine, except those of the runner.
std::map<std::string, std::string> contents(const Machine& machine) {
  std::map<std::string, std::string> result;
  for (const auto& entry : fs::recursive_directory_iterator(machine.path(""))) {
    const std::string name = entry.path();
    if (name != machine.path("out") && name != machine.path("err")) {
      const auto changed =
          static_cast<std::int64_t>(fs::last_write_time(entry.path()).time_since_epoch().count());
      result[name] = std::to_string(changed) + " " +
                     (entry.is_regular_file() ? readFile(name) : std::string());
    }
  }
  return result;
}

TEST(Click, WritesNoFile) {
  const Machine machine;
  machine.registered();
  machine.define("a", door::PLAIN);
  machine.script("plain", "exit 42\n");
  const std::vector<std::pair<Strings, int>> calls{{{"vnc://u:p@h:5901/?ViewOnly=0"}, 42},
                                                   {{"vnc://h:0"}, 2},
                                                   {{"--dry-run", "vnc://h"}, 0},
                                                   {{"other://h"}, 2},
                                                   {{"--viewer=b", "vnc://h"}, 4},
                                                   {{"--quiet", "vnc:///etc/passwd"}, 2},
                                                   {{"vnc://h?ViewOnly=1"}, 2},
                                                   {{"--check"}, 0}};
  const auto before = contents(machine);
  for (const auto& [arguments, status] : calls) {
    EXPECT_EQ(status, machine.run(arguments).status) << arguments.back();
    EXPECT_EQ(before, contents(machine)) << arguments.back();
  }
  EXPECT_EQ(0, machine.run({"--list"}).status);
  const auto listed = contents(machine);
  for (const auto& [arguments, status] : calls) {
    EXPECT_EQ(status, machine.run(arguments).status) << arguments.back();
    EXPECT_EQ(listed, contents(machine)) << arguments.back();
  }
}

TEST(Click, DrawsNoSemaphoreSet) {
  if (unshare(CLONE_NEWIPC) != 0) {
    GTEST_SKIP() << "no new namespace";
  }
  const Machine machine;
  machine.plain();
  EXPECT_EQ(42, machine.run({"--log=log", "vnc://h"}).status);
  EXPECT_EQ(2, machine.run({"--log=log", "vnc://h:0"}).status);
  EXPECT_EQ(0, machine.run({"--dry-run", "vnc://h"}).status);
  const int set = semget(IPC_PRIVATE, 1, 0600);
  EXPECT_EQ(0, set) << "the kernel's first id is 0";
  semctl(set, 0, IPC_RMID);
}

TEST(Click, IsNotStoppedByASemaphoreSetThatCannotBeHad) {
  const Machine machine;
  machine.plain();
  const Outcome launch = machine.call({.arguments = {"vnc://h"}, .prepare = [] {
                                         if (unshare(CLONE_NEWIPC) != 0) {
                                           _exit(77);
                                         }
                                         std::ofstream limits("/proc/sys/kernel/sem");
                                         if (!(limits << "250 32000 32 0" << std::flush) ||
                                             semget(IPC_PRIVATE, 1, 0600) >= 0) {
                                           _exit(77);
                                         }
                                       }});
  if (launch.status == 77) {
    GTEST_SKIP() << "no new namespace, or its limits cannot be set";
  }
  EXPECT_EQ(42, launch.status) << launch.err;
}

// The result of an earlier --list never decides what a click does.
TEST(Click, SeesDefinitionsThatChangedAfterAList) {
  const Machine machine;
  machine.plain();
  machine.define("ssh",
                 "name = \"S\"\nschemes = [\"ssh\"]\nprograms = [\"plain\"]\n"
                 "arguments = []\n");
  EXPECT_EQ(0, machine.run({"--list"}).status);
  EXPECT_EQ("refused: scheme", machine.comesOf({"tel://h"}));
  machine.define("ssh",
                 "name = \"T\"\nschemes = [\"tel\"]\nprograms = [\"plain\"]\n"
                 "arguments = [\"-t\"]\n");
  EXPECT_EQ((Strings{"plain", "-t"}), machine.launch({"tel://h"}));
  EXPECT_EQ("refused: scheme", machine.comesOf({"ssh://h"}));
  machine.define("ssh", "name = \"T\"\n");
  const Outcome launch = machine.run({"vnc://h"});
  EXPECT_EQ(42, launch.status);
  EXPECT_TRUE(contains(launch.err, machine.path(Machine::definition("ssh")) + ":1:1: "))
      << launch.err;
  machine.define("plain", "", "data");
  EXPECT_EQ("refused: scheme", machine.comesOf({"vnc://h"}));
  fs::remove(machine.path(Machine::definition("plain", "data")));
  EXPECT_EQ("plain", machine.comesOf({"vnc://h"}));
}

TEST(Click, SeesADefinitionThatChangedButForItsSizeAndTime) {
  const Machine machine;
  machine.program("plain");
  machine.define("a",
                 "name = \"A\"\nschemes = [\"ssh\"]\nprograms = [\"plain\"]\n"
                 "arguments = [\"-a\"]\n");
  const std::string file = machine.path(Machine::definition("a"));
  const auto changed = fs::last_write_time(file);
  EXPECT_EQ(0, machine.run({"--list"}).status);
  usleep(50000);
  machine.define("a",
                 "name = \"B\"\nschemes = [\"tel\"]\nprograms = [\"plain\"]\n"
                 "arguments = [\"-b\"]\n");
  fs::last_write_time(file, changed);
  EXPECT_EQ((Strings{"plain", "-b"}), machine.launch({"tel://h"}));
  EXPECT_EQ("refused: scheme", machine.comesOf({"ssh://h"}));
}

TEST(Click, IsTheSameWhateverIsInTheFilesOfAList) {
  const Machine machine;
  machine.plain();
  machine.define("ssh",
                 "name = \"S\"\nschemes = [\"ssh\"]\nprograms = [\"plain\"]\n"
                 "arguments = [\"-s\"]\n");
  EXPECT_EQ(0, machine.run({"--list"}).status);
  if (!machine.has("home/.cache")) {
    GTEST_SKIP() << "a list keeps nothing";
  }
  Strings kept;
  for (const auto& entry : fs::recursive_directory_iterator(machine.path("home/.cache"))) {
    if (entry.is_regular_file()) {
      kept.push_back(entry.path());
    }
  }
  for (const std::string& file : kept) {
    const std::string good = readFile(file);
    const Strings bad{"",
                      "nonsense\n",
                      std::string(100000, 'x'),
                      good.substr(0, good.size() / 2),
                      good + good,
                      std::string(1, '\0') + good};
    for (const std::string& text : bad) {
      writeFile(file, text);
      EXPECT_EQ((Strings{"plain", "h"}), machine.launch({"vnc://h"}));
      EXPECT_EQ((Strings{"plain", "-s"}), machine.launch({"ssh://h"}));
    }
    fs::remove(file);
    fs::create_directory(file);
    EXPECT_EQ((Strings{"plain", "h"}), machine.launch({"vnc://h"}));
  }
}

}  // namespace

}  // namespace hopopen_log_test
