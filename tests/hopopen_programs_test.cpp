// SPDX-License-Identifier: MIT
// Finding the programs of viewers on PATH, and the terminals that some run in.

#include "hopopen_runner.h"

namespace hopopen_programs_test {

namespace {

namespace fs = std::filesystem;
using door::Json;
using door::Machine;
using door::Outcome;
using door::Strings;
using door::Variables;

const char* const TWO_NAMES =
    "name = \"Two\"\n"
    "schemes = [\"vnc\"]\n"
    "programs = [\"xviewer\", \"viewer\"]\n"
    "arguments = [\"{host}\"]\n";

const char* const IN_TERMINAL =
    "name = \"Shell\"\n"
    "schemes = [\"ssh\"]\n"
    "programs = [\"shell\"]\n"
    "arguments = [\"-x\", \"{host}\"]\n"
    "terminal = true\n";

std::string joined(const Machine& machine, const Strings& folders) {
  std::string result;
  for (const std::string& folder : folders) {
    result += (result.empty() ? "" : ":") + machine.path(folder);
  }
  return result;
}

// The file of the viewer that a dry run chooses, or the code of its refusal.
std::string chosen(const Machine& machine, const std::string& path) {
  const Json told = machine.dry({"vnc://h"}, {{"PATH", path}});
  return told["launch"] == true ? told["viewer"]["file"] : told["refusal"]["code"];
}

TEST(Programs, AreTriedInTheirOrderEachInAllFolders) {
  const Machine machine;
  machine.define("two", TWO_NAMES);
  machine.program("viewer", "first");
  machine.program("xviewer", "second");
  const std::string path = joined(machine, {"first", "second"});
  EXPECT_EQ(machine.path("second/xviewer"), chosen(machine, path));
  machine.program("xviewer", "first");
  EXPECT_EQ(machine.path("first/xviewer"), chosen(machine, path));
  fs::remove(machine.path("first/xviewer"));
  fs::remove(machine.path("second/xviewer"));
  EXPECT_EQ(machine.path("first/viewer"), chosen(machine, path));
}

TEST(Programs, AreNotLookedForInFoldersThatAreEmptyOrRelative) {
  const Machine machine;
  machine.define("two", TWO_NAMES);
  machine.program("viewer", "work");
  machine.program("viewer", "work/bin");
  for (const char* path : {"", ":", "::", ".", "bin", "./bin", ".:bin:./bin:", "../work"}) {
    EXPECT_EQ("viewer", chosen(machine, path)) << '"' << path << '"';
  }
  machine.program("viewer");
  EXPECT_EQ(machine.path("bin/viewer"), chosen(machine, ":.:bin:" + machine.path("bin") + ":"));
}

TEST(Programs, MustBeFilesThatMayBeExecuted) {
  const Machine machine;
  machine.define("two", TWO_NAMES);
  const std::string path = joined(machine, {"missing", "first", "second", "third", "fourth"});
  machine.write("first/viewer", "#!/bin/sh\n");
  fs::create_directories(machine.path("second/viewer"));
  machine.write("third", "a file and no folder\n");
  EXPECT_EQ("viewer", chosen(machine, path));
  machine.program("viewer", "fourth");
  EXPECT_EQ(machine.path("fourth/viewer"), chosen(machine, path));
}

TEST(Programs, AreFollowedToTheFilesThatTheyReallyAre) {
  const Machine machine;
  machine.define("two", TWO_NAMES);
  machine.program("xviewer", "real");
  fs::create_directories(machine.path("alternatives"));
  fs::create_symlink("../real/xviewer", machine.path("alternatives/anything"));
  fs::create_symlink(machine.path("alternatives/anything"), machine.path("bin/viewer"));
  const Json told = machine.dry({"vnc://h"});
  EXPECT_EQ(machine.path("real/xviewer"), told["viewer"]["file"]);
  EXPECT_EQ((Strings{"viewer", "h"}), told["arguments"].get<Strings>());
  const Outcome launch = machine.run({"vnc://h"});
  ASSERT_TRUE(launch.viewer) << launch.err;
  EXPECT_EQ(machine.path("real/xviewer"), launch.viewer->path);
  EXPECT_EQ((Strings{"viewer", "h"}), launch.viewer->arguments);
}

TEST(Programs, AreFoundThroughFoldersThatAreLinks) {
  const Machine machine;
  machine.define("two", TWO_NAMES);
  machine.program("viewer", "real");
  fs::create_directory_symlink("real", machine.path("linked"));
  EXPECT_EQ(machine.path("real/viewer"), chosen(machine, machine.path("linked")));
}

TEST(Programs, OfAnotherViewerUnderTheSameNameAreNotTaken) {
  const Machine machine;
  machine.define("two", TWO_NAMES);
  machine.program("otherviewer", "real");
  fs::create_symlink("../real/otherviewer", machine.path("bin/viewer"));
  EXPECT_EQ("viewer", chosen(machine, machine.path("bin")));
  EXPECT_EQ("refused: choice", machine.comesOf({"--viewer=two", "vnc://h"}));
  machine.program("viewer", "second");
  EXPECT_EQ(machine.path("second/viewer"), chosen(machine, joined(machine, {"bin", "second"})))
      << "the search goes on in the next folder";
  fs::create_symlink("../real/otherviewer", machine.path("bin/xviewer"));
  EXPECT_EQ(machine.path("second/viewer"), chosen(machine, joined(machine, {"bin", "second"})))
      << "the search goes on with the next name";
}

TEST(Programs, ThatAreLinksToNothingOrToThemselvesAreNotTaken) {
  const Machine machine;
  machine.define("two", TWO_NAMES);
  fs::create_symlink("nothing", machine.path("bin/viewer"));
  fs::create_symlink("xviewer", machine.path("bin/xviewer"));
  EXPECT_EQ("viewer", chosen(machine, machine.path("bin")));
}

TEST(Programs, OfAnotherDefinitionDoNotCount) {
  const Machine machine;
  machine.define("two", TWO_NAMES);
  machine.define("other",
                 "name = \"Other\"\nschemes = [\"vnc\"]\nprograms = [\"other\"]\narguments = []\n");
  machine.program("other", "real");
  fs::create_symlink("../real/other", machine.path("bin/viewer"));
  EXPECT_EQ("viewer", chosen(machine, machine.path("bin"))) << "no program has its own name";
}

TEST(Terminals, AreTheDesktopsChoiceFirst) {
  const Machine machine;
  machine.define("shell", IN_TERMINAL);
  machine.program("shell");
  machine.program("x-terminal-emulator", "first");
  machine.program("xdg-terminal-exec", "second");
  const Variables variables{{"PATH", joined(machine, {"bin", "first", "second"})}};
  EXPECT_EQ((Strings{"xdg-terminal-exec", machine.path("bin/shell"), "-x", "h"}),
            machine.launch({"ssh://h"}, variables));
  const Json told = machine.dry({"ssh://h"}, variables);
  EXPECT_EQ((Strings{"xdg-terminal-exec", machine.path("bin/shell"), "-x", "h"}),
            told["arguments"].get<Strings>());
  EXPECT_EQ(machine.path("bin/shell"), told["viewer"]["file"]);
  EXPECT_EQ("shell", told["viewer"]["name"]);
}

TEST(Terminals, AreTheAlternativeOtherwise) {
  const Machine machine;
  machine.define("shell", IN_TERMINAL);
  machine.program("shell");
  machine.program("anyterm", "real");
  fs::create_symlink("../real/anyterm", machine.path("bin/x-terminal-emulator"));
  EXPECT_EQ((Strings{"x-terminal-emulator", "-e", machine.path("bin/shell"), "-x", "h"}),
            machine.launch({"ssh://h"}));
  EXPECT_EQ((Strings{"x-terminal-emulator", "-e", machine.path("bin/shell"), "-x", "h"}),
            machine.dry({"ssh://h"})["arguments"].get<Strings>());
}

TEST(Terminals, GetTheProgramWithoutItsLinks) {
  const Machine machine;
  machine.define("shell", IN_TERMINAL);
  machine.program("shell", "real");
  fs::create_symlink("../real/shell", machine.path("bin/shell"));
  machine.program("xdg-terminal-exec");
  EXPECT_EQ((Strings{"xdg-terminal-exec", machine.path("real/shell"), "-x", "h"}),
            machine.launch({"ssh://h"}));
}

TEST(Terminals, AreNeededToCountAsInstalled) {
  const Machine machine;
  machine.define("shell", IN_TERMINAL);
  machine.program("shell");
  EXPECT_EQ("refused: viewer", machine.comesOf({"ssh://h"}));
  EXPECT_EQ("refused: choice", machine.comesOf({"--viewer=shell", "ssh://h"}));
  EXPECT_TRUE(machine.json({"--list", "--format=json"})["viewers"][0]["file"].is_null());
  machine.define("other",
                 "name = \"o\"\nschemes = [\"ssh\"]\nprograms = [\"other\"]\narguments = []\n"
                 "rank = 99\n");
  machine.program("other");
  EXPECT_EQ("other", machine.comesOf({"ssh://h"}));
}

const char* const WITH_VARIABLES =
    "name = \"Shell\"\n"
    "schemes = [\"ssh\"]\n"
    "programs = [\"shell\"]\n"
    "terminal = true\n"
    "arguments = [\"-x\", \"{host}\"]\n"
    "unset = [\"GONE\", \"NEW\"]\n"
    "[environment]\n"
    "NEW = \"{host} {link}\"\n"
    "WHO = \"{user}\"\n";

TEST(Terminals, GetTheWordsThatChangeVariablesInside) {
  const Machine machine;
  machine.define("shell", WITH_VARIABLES);
  machine.program("shell");
  machine.program("env");
  machine.program("x-terminal-emulator");
  EXPECT_EQ((Strings{"x-terminal-emulator", "-e", machine.path("bin/env"), "-u", "GONE", "-u",
                     "NEW", "NEW=h ssh://h", machine.path("bin/shell"), "-x", "h"}),
            machine.launch({"ssh://h"}));
  const Json told = machine.dry({"ssh://kim@h"});
  EXPECT_EQ((Strings{"x-terminal-emulator", "-e", machine.path("bin/env"), "-u", "GONE", "-u",
                     "NEW", "NEW=h ssh://kim@h", "WHO=kim", machine.path("bin/shell"), "-x", "h"}),
            told["arguments"].get<Strings>());
  EXPECT_EQ((std::map<std::string, std::string>{{"NEW", "h ssh://kim@h"}, {"WHO", "kim"}}),
            (told["environment"].get<std::map<std::string, std::string>>()));
  EXPECT_EQ((Strings{"GONE", "NEW"}), told["unset"].get<Strings>());
}

TEST(Terminals, KeepTheirOwnVariables) {
  const Machine machine;
  machine.define("shell", WITH_VARIABLES);
  machine.program("shell");
  fs::create_symlink("/usr/bin/env", machine.path("bin/env"));
  machine.script("xdg-terminal-exec", "printenv GONE NEW >\"$HOME/seen\"\nexec \"$@\"\n");
  const Outcome outcome =
      machine.run({"ssh://kim@h"}, {{"GONE", "kept"}, {"NEW", "old"}, {"OTHER", "same"}});
  ASSERT_TRUE(outcome.viewer) << outcome.err;
  EXPECT_EQ("kept\nold\n", machine.read("home/seen"));
  Strings named;
  for (const std::string& variable : outcome.viewer->environment) {
    const std::string name = variable.substr(0, variable.find('='));
    if (name == "GONE" || name == "NEW" || name == "WHO" || name == "OTHER") {
      named.push_back(variable);
    }
  }
  std::sort(named.begin(), named.end());
  EXPECT_EQ((Strings{"NEW=h ssh://kim@h", "OTHER=same", "WHO=kim"}), named);
}

TEST(Terminals, NeedAProgramThatChangesVariables) {
  const Machine machine;
  machine.define("shell", WITH_VARIABLES);
  machine.program("shell");
  machine.program("xdg-terminal-exec");
  EXPECT_EQ("refused: viewer", machine.comesOf({"ssh://h"}));
  EXPECT_EQ("refused: choice", machine.comesOf({"--viewer=shell", "ssh://h"}));
  EXPECT_TRUE(machine.json({"--list", "--format=json"})["viewers"][0]["file"].is_null());
  machine.program("env", "work");
  EXPECT_EQ("refused: viewer",
            machine.comesOf({"ssh://h"}, {{"PATH", ".:work:" + machine.path("bin")}}));
  machine.program("env");
  EXPECT_EQ("shell", machine.comesOf({"ssh://h"}));
}

TEST(Terminals, GetNoProgramWhosePathCouldBeAVariable) {
  const Machine machine;
  machine.define("shell", WITH_VARIABLES);
  machine.program("shell", "a=b");
  machine.program("env");
  machine.program("xdg-terminal-exec");
  EXPECT_EQ("refused: viewer",
            machine.comesOf({"ssh://h"}, {{"PATH", joined(machine, {"bin", "a=b"})}}));
}

TEST(Terminals, AreNotLookedForInFoldersThatAreEmptyOrRelative) {
  const Machine machine;
  machine.define("shell", IN_TERMINAL);
  machine.program("shell");
  machine.program("xdg-terminal-exec", "work");
  machine.program("x-terminal-emulator", "work/bin");
  EXPECT_EQ("refused: viewer",
            machine.comesOf({"ssh://h"}, {{"PATH", ":.:bin:" + machine.path("bin")}}));
}

TEST(Terminals, ThatMayNotBeExecutedAreNotTaken) {
  const Machine machine;
  machine.define("shell", IN_TERMINAL);
  machine.program("shell");
  machine.write("bin/xdg-terminal-exec", "#!/bin/sh\n");
  fs::create_directories(machine.path("bin/x-terminal-emulator"));
  EXPECT_EQ("refused: viewer", machine.comesOf({"ssh://h"}));
}

TEST(List, ShowsEachViewerInJson) {
  const Machine machine;
  machine.define("a",
                 "name = \"The A\"\nschemes = [\"vnc\", \"ssh\"]\nprograms = [\"a\"]\n"
                 "arguments = []\nrank = 9\n");
  machine.define("b",
                 "name = \"The B\"\nschemes = [\"vnc\"]\nprograms = [\"b\"]\n"
                 "arguments = []\nunguarded = [\"clipboard\", \"full screen\"]\n");
  machine.define("c",
                 "name = \"The C\"\nschemes = [\"ssh\", \"telnet\"]\nprograms = [\"c\"]\n"
                 "arguments = []\n");
  machine.define("d",
                 "name = \"The D\"\nschemes = [\"vnc\"]\nprograms = [\"d\"]\n"
                 "arguments = []\n");
  for (const char* name : {"a", "b", "c"}) {
    machine.program(name);
  }
  machine.set("[use]\nssh = \"c\"\n");
  machine.set("[use]\nssh = \"a\"\nvnc = \"b\"\n", "etc");
  const Json viewers = machine.json({"--list", "--format=json"})["viewers"];
  const std::string bin = machine.path("bin/");
  ASSERT_EQ(4U, viewers.size());
  std::map<std::string, std::string> found;
  for (const Json& viewer : viewers) {
    found[viewer["name"]] = viewer.dump();
  }
  EXPECT_EQ(R"({"name":"a","title":"The A","schemes":["vnc","ssh"],"file":")" + bin +
                R"(a","unguarded":[],"chosen":{}})",
            found["a"]);
  EXPECT_EQ(R"({"name":"b","title":"The B","schemes":["vnc"],"file":")" + bin +
                R"(b","unguarded":["clipboard","full screen"],"chosen":{"vnc":"administrator"}})",
            found["b"]);
  EXPECT_EQ(R"({"name":"c","title":"The C","schemes":["ssh","telnet"],"file":")" + bin +
                R"(c","unguarded":[],"chosen":{"ssh":"user","telnet":"rank"}})",
            found["c"]);
  EXPECT_EQ(R"({"name":"d","title":"The D","schemes":["vnc"],"file":null,)"
            R"("unguarded":[],"chosen":{}})",
            found["d"]);
}

TEST(List, ShowsEachViewerForPeople) {
  const Machine machine;
  machine.plain();
  machine.define("far",
                 "name = \"Far\"\nschemes = [\"ssh\"]\nprograms = [\"far\"]\n"
                 "arguments = []\nunguarded = [\"keyboard grab\"]\n");
  machine.set("[use]\nvnc = \"plain\"\n");
  const Outcome list = machine.run({"--list"});
  EXPECT_EQ(0, list.status);
  EXPECT_EQ("", list.err);
  for (const std::string& part :
       {std::string("Plain"), std::string("vnc"), machine.path("bin/plain"), std::string("Far"),
        std::string("ssh"), std::string("not installed"), std::string("keyboard grab")}) {
    EXPECT_TRUE(contains(list.out, part)) << part << " is not in\n" << list.out;
  }
  EXPECT_EQ(1U, countOf(list.out, "not installed")) << list.out;
}

TEST(List, BesideSettingsWithAFaultIsRefused) {
  const Machine machine;
  machine.plain();
  machine.set("[use]\nvnc = 1\n");
  for (const Strings& arguments : {Strings{"--list"}, Strings{"--list", "--format=json"}}) {
    const Outcome list = machine.run(arguments);
    EXPECT_EQ(4, list.status);
    EXPECT_TRUE(contains(list.err, machine.path(Machine::settings()) + ":2:7: ")) << list.err;
    EXPECT_TRUE(list.err.ends_with(" (settings)\n")) << list.err;
  }
}

TEST(List, HidesControlCharactersOfNames) {
  const Machine machine;
  machine.define("a",
                 "name = \"\u00e4\"\nschemes = [\"vnc\"]\nprograms = [\"a\"]\n"
                 "arguments = []\nunguarded = [\"clip\u2028board\"]\n");
  const Outcome list = machine.run({"--list"});
  EXPECT_EQ(0, list.status);
  EXPECT_TRUE(door::isPlain(list.out)) << list.out;
  const Outcome json = machine.run({"--list", "--format=json"});
  EXPECT_TRUE(contains(json.out, R"("title":"\u00e4")")) << json.out;
  EXPECT_TRUE(contains(json.out, R"("unguarded":["clip\u2028board"])")) << json.out;
}

}  // namespace

}  // namespace hopopen_programs_test
