// SPDX-License-Identifier: MIT
// Faults of definitions.  hopopen finds each at its line and column, and ignores only the
// file that has it.

#include "hopopen_runner.h"

namespace hopopen_faults_test {

namespace {

using door::Json;
using door::Machine;
using door::Outcome;
using door::Strings;

struct Fault {
  const char* what;
  std::string text;
  const char* place;
  const char* word;  // a part of the message
};

std::string with(const std::string& lines) {
  return door::PLAIN + lines;  // from line 5 on
}

const Fault faultsOfDefinitions[] = {
    {"no TOML: a key without a value", with("rank =\n"), "5:7", ""},
    {"no TOML: a text without its end", with("packages = [\"a\n"), "5:15", ""},
    {"no TOML: a byte that is no UTF-8", with("# \xFF\n"), "5:2", ""},
    {"no TOML: a key that is there twice", with("name = \"x\"\n"), "5:8", "name"},
    {"no TOML: a table that is there twice", with("[default]\nport = 1\n[default]\n"), "7:1",
     "default"},
    {"an unknown key", with("colour = 1\n"), "5:1", "colour"},
    {"an unknown key in another letter case", with("Rank = 1\n"), "5:1", "Rank"},
    {"an unknown key after blanks", with("   colour = 1\n"), "5:4", "colour"},
    {"an unknown table", with("[colours]\n"), "5:2", "colours"},
    {"an unknown dotted key", with("colour.dark = 1\n"), "5:1", "colour"},

    {"a name that is no text", "name = 3\nschemes = [\"x\"]\nprograms = [\"p\"]\narguments = []\n",
     "1:8", ""},
    {"schemes that are no list",
     "name = \"n\"\nschemes = \"x\"\nprograms = [\"p\"]\narguments = []\n", "2:11", ""},
    {"a scheme that is no text",
     "name = \"n\"\nschemes = [\"x\", 1]\nprograms = [\"p\"]\narguments = []\n", "2:17", ""},
    {"a scheme in upper case",
     "name = \"n\"\nschemes = [\"x\", \"Vnc\"]\nprograms = [\"p\"]\narguments = []\n", "2:17", ""},
    {"a scheme that begins with a digit",
     "name = \"n\"\nschemes = [\"1x\"]\nprograms = [\"p\"]\narguments = []\n", "2:12", ""},
    {"an empty scheme", "name = \"n\"\nschemes = [\"\"]\nprograms = [\"p\"]\narguments = []\n",
     "2:12", ""},
    {"a scheme with an underscore",
     "name = \"n\"\nschemes = [\"a_b\"]\nprograms = [\"p\"]\narguments = []\n", "2:12", ""},
    {"programs that are no list",
     "name = \"n\"\nschemes = [\"x\"]\nprograms = \"p\"\narguments = []\n", "3:12", ""},
    {"a program that is no text",
     "name = \"n\"\nschemes = [\"x\"]\nprograms = [7]\narguments = []\n", "3:13", ""},
    {"a program with a path",
     "name = \"n\"\nschemes = [\"x\"]\nprograms = [\"p\", \"/bin/p\"]\narguments = []\n", "3:18",
     ""},
    {"a program with a relative path",
     "name = \"n\"\nschemes = [\"x\"]\nprograms = [\"./p\"]\narguments = []\n", "3:13", ""},
    {"a program that is a folder",
     "name = \"n\"\nschemes = [\"x\"]\nprograms = [\".\"]\narguments = []\n", "3:13", ""},
    {"a program that is the folder above",
     "name = \"n\"\nschemes = [\"x\"]\nprograms = [\"..\"]\narguments = []\n", "3:13", ""},
    {"an empty list in the arguments",
     "name = \"n\"\nschemes = [\"x\"]\nprograms = [\"p\"]\narguments = [[]]\n", "4:14", ""},
    {"arguments that are no list",
     "name = \"n\"\nschemes = [\"x\"]\nprograms = [\"p\"]\narguments = \"{host}\"\n", "4:13", ""},
    {"an argument that is no text",
     "name = \"n\"\nschemes = [\"x\"]\nprograms = [\"p\"]\narguments = [\"-x\", 1]\n", "4:20", ""},
    {"an argument that is no text in a list",
     "name = \"n\"\nschemes = [\"x\"]\nprograms = [\"p\"]\narguments = [[\"-x\", true]]\n", "4:21",
     ""},
    {"a list in a list in a list",
     "name = \"n\"\nschemes = [\"x\"]\nprograms = [\"p\"]\narguments = [[\"-x\", [\"y\"]]]\n",
     "4:21", ""},
    {"no name", "schemes = [\"x\"]\nprograms = [\"p\"]\narguments = []\n", "1:1", "name"},
    {"no schemes", "name = \"n\"\nprograms = [\"p\"]\narguments = []\n", "1:1", "schemes"},
    {"no programs", "name = \"n\"\nschemes = [\"x\"]\narguments = []\n", "1:1", "programs"},
    {"no arguments", "name = \"n\"\nschemes = [\"x\"]\nprograms = [\"p\"]\n", "1:1", "arguments"},

    {"a rank that is a text", with("rank = \"20\"\n"), "5:8", ""},
    {"a rank that is no integer", with("rank = 20.0\n"), "5:8", ""},
    {"a rank that is a truth value", with("rank = true\n"), "5:8", ""},
    {"packages that are no list", with("packages = \"p\"\n"), "5:12", ""},
    {"a package that is no text", with("packages = [\n  1]\n"), "6:3", ""},
    {"a stranger's arguments that are no list", with("stranger = \"-x\"\n"), "5:12", ""},
    {"a trusted host's arguments that are no list", with("trusted = 1\n"), "5:11", ""},
    {"unguarded that is no list", with("unguarded = \"clipboard\"\n"), "5:13", ""},
    {"unguarded with a number", with("unguarded = [1]\n"), "5:14", ""},
    {"unset that is no list", with("unset = \"A\"\n"), "5:9", ""},
    {"unset with a number", with("unset = [\"A\", 1]\n"), "5:15", ""},
    {"unset with no name of a variable", with("unset = [\"A=B\"]\n"), "5:10", ""},
    {"terminal that is no truth value", with("terminal = 1\n"), "5:12", ""},
    {"terminal as a text", with("terminal = \"true\"\n"), "5:12", ""},
    {"default that is no table", with("default = 5900\n"), "5:11", ""},
    {"an unknown key in default", with("[default]\nhost = \"h\"\n"), "6:1", "host"},
    {"the port 0", with("[default]\nport = 0\n"), "6:8", ""},
    {"the port 65536", with("[default]\nport = 65536\n"), "6:8", ""},
    {"a negative port", with("[default]\nport = -1\n"), "6:8", ""},
    {"a port that is a text", with("[default]\nport = \"5900\"\n"), "6:8", ""},
    {"a port of many digits", with("[default]\nport = 4294967297\n"), "6:8", ""},
    {"environment that is no table", with("environment = []\n"), "5:15", ""},
    {"a variable that is a number", with("[environment]\nA = 1\n"), "6:5", ""},
    {"a variable with an equals sign", with("[environment]\n\"A=B\" = \"x\"\n"), "6:1", ""},
    {"a variable without a name", with("[environment]\n\"\" = \"x\"\n"), "6:1", ""},
    {"parameters that are no table", with("parameters = 1\n"), "5:14", ""},
    {"an unknown parameter", with("[parameters.Colour]\narguments = []\n"), "5:13", "Colour"},
    {"the parameter VncUsername", with("[parameters.VncUsername]\narguments = []\n"), "5:13",
     "VncUsername"},
    {"the parameter VncPassword", with("[parameters.VncPassword]\narguments = []\n"), "5:13",
     "VncPassword"},
    {"the parameter vncpassword", with("[parameters.vncpassword]\narguments = []\n"), "5:13",
     "vncpassword"},
    {"a parameter that is no table", with("[parameters]\nShared = []\n"), "6:10", ""},
    {"a parameter without arguments", with("[parameters.Shared]\nallow = \"x\"\n"), "5:13",
     "arguments"},
    {"an unknown key in a parameter", with("[parameters.Shared]\narguments = []\nunset = []\n"),
     "7:1", "unset"},
    {"a parameter's arguments that are no list", with("[parameters.Shared]\narguments = \"x\"\n"),
     "6:13", ""},
    {"allow that is no text", with("[parameters.Shared]\nallow = 1\narguments = [\"x\"]\n"), "6:9",
     ""},
    {"allow that is no expression",
     with("[parameters.Shared]\nallow = \"[0-9\"\narguments = [\"{value}\"]\n"), "6:9", ""},
    {"allow with a group without its end",
     with("[parameters.Shared]\nallow = \"(a\"\narguments = [\"{value}\"]\n"), "6:9", ""},
    {"{value} without allow", with("[parameters.Shared]\narguments = [\"{value}\"]\n"), "5:13",
     "allow"},

    {"an unknown placeholder", with("stranger = [\"{nose}\"]\n"), "5:13", ""},
    {"a placeholder in another letter case", with("stranger = [\"{Host}\"]\n"), "5:13", ""},
    {"a placeholder with blanks", with("stranger = [\"{ host }\"]\n"), "5:13", ""},
    {"an empty placeholder", with("stranger = [\"{}\"]\n"), "5:13", ""},
    {"an unknown placeholder for trusted hosts", with("trusted = [\"a\", \"{nose}\"]\n"), "5:17",
     ""},
    {"an unknown placeholder in a list", with("stranger = [[\"-x\", \"{nose}\"]]\n"), "5:20", ""},
    {"an unknown placeholder in the environment", with("[environment]\nA = \"{nose}\"\n"), "6:5",
     ""},
    {"an unknown placeholder of a parameter",
     with("[parameters.Shared]\narguments = [\"{nose}\"]\n"), "6:14", ""},
    {"{value} without a parameter", with("stranger = [\"{value}\"]\n"), "5:13", ""},
    {"{value} in the environment", with("[environment]\nA = \"{value}\"\n"), "6:5", ""},
    {"a lone opening brace", with("stranger = [\"a{\"]\n"), "5:13", ""},
    {"a lone opening brace before another", with("stranger = [\"{host\"]\n"), "5:13", ""},
    {"a lone closing brace", with("stranger = [\"}a\"]\n"), "5:13", ""},
    {"three closing braces", with("stranger = [\"{{x}}}\"]\n"), "5:13", ""},
    {"a lone brace in the environment", with("[environment]\nA = \"}\"\n"), "6:5", ""},
    {"a password for a stranger", with("stranger = [\"{password}\"]\n"), "5:13", "password"},
    {"a password for a trusted host", with("trusted = [\"-p{password}\"]\n"), "5:12", "password"},
    {"a password of a parameter", with("[parameters.Shared]\narguments = [\"{password}\"]\n"),
     "6:14", "password"},
    {"a password in a list", with("stranger = [[\"-p\", \"{password}\"]]\n"), "5:20", "password"},
    {"a password inside a terminal", with("terminal = true\n[environment]\nA = \"{password}\"\n"),
     "7:5", "password"},
    {"{socket} in the arguments",
     "name = \"n\"\nschemes = [\"x\"]\nprograms = [\"p\"]\narguments = [\"{socket}\"]\n", "4:14",
     "tunnelled"},
    {"{socket} for a stranger", with("stranger = [\"{socket}\"]\n"), "5:13", "tunnelled"},
    {"{socket} for a trusted host", with("trusted = [[\"-s\", \"{socket}\"]]\n"), "5:19",
     "tunnelled"},
    {"{socket} in the environment", with("[environment]\nA = \"{socket}\"\n"), "6:5", "tunnelled"},
    {"{socket} inside a terminal", with("terminal = true\n[environment]\nA = \"{socket}\"\n"),
     "7:5", "tunnelled"},
    {"{socket} of a parameter", with("[parameters.Shared]\narguments = [\"{socket}\"]\n"), "6:14",
     "tunnelled"},
    {"tunnelled that is no list", with("tunnelled = \"{socket}\"\n"), "5:13", ""},
    {"tunnelled with an empty list", with("tunnelled = [\"{socket}\", []]\n"), "5:26", ""},
    {"a host in tunnelled", with("tunnelled = [\"{host}\"]\n"), "5:14", "{socket}"},
    {"a host in brackets in tunnelled", with("tunnelled = [\"{bracketed}\"]\n"), "5:14",
     "{socket}"},
    {"a port in tunnelled", with("tunnelled = [\"{socket}\", \"{port}\"]\n"), "5:26", "{socket}"},
    {"a display in tunnelled", with("tunnelled = [[\"-d\", \"{display}\"]]\n"), "5:21", "{socket}"},
    {"a link in tunnelled", with("tunnelled = [\"{link}\"]\n"), "5:14", "{socket}"},
    {"a host and a port in tunnelled", with("tunnelled = [\"{socket}{host}:{port}\"]\n"), "5:14",
     "{socket}"},
    {"a value in tunnelled", with("tunnelled = [\"{value}\"]\n"), "5:14", "{value}"},
    {"a password in tunnelled", with("tunnelled = [\"{password}\"]\n"), "5:14", "password"},
    {"an argument with a zero byte", with("stranger = [\"a\\u0000b\"]\n"), "5:13", ""},
};

TEST(FaultsOfDefinitions, AreToldWithTheirPlacesAndLeaveTheirFilesOut) {
  const Machine machine;
  machine.plain();
  const std::string start = machine.path(Machine::definition("faulty")) + ":";
  for (const Fault& fault : faultsOfDefinitions) {
    SCOPED_TRACE(fault.what);
    machine.define("faulty", fault.text);
    const Outcome launch = machine.run({"vnc://h"});
    EXPECT_TRUE(launch.err.starts_with(start + fault.place + ": ")) << launch.err;
    EXPECT_EQ(1U, countOf(launch.err, "\n")) << launch.err;
    EXPECT_TRUE(contains(launch.err, fault.word)) << launch.err;
    EXPECT_TRUE(door::isPlain(launch.err)) << launch.err;
    EXPECT_EQ(42, launch.status) << "the other viewer is still good";
    ASSERT_TRUE(launch.viewer);
    EXPECT_EQ((Strings{"plain", "h"}), launch.viewer->arguments);
  }
}

TEST(FaultsOfDefinitions, AreToldByCheckWithStatusFour) {
  const Machine machine;
  for (const Fault& fault : faultsOfDefinitions) {
    SCOPED_TRACE(fault.what);
    machine.define("faulty", fault.text);
    const Outcome check = machine.run({"--check", "--format=json"});
    EXPECT_EQ(4, check.status);
    EXPECT_EQ("", check.err);
    const Json faults = Json::parse(check.out)["faults"];
    ASSERT_EQ(1U, faults.size()) << check.out;
    EXPECT_EQ(machine.path(Machine::definition("faulty")), faults[0]["file"]);
    EXPECT_EQ(fault.place, faults[0]["line"].dump() + ":" + faults[0]["column"].dump());
    EXPECT_EQ(4U, faults[0].size());
    EXPECT_TRUE(contains(faults[0]["message"].get<std::string>(), fault.word)) << faults[0];
  }
}

TEST(FaultsOfDefinitions, ColumnsCountCharactersAndNotBytes) {
  const Machine machine;
  machine.define("faulty", with("packages = [\"\u00e4\u00f6\u00fc\", 1]\n"));
  EXPECT_EQ("5:20", machine.json({"--check", "--format=json"})["faults"][0]["line"].dump() + ":" +
                        machine.json({"--check", "--format=json"})["faults"][0]["column"].dump());
}

TEST(FaultsOfDefinitions, AreAllToldByCheck) {
  const Machine machine;
  machine.define("faulty", with("colour = 1\nrank = \"x\"\n[default]\nport = 0\n"));
  machine.define("other", "colour = 1\n", "data");
  const Outcome check = machine.run({"--check"});
  EXPECT_EQ(4, check.status);
  const std::string faulty = machine.path(Machine::definition("faulty"));
  const std::string other = machine.path(Machine::definition("other", "data"));
  for (const std::string& line :
       {faulty + ":5:1: ", faulty + ":6:8: ", faulty + ":8:8: ", other + ":1:1: "}) {
    EXPECT_TRUE(contains(check.out, line)) << line << " is not in\n" << check.out;
  }
  // Faults of the other file: the unknown key, and the four required keys.
  EXPECT_EQ(8U, machine.json({"--check", "--format=json"})["faults"].size()) << check.out;
}

TEST(FaultsOfDefinitions, AreOneLineAFileAtALaunch) {
  const Machine machine;
  machine.plain();
  machine.define("faulty", with("colour = 1\nrank = \"x\"\n"));
  machine.define("other", "colour = 1\n", "data");
  const Outcome launch = machine.run({"vnc://h"});
  EXPECT_EQ(42, launch.status);
  EXPECT_EQ(2U, countOf(launch.err, "\n")) << launch.err;
  EXPECT_EQ(1U, countOf(launch.err, machine.path(Machine::definition("faulty")) + ":"));
  EXPECT_EQ(1U, countOf(launch.err, machine.path(Machine::definition("other", "data")) + ":"));
}

TEST(FaultsOfDefinitions, AreNotToldAtALaunchThatIsQuiet) {
  const Machine machine;
  machine.plain();
  machine.define("faulty", with("colour = 1\n"));
  const Outcome launch = machine.run({"--quiet", "vnc://h"});
  EXPECT_EQ(42, launch.status);
  EXPECT_EQ("", launch.err);
}

TEST(FaultsOfDefinitions, AreToldByCheckAlsoWhenItIsQuiet) {
  const Machine machine;
  machine.define("faulty", with("colour = 1\n"));
  const Outcome check = machine.run({"--quiet", "--check"});
  EXPECT_EQ(4, check.status);
  EXPECT_TRUE(contains(check.out, ":5:1: ")) << check.out;
}

TEST(FaultsOfDefinitions, OfAFolderAndOfAPipeAreToldAtOnce) {
  const Machine machine;
  machine.plain();
  const std::string folder = Machine::definition("folder");
  const std::string pipe = Machine::definition("pipe");
  std::filesystem::create_directories(machine.path(folder));
  ASSERT_EQ(0, mkfifo(machine.path(pipe).c_str(), 0600));
  const Outcome launch = machine.run({"vnc://h"});
  EXPECT_EQ(42, launch.status);
  EXPECT_TRUE(contains(launch.err, machine.path(folder) + ":1:1: ")) << launch.err;
  EXPECT_TRUE(contains(launch.err, machine.path(pipe) + ":1:1: ")) << launch.err;
}

TEST(FaultsOfDefinitions, OfAFileThatCannotBeReadAreTold) {
  const Machine machine;
  machine.plain();
  std::filesystem::create_symlink("nothing", machine.path(Machine::definition("gone")));
  const Outcome launch = machine.run({"vnc://h"});
  EXPECT_EQ(42, launch.status);
  EXPECT_TRUE(contains(launch.err, machine.path(Machine::definition("gone")) + ":1:1: "))
      << launch.err;
}

TEST(FaultsOfDefinitions, ComeFromAFileThatLacksEverything) {
  const Machine machine;
  machine.define("faulty", "\n");
  const Json faults = machine.json({"--check", "--format=json"})["faults"];
  ASSERT_EQ(4U, faults.size()) << faults;
  std::string messages;
  for (const Json& fault : faults) {
    EXPECT_EQ(1, fault["line"]);
    EXPECT_EQ(1, fault["column"]);
    messages += fault["message"].get<std::string>() + "\n";
  }
  EXPECT_EQ(
      "the key \"name\" is missing\nthe key \"schemes\" is missing\n"
      "the key \"programs\" is missing\nthe key \"arguments\" is missing\n",
      messages);
}

TEST(FaultsOfDefinitions, AreShownWithoutControlCharacters) {
  const Machine machine;
  machine.plain();
  const std::string bytes = "a\x1B]0;b\x07\xC3\xA4\n";
  machine.define("faulty", with("\"k\\u001b[31m\\n\u00e4\" = 1\n"), "data" + bytes);
  machine.define("broken", "name = \"a\x1B[31mb\"\n", "data" + bytes);
  const door::Variables variables{{"XDG_DATA_HOME", machine.path("data" + bytes)}};
  const Outcome launch = machine.run({"vnc://h"}, variables);
  EXPECT_EQ(42, launch.status);
  EXPECT_TRUE(door::isPlain(launch.err)) << launch.err;
  EXPECT_EQ(2U, countOf(launch.err, "\n")) << launch.err;
  EXPECT_EQ(2U, countOf(launch.err, "a\\x1B]0;b\\x07\\xC3\\xA4\\x0A/")) << launch.err;
  EXPECT_TRUE(contains(launch.err, "k\\x1B[31m\\x0A\\xC3\\xA4")) << launch.err;
  const Outcome check = machine.run({"--check"}, variables);
  EXPECT_TRUE(door::isPlain(check.out)) << check.out;
  EXPECT_EQ(2U, countOf(check.out, "a\\x1B]0;b\\x07\\xC3\\xA4\\x0A/")) << check.out;
}

}  // namespace

}  // namespace hopopen_faults_test
