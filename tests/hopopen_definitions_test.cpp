// SPDX-License-Identifier: MIT
// Where definitions are looked for, which files count, and which of several wins.

#include <sched.h>
#include <sys/mount.h>

#include "hopopen_runner.h"

namespace hopopen_definitions_test {

namespace {

using door::Call;
using door::Json;
using door::Machine;
using door::Outcome;
using door::Strings;
using door::Variables;

// A definition of a viewer with that title.
std::string titled(const std::string& title) {
  return "name = \"" + title +
         "\"\nschemes = [\"vnc\"]\nprograms = [\"plain\"]\narguments = [\"{host}\"]\n";
}

// "NAME=TITLE" for each viewer of the list.
Strings listed(const Machine& machine, const Variables& variables = {}) {
  Strings result;
  const Json list = machine.json({"--list", "--format=json"}, variables);
  for (const Json& viewer : list["viewers"]) {
    result.push_back(viewer["name"].get<std::string>() + "=" + viewer["title"].get<std::string>());
  }
  std::sort(result.begin(), result.end());
  return result;
}

TEST(Definitions, AreTakenFromTheFirstFolderThatHasTheName) {
  const Machine machine;
  machine.define("a", titled("system"), "second");
  const Variables variables{
      {"XDG_DATA_DIRS", machine.path("first") + ":" + machine.path("second")}};
  EXPECT_EQ((Strings{"a=system"}), listed(machine, variables));
  machine.define("a", titled("local"), "first");
  EXPECT_EQ((Strings{"a=local"}), listed(machine, variables));
  machine.define("a", titled("data"), "data");
  EXPECT_EQ((Strings{"a=data"}), listed(machine, variables));
  machine.define("a", titled("config"), "config");
  EXPECT_EQ((Strings{"a=config"}), listed(machine, variables));
}

TEST(Definitions, AreCollectedFromAllFolders) {
  const Machine machine;
  machine.define("a", titled("config"), "config");
  machine.define("b", titled("data"), "data");
  machine.define("c", titled("first"), "first");
  machine.define("d", titled("second"), "second");
  EXPECT_EQ(
      (Strings{"a=config", "b=data", "c=first", "d=second"}),
      listed(machine, {{"XDG_DATA_DIRS", machine.path("first") + ":" + machine.path("second")}}));
}

TEST(Definitions, AreNotTakenFromTheFoldersOfSettings) {
  const Machine machine;
  machine.define("a", titled("etc"), "etc");
  EXPECT_EQ(Strings{}, listed(machine));
}

TEST(Definitions, AreFoundBelowHomeByDefault) {
  const Machine machine;
  machine.define("a", titled("config"), "home/.config");
  machine.define("b", titled("data"), "home/.local/share");
  EXPECT_EQ(Strings{}, listed(machine)) << "the variables name other folders";
  for (const std::optional<std::string>& unset : {std::optional<std::string>(), {""}}) {
    EXPECT_EQ((Strings{"a=config", "b=data"}),
              listed(machine, {{"XDG_CONFIG_HOME", unset}, {"XDG_DATA_HOME", unset}}));
    EXPECT_EQ((Strings{"b=data"}), listed(machine, {{"XDG_DATA_HOME", unset}}));
    EXPECT_EQ((Strings{"a=config"}), listed(machine, {{"XDG_CONFIG_HOME", unset}}));
  }
}

TEST(Definitions, OfAUserNeedHomeOrTheVariables) {
  const Machine machine;
  machine.define("a", titled("config"), "work/.config");
  machine.define("b", titled("data"), "work/.local/share");
  machine.define("c", titled("c"), "config");
  machine.define("d", titled("d"), "data");
  for (const std::optional<std::string>& unset : {std::optional<std::string>(), {""}}) {
    EXPECT_EQ((Strings{}), listed(machine, {{"HOME", unset},
                                            {"XDG_CONFIG_HOME", std::nullopt},
                                            {"XDG_DATA_HOME", std::nullopt}}));
    EXPECT_EQ((Strings{"c=c", "d=d"}), listed(machine, {{"HOME", unset}}));
  }
}

TEST(Definitions, AreNotTakenFromRelativeFolders) {
  const Machine machine;
  machine.define("a", titled("a"), "work/relative");
  machine.define("b", titled("b"), "work");
  EXPECT_EQ(Strings{}, listed(machine, {{"XDG_CONFIG_HOME", "relative"}}));
  EXPECT_EQ(Strings{}, listed(machine, {{"XDG_DATA_HOME", "relative"}}));
  EXPECT_EQ(Strings{}, listed(machine, {{"XDG_DATA_DIRS", "relative:.:./relative:"}}));
  machine.define("c", titled("c"));
  EXPECT_EQ((Strings{"c=c"}),
            listed(machine, {{"XDG_DATA_DIRS", ":relative::" + machine.path("share") + ":"}}));
}

TEST(Definitions, OfTheSystemAreInItsDefaultFolders) {
  const Machine machine;
  machine.define("a", titled("local"), "local");
  machine.define("a", titled("usr"), "usr");
  machine.define("b", titled("usr"), "usr");
  const auto mountFolders = [&] {
    const bool good =
        unshare(CLONE_NEWNS) == 0 &&
        mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
        mount(machine.path("local").c_str(), "/usr/local/share", nullptr, MS_BIND, nullptr) == 0 &&
        mount(machine.path("usr").c_str(), "/usr/share", nullptr, MS_BIND, nullptr) == 0;
    if (!good) {
      _exit(77);
    }
  };
  for (const std::optional<std::string>& unset : {std::optional<std::string>(), {""}}) {
    const Outcome list = machine.call({.arguments = {"--list", "--format=json"},
                                       .variables = {{"XDG_DATA_DIRS", unset}},
                                       .prepare = mountFolders});
    if (list.status == 77) {
      GTEST_SKIP() << "nothing can be mounted here";
    }
    EXPECT_EQ(0, list.status) << list.err;
    const Json viewers = Json::parse(list.out)["viewers"];
    ASSERT_EQ(2U, viewers.size()) << viewers;
    std::map<std::string, std::string> titles;
    for (const Json& viewer : viewers) {
      titles[viewer["name"]] = viewer["title"];
    }
    EXPECT_EQ("local", titles["a"]);
    EXPECT_EQ("usr", titles["b"]);
  }
}

TEST(Definitions, AreHiddenByFilesWithoutAnyByte) {
  const Machine machine;
  machine.registered();
  machine.program("plain");
  machine.define("a", titled("a"));
  EXPECT_EQ("a", machine.comesOf({"vnc://h"}));
  machine.define("a", "", "data");
  EXPECT_EQ(Strings{}, listed(machine));
  EXPECT_EQ("refused: scheme", machine.comesOf({"vnc://h"}));
  EXPECT_EQ("refused: scheme", machine.comesOf({"--viewer=a", "vnc://h"}));
  const Outcome check = machine.run({"--check"});
  EXPECT_EQ(0, check.status) << check.out;
}

TEST(Definitions, AreShownAgainByTheFolderBeforeTheFileWithoutAnyByte) {
  const Machine machine;
  machine.define("a", titled("a"));
  machine.define("a", "", "data");
  machine.define("a", titled("mine"), "config");
  EXPECT_EQ((Strings{"a=mine"}), listed(machine));
}

TEST(Definitions, AreHiddenByFaultyFilesOfTheSameName) {
  const Machine machine;
  machine.program("plain");
  machine.define("a", titled("a"));
  machine.define("a", titled("mine") + "colour = 1\n", "data");
  const Outcome launch = machine.run({"vnc://h"});
  EXPECT_EQ(2, launch.status);
  EXPECT_TRUE(contains(launch.err, machine.path(Machine::definition("a", "data")) + ":5:1: "))
      << launch.err;
  EXPECT_TRUE(launch.err.ends_with(" (scheme)\n")) << launch.err;
  EXPECT_FALSE(launch.viewer);
}

TEST(Definitions, ThatAreFaultyAndHiddenMatterToCheckOnly) {
  const Machine machine;
  machine.plain();
  machine.define("plain", titled("other") + "colour = 1\n", "last");
  const Variables variables{{"XDG_DATA_DIRS", machine.path("share") + ":" + machine.path("last")}};
  const Outcome launch = machine.run({"vnc://h"}, variables);
  EXPECT_EQ(42, launch.status);
  EXPECT_EQ("", launch.err);
  const Outcome check = machine.run({"--check"}, variables);
  EXPECT_EQ(4, check.status);
  EXPECT_TRUE(contains(check.out, machine.path(Machine::definition("plain", "last")) + ":5:1: "))
      << check.out;
}

TEST(Definitions, HaveNamesOfLowerCaseLettersDigitsAndDashes) {
  const Machine machine;
  machine.registered();
  for (const char* name : {"a", "0", "-", "a-1", "tigervnc", "--list"}) {
    machine.define(name, titled("good"));
  }
  EXPECT_EQ((Strings{"--list=good", "-=good", "0=good", "a-1=good", "a=good", "tigervnc=good"}),
            listed(machine));
  EXPECT_EQ(0, machine.run({"--check"}).status);
}

TEST(Definitions, OfOtherNamesAreNotLookedAt) {
  const Machine machine;
  machine.plain();
  const Strings names{
      "Upper.toml",    "under_score.toml", ".hidden.toml",       ".toml",       "kept.toml~",
      "kept.toml.bak", "kept.TOML",        "two.parts.toml",     "b lank.toml", "kept",
      "README",        "\xC3\xA4.toml",    "plain.toml.dpkg-new"};
  for (const std::string& name : names) {
    machine.write("share/hoplaunch/viewers/" + name, "this is faulty\n");
  }
  const Outcome launch = machine.run({"vnc://h"});
  EXPECT_EQ(42, launch.status);
  EXPECT_EQ("", launch.err);
  EXPECT_EQ((Strings{"plain=Plain"}), listed(machine));
}

TEST(Definitions, OfOtherNamesAreNamedByCheckAndNotCounted) {
  const Machine machine;
  machine.registered();
  machine.write("share/hoplaunch/viewers/Upper.toml", "this is faulty\n");
  machine.write("data/hoplaunch/viewers/a.toml.bak", "this is faulty\n");
  machine.write("config/hoplaunch/viewers/a\x1B\n.toml", "this is faulty\n");
  const Outcome check = machine.run({"--check"});
  EXPECT_EQ(0, check.status);
  EXPECT_TRUE(contains(check.out, machine.path("share/hoplaunch/viewers/Upper.toml"))) << check.out;
  EXPECT_TRUE(contains(check.out, machine.path("data/hoplaunch/viewers/a.toml.bak"))) << check.out;
  EXPECT_TRUE(contains(check.out, machine.path("config/hoplaunch/viewers/a\\x1B\\x0A.toml")))
      << check.out;
  EXPECT_TRUE(door::isPlain(check.out)) << check.out;
  const Outcome json = machine.run({"--check", "--format=json"});
  EXPECT_EQ(0, json.status);
  EXPECT_TRUE(json.out.starts_with("{\"faults\":[],\"checks\":[{")) << json.out;
}

TEST(Definitions, MayBeSymbolicLinksToFilesOfAnyName) {
  const Machine machine;
  machine.write("somewhere/Else.txt", titled("linked"));
  machine.define("b", titled("b"));
  std::filesystem::create_symlink(machine.path("somewhere/Else.txt"),
                                  machine.path(Machine::definition("a")));
  EXPECT_EQ((Strings{"a=linked", "b=b"}), listed(machine));
}

TEST(Definitions, MayBeginWithAByteOrderMarkAndEndLinesAsWindowsDoes) {
  const Machine machine;
  machine.registered();
  machine.define("a",
                 "\xEF\xBB\xBFname = \"a\"\r\nschemes = [\"vnc\"]\r\nprograms = "
                 "[\"plain\"]\r\narguments = []\r\n");
  EXPECT_EQ((Strings{"a=a"}), listed(machine));
  EXPECT_EQ(0, machine.run({"--check"}).status);
}

TEST(Definitions, MayHaveEveryKeyAtOnce) {
  const Machine machine;
  machine.registered({"vnc", "x-vnc+tls.1"});
  machine.define("full", R"(name = "Full \u00e4"
schemes = ["vnc", "x-vnc+tls.1"]
programs = ["one", "two"]
packages = ["package-one", "package-two"]
rank = -7
arguments = ["{{}}", ["{host}", "{bracketed}"], "{port}{display}", "{user}", "{link}"]
stranger = ["-a"]
trusted = ["-b"]
unguarded = ["clipboard"]
unset = ["A", "B"]
terminal = false
[default]
port = 65535
[environment]
C = "{password}"
[parameters]
viewonly = {arguments = []}
SECURITYTYPE = {allow = "2|5", arguments = ["-s", "{value}"]}
ChannelType.arguments = ["x"]
SshHost.arguments = ["x"]
SshPort.arguments = ["x"]
SshUsername.arguments = ["x"]
IdHash.arguments = ["x"]
IdHashAlgorithm.arguments = ["x"]
fingerprint.arguments = ["x"]
Shared.arguments = ["x"]
ColorLevel.arguments = ["x"]
QualityLevel.arguments = ["x"]
CompressLevel.arguments = ["x"]
AutoSelect.arguments = ["x"]
ConnectionName.arguments = ["x"]
)");
  const Outcome check = machine.run({"--check"});
  EXPECT_EQ(0, check.status) << check.out;
  const Json viewers = machine.json({"--list", "--format=json"})["viewers"];
  ASSERT_EQ(1U, viewers.size());
  EXPECT_EQ(R"({"name":"full","title":"Full \u00e4","schemes":["vnc","x-vnc+tls.1"],)"
            R"("file":null,"unguarded":["clipboard"],"chosen":{}})",
            viewers[0].dump(true));
}

TEST(Definitions, MakeTheirSchemesKnownAlsoWhenNothingIsInstalled) {
  const Machine machine;
  machine.define("a", titled("a"));
  EXPECT_EQ("refused: viewer", machine.comesOf({"vnc://h"}));
  EXPECT_EQ("refused: scheme", machine.comesOf({"ssh://h"}));
}

TEST(Check, SaysSoWhenThereIsNoFault) {
  const Machine machine;
  machine.registered();
  machine.plain();
  const Outcome check = machine.run({"--check"});
  EXPECT_EQ(0, check.status);
  EXPECT_EQ("", check.err);
  EXPECT_TRUE(contains(check.out,
                       "\nok definition: 1 viewer: no definition has a fault\n"
                       "ok settings: no file: no settings have a fault\n"))
      << check.out;
  EXPECT_EQ(0U, machine.json({"--check", "--format=json"})["faults"].size());
}

TEST(Check, TellsTheFaultsOfAFolderThatIsNamedTwiceOnce) {
  const Machine machine;
  machine.define("a", titled("a") + "colour = 1\n");
  const Outcome check = machine.run(
      {"--check"}, {{"XDG_DATA_DIRS", machine.path("share") + ":" + machine.path("share")}});
  EXPECT_EQ(4, check.status);
  EXPECT_EQ(1U, countOf(check.out, ":5:1: ")) << check.out;
}

TEST(Check, TellsOfALinkThatLeadsToNoFile) {
  const Machine machine;
  machine.plain();
  const std::string file = machine.path(Machine::definition("gone"));
  std::filesystem::create_symlink("nowhere", file);
  const Outcome check = machine.run({"--check"});
  EXPECT_EQ(4, check.status);
  EXPECT_TRUE(contains(check.out, file + ":1:1: there is no file\n")) << check.out;
}

TEST(Check, TellsOfAFolderThatCannotBeRead) {
  const Machine machine;
  machine.plain();
  const std::string folder = "second/hoplaunch/viewers";
  std::filesystem::create_directories(machine.path("second/hoplaunch"));
  std::filesystem::create_symlink("viewers", machine.path(folder));
  const Variables variables{
      {"XDG_DATA_DIRS", machine.path("share") + ":" + machine.path("second")}};
  const Outcome check = machine.run({"--check"}, variables);
  EXPECT_EQ(4, check.status);
  EXPECT_EQ(1U, countOf(check.out, machine.path(folder) + ":1:1: cannot be read: Too many "
                                                          "levels of symbolic links\n"))
      << check.out;
  EXPECT_EQ((Strings{"plain", "h"}), machine.launch({"vnc://h"}, variables))
      << "what is in other folders opens links all the same";
}

TEST(Check, TellsOfAFolderThatCannotBeReadToItsEnd) {
  if (access("/usr/bin/strace", X_OK) != 0) {
    GTEST_SKIP() << "There is no strace.";
  }
  const Machine machine;
  machine.plain();
  const Outcome check = machine.call(
      {.arguments = {"--check"},
       .under = {"/usr/bin/strace", "-qq", "-E", "ASAN_OPTIONS=detect_leaks=0", "-o", "/dev/null",
                 "-e", "trace=getdents64", "-e", "inject=getdents64:error=EIO"}});
  EXPECT_EQ(4, check.status);
  EXPECT_TRUE(contains(check.out, ":1:1: cannot be read: Input/output error\n")) << check.out;
}

TEST(Check, TellsTheFaultsOfAllSettings) {
  const Machine machine;
  machine.set("[use]\nvnc = 1\n");
  machine.set("[trust]\nhosts = [\"good\", \"a b\"]\n[use]\nVNC = \"x\"\n", "first");
  machine.set("[use\n", "second");
  const Variables variables{
      {"XDG_CONFIG_DIRS", machine.path("first") + ":" + machine.path("second")}};
  const Outcome check = machine.run({"--check"}, variables);
  EXPECT_EQ(4, check.status);
  for (const std::string& place : {machine.path(Machine::settings()) + ":2:7: ",
                                   machine.path(Machine::settings("first")) + ":2:18: ",
                                   machine.path(Machine::settings("first")) + ":4:1: ",
                                   machine.path(Machine::settings("second")) + ":1:"}) {
    EXPECT_TRUE(contains(check.out, place)) << place << " is not in\n" << check.out;
  }
  const Outcome json = machine.run({"--check", "--format=json"}, variables);
  EXPECT_EQ(4, json.status);
  EXPECT_EQ(4U, Json::parse(json.out)["faults"].size()) << json.out;
}

}  // namespace

}  // namespace hopopen_definitions_test
