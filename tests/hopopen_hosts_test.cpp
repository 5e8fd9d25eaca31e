// SPDX-License-Identifier: MIT
// What the settings say of single hosts: how hopopen is told it, and what it says of it.

#include "hopopen_runner.h"

namespace hopopen_hosts_test {

namespace {

using door::Json;
using door::Machine;
using door::Outcome;
using door::Strings;
using door::Variables;

// Viewers "a", "b" and "c" for vnc, of which "a" is the first by rank, and "c" for ssh, too.
void define(const Machine& machine) {
  for (const std::string name : {"a", "b", "c"}) {
    machine.program(name);
    machine.define(name, "name = \"Viewer " + name + "\"\nschemes = [\"vnc\"" +
                             (name == "c" ? ", \"ssh\"" : "") + "]\nprograms = [\"" + name +
                             "\"]\narguments = [[\"-l\", \"{user}\"], \"{host}\"]\nrank = " +
                             (name == "a" ? "1" : "2") + "\n");
  }
}

std::string userFile(const Machine& machine) {
  return machine.read(Machine::settings());
}

std::string succeed(const Machine& machine, const Strings& arguments) {
  const Outcome outcome = machine.run(arguments);
  EXPECT_EQ(0, outcome.status) << testing::PrintToString(arguments) << outcome.err;
  EXPECT_EQ("", outcome.err);
  EXPECT_FALSE(outcome.viewer);
  return outcome.out;
}

std::string refuse(const Machine& machine, const Strings& arguments, int status) {
  const Outcome outcome = machine.run(arguments);
  EXPECT_EQ(status, outcome.status) << testing::PrintToString(arguments) << outcome.err;
  return outcome.err;
}

// The line of a dry run that begins with that word.
std::string line(const Machine& machine, const std::string& word, const std::string& link) {
  const std::string text = "\n" + machine.run({"--dry-run", link}).out;
  const std::size_t start = text.find("\n" + word + " ");
  return start == std::string::npos
             ? ""
             : text.substr(start + 1, text.find('\n', start + 1) - start - 1);
}

}  // namespace

// --- --use and --forget --for ------------------------------------------------

TEST(UseForAHost, IsForThisHostOnly) {
  const Machine machine;
  define(machine);
  EXPECT_EQ("", succeed(machine, {"--use", "b", "vnc", "--for", "Build.Example."}));
  EXPECT_EQ("[host.\"build.example\"]\nuse = { vnc = \"b\" }\n", userFile(machine));
  EXPECT_EQ("b", machine.comesOf({"vnc://BUILD.example"}));
  EXPECT_EQ("a", machine.comesOf({"vnc://other.example"}));
  EXPECT_EQ("a", machine.comesOf({"vnc://a.build.example"}));
  EXPECT_EQ("c", machine.comesOf({"ssh://build.example"}));
  EXPECT_EQ((Strings{"b", "build.example"}), machine.launch({"vnc://build.example"}));
}

TEST(UseForAHost, IsForAllSchemesOfTheViewerUnlessTheyAreNamed) {
  const Machine machine;
  define(machine);
  succeed(machine, {"--for=[::1]", "--use", "c"});
  EXPECT_EQ("[host.\"[::1]\"]\nuse = { ssh = \"c\", vnc = \"c\" }\n", userFile(machine));
  EXPECT_EQ("c", machine.comesOf({"vnc://[0::1]"}));
}

TEST(UseForAHost, IsForAllBelowADomain) {
  const Machine machine;
  define(machine);
  succeed(machine, {"--use", "b", "VNC", "--for", ".lab.example"});
  succeed(machine, {"--use", "c", "vnc", "--for", "x.lab.example"});
  EXPECT_EQ("b", machine.comesOf({"vnc://y.lab.example"}));
  EXPECT_EQ("c", machine.comesOf({"vnc://x.lab.example"}));
  EXPECT_EQ("a", machine.comesOf({"vnc://lab.example"}));
}

TEST(UseForAHost, ChangesNothingElse) {
  const Machine machine;
  define(machine);
  machine.set("# one\n[use]\nvnc = 'c' # two\n[host.\"H.\"] # three\nuser = 'me'\ncolour = 1\n");
  succeed(machine, {"--use", "b", "vnc", "--for", "h"});
  EXPECT_EQ(
      "# one\n[use]\nvnc = 'c' # two\n[host.\"H.\"] # three\nuser = 'me'\ncolour = 1\n"
      "use = { vnc = \"b\" }\n",
      userFile(machine));
  EXPECT_EQ("c", machine.comesOf({"vnc://other"}));
  succeed(machine, {"--forget", "vnc", "--for", "h"});
  EXPECT_EQ("c", machine.comesOf({"vnc://h"}));
  EXPECT_EQ(
      "# one\n[use]\nvnc = 'c' # two\n[host.\"H.\"] # three\nuser = 'me'\ncolour = 1\n"
      "use = { }\n",
      userFile(machine));
}

TEST(UseForAHost, NeedsAViewerWithTheSchemeAndAHost) {
  const Machine machine;
  define(machine);
  EXPECT_EQ("hopopen: There is no viewer \"x\". See \"hopopen --list\". (choice)\n",
            refuse(machine, {"--use", "x", "--for", "h"}, 4));
  EXPECT_TRUE(refuse(machine, {"--use", "b", "ssh", "--for", "h"}, 4).ends_with("(choice)\n"));
  for (const std::string bad : {"", "h:1", "::1", "+", ".", "[::1%eth0]", "vnc://h", "h,i"}) {
    EXPECT_TRUE(refuse(machine, {"--use", "b", "--for", bad}, 2).ends_with("(host)\n")) << bad;
    EXPECT_TRUE(refuse(machine, {"--forget", "vnc", "--for", bad}, 2).ends_with("(host)\n")) << bad;
  }
  EXPECT_FALSE(machine.has(Machine::settings()));
}

TEST(UseForAHost, IsUndoneAsAMessageSays) {
  const Machine machine;
  define(machine);
  machine.set("[host.\".lab.example\"]\nuse = { vnc = \"gone\" }\n");
  EXPECT_EQ(
      "hopopen: Cannot open \"vnc://x.lab.example\". The chosen viewer \"gone\" is not known. See "
      "\"hopopen --list\", and choose another with \"hopopen --use NAME vnc --for .lab.example\", "
      "or none with \"hopopen --forget vnc --for .lab.example\". (choice)\n",
      refuse(machine, {"vnc://x.lab.example"}, 4));
  succeed(machine, {"--forget", "vnc", "--for", ".lab.example"});
  EXPECT_EQ("a", machine.comesOf({"vnc://x.lab.example"}));
}

TEST(UseForAHost, IsWhatAMessageAdvisesWhereTheViewerOfTheHostCannot) {
  const Machine machine;
  define(machine);
  machine.program("safe");
  machine.define("safe",
                 "name = \"Safe\"\nschemes = [\"vnc\"]\nprograms = [\"safe\"]\narguments = []\n"
                 "[parameters.SecurityType]\narguments = [\"--secure\"]\n");
  machine.set("[host.h]\nuse = { vnc = \"b\" }\n");
  const std::string said = refuse(machine, {"vnc://h?SecurityType=5"}, 2);
  EXPECT_TRUE(said.ends_with("type \"hopopen --use safe vnc --for h\". (restriction)\n")) << said;
  succeed(machine, {"--use", "safe", "vnc", "--for", "h"});
  EXPECT_EQ("safe", machine.comesOf({"vnc://h?SecurityType=5"}));
}

TEST(Choice, OfAHostIsNotThatOfTheList) {
  const Machine machine;
  define(machine);
  machine.set("[host.h]\nuse = { vnc = \"b\" }\n");
  for (const Json& viewer : machine.json({"--list", "--format=json"})["viewers"]) {
    EXPECT_EQ(viewer["name"] == "a"   ? R"({"vnc":"rank"})"
              : viewer["name"] == "c" ? R"({"ssh":"rank"})"
                                      : "{}",
              viewer["chosen"].dump());
  }
}

// --- What a dry run says -----------------------------------------------------

TEST(DryRun, SaysWhatComesFromTheTableOfAHost) {
  const Machine machine;
  define(machine);
  machine.set("[host.\".lab\"]\nuser = 'me'\n", "etc");
  machine.set("[host.\"x.lab\"]\nuse.vnc = 'b'\n");
  EXPECT_EQ("viewer      Viewer b (b), chosen in your settings for x.lab",
            line(machine, "viewer", "vnc://x.lab"));
  EXPECT_EQ("user        me, by the settings for .lab", line(machine, "user", "vnc://x.lab"));
  EXPECT_EQ("user        you", line(machine, "user", "vnc://you@x.lab"));
  EXPECT_EQ("me", machine.dry({"vnc://x.lab"})["user"]);
  EXPECT_EQ((Strings{"b", "-l", "me", "x.lab"}), machine.launch({"vnc://x.lab"}));
  machine.set("[host.\"x.lab\"]\nuse.vnc = 'c'\n", "etc");
  machine.set("");
  EXPECT_EQ("viewer      Viewer c (c), chosen by the administrator for x.lab",
            line(machine, "viewer", "vnc://x.lab"));
}

// --- Trust -------------------------------------------------------------------

TEST(Distrust, TurnsTheTableOfTheUser) {
  const Machine machine;
  define(machine);
  machine.set("[host.\"H.\"] # one\ntrust = true\n[host.'.lab']\ntrust = true # two\n");
  EXPECT_EQ("", succeed(machine, {"--distrust", "h", ".LAB"}));
  EXPECT_EQ("[host.\"H.\"] # one\ntrust = false\n[host.'.lab']\ntrust = false # two\n",
            userFile(machine));
  EXPECT_EQ(false, machine.dry({"vnc://h"})["trusted"]);
  EXPECT_EQ("", succeed(machine, {"--trust", "h"}));
  EXPECT_EQ(true, machine.dry({"vnc://h"})["trusted"]);
  EXPECT_EQ(false, machine.dry({"vnc://x.lab"})["trusted"]);
}

TEST(Distrust, SaysWhichTableStillTrustsTheHost) {
  const Machine machine;
  define(machine);
  machine.set("[trust]\nhosts = ['x.lab']\n");
  machine.set("[host.'.lab']\ntrust = true\n", "etc");
  const std::string file = machine.path(Machine::settings("etc"));
  EXPECT_EQ("x.lab is still trusted by .lab in " + file + "\n",
            succeed(machine, {"--distrust", "x.lab"}));
  EXPECT_EQ(true, machine.dry({"vnc://x.lab"})["trusted"]);
  EXPECT_EQ(".lab is still trusted by .lab in " + file + "\n",
            succeed(machine, {"--distrust", ".lab"}));
  EXPECT_EQ("", succeed(machine, {"--distrust", "y"}));
}

TEST(Distrust, SaysNothingOfListsThatATableBeats) {
  const Machine machine;
  define(machine);
  machine.set("[host.'x.lab']\ntrust = true\n");
  machine.set("[trust]\nhosts = ['x.lab', '.lab']\n", "etc");
  EXPECT_EQ("", succeed(machine, {"--distrust", "x.lab"}));
  EXPECT_EQ(false, machine.dry({"vnc://x.lab"})["trusted"]);
}

TEST(Trust, SaysWhichTableStillDistrustsTheHost) {
  const Machine machine;
  define(machine);
  machine.set("[host.'x.lab']\ntrust = false\n[host.'.far']\ntrust = false\n", "etc");
  const std::string file = machine.path(Machine::settings("etc"));
  EXPECT_EQ(
      "x.lab is still distrusted by x.lab in " + file +
          "\n  Write \"trust = true\" below [host.\"x.lab\"] in your own settings if you want "
          "it all the same.\n",
      succeed(machine, {"--trust", "X.lab", "y.far"}));
  EXPECT_EQ(false, machine.dry({"vnc://x.lab"})["trusted"]);
  EXPECT_EQ(true, machine.dry({"vnc://y.far"})["trusted"]);
  machine.set("[host.\"x.lab\"]\ntrust = true\n");
  EXPECT_EQ(true, machine.dry({"vnc://x.lab"})["trusted"]);
}

TEST(Trust, IsNotAdvisedWhereAnAdministratorDistrustsTheHost) {
  const Machine machine;
  machine.program("open");
  machine.define("open",
                 "name = \"Open\"\nschemes = [\"vnc\"]\nprograms = [\"open\"]\narguments = []\n"
                 "unguarded = [\"clipboard\"]\n");
  machine.set("[host.'x.lab']\ntrust = false\n[host.'.far']\ntrust = false\n", "etc");
  EXPECT_TRUE(contains(refuse(machine, {"vnc://y.far"}, 3), "--trust y.far\""));
  const std::string said = refuse(machine, {"vnc://x.lab"}, 3);
  EXPECT_FALSE(contains(said, "--trust")) << said;
  EXPECT_TRUE(contains(said, "\"hopopen --use open vnc\".")) << said;
}

// --- Faults ------------------------------------------------------------------

TEST(Settings, WithAFaultInATableOfAHostRefuseEveryLaunch) {
  const Machine machine;
  define(machine);
  for (const std::string text :
       {"[host.h]\n[host.'H']\n", "[host.h]\nuser = '-l'\n", "[host.h]\nthrough = ''\n",
        "[host.h]\ntrust = 1\n", "[host.h]\nuse = 'a'\n", "[host.'h:1']\n"}) {
    machine.set(text);
    EXPECT_EQ("refused: settings", machine.comesOf({"vnc://other"})) << text;
    EXPECT_TRUE(refuse(machine, {"--use", "b", "--for", "h"}, 4).ends_with("(settings)\n")) << text;
    EXPECT_EQ(text, userFile(machine));
    EXPECT_EQ(1U, machine.json({"--check", "--format=json"})["faults"].size()) << text;
  }
}

}  // namespace hopopen_hosts_test
