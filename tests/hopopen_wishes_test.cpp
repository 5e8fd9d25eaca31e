// SPDX-License-Identifier: MIT
// --use, --forget, --trust and --distrust: their changes of the user's file, and their output.

#include "hopopen_runner.h"

namespace hopopen_wishes_test {

namespace {

namespace fs = std::filesystem;
using door::Json;
using door::Machine;
using door::Outcome;
using door::Strings;
using door::Variables;

void define(const Machine& machine) {
  machine.plain();
  machine.define("both",
                 "name = \"Both\"\nschemes = [\"vnc\", \"ssh\"]\nprograms = [\"both\"]\n"
                 "arguments = []\n");
}

std::string userFile(const Machine& machine) {
  return machine.read(Machine::settings());
}

void succeed(const Machine& machine, const Strings& arguments) {
  const Outcome outcome = machine.run(arguments);
  EXPECT_EQ(0, outcome.status) << testing::PrintToString(arguments) << outcome.err;
  EXPECT_EQ("", outcome.err);
  EXPECT_FALSE(outcome.viewer);
}

void refuse(const Machine& machine, const Strings& arguments, const std::string& code, int status) {
  const Outcome outcome = machine.run(arguments);
  EXPECT_EQ(status, outcome.status) << testing::PrintToString(arguments) << outcome.err;
  EXPECT_TRUE(outcome.err.starts_with("hopopen: ")) << outcome.err;
  EXPECT_TRUE(outcome.err.ends_with(" (" + code + ")\n")) << outcome.err;
  EXPECT_EQ(1U, countOf(outcome.err, "\n")) << outcome.err;
}

// Who chose the viewer for each of its schemes, according to --list.
std::string chosen(const Machine& machine, const std::string& name) {
  const Json list = machine.json({"--list", "--format=json"});
  for (const Json& viewer : list["viewers"]) {
    if (viewer["name"] == name) {
      return viewer["chosen"].dump();
    }
  }
  return "no such viewer";
}

fs::perms mode(const Machine& machine, const std::string& name) {
  return fs::status(machine.path(name)).permissions();
}

TEST(Use, IsForAllSchemesOfTheViewer) {
  const Machine machine;
  define(machine);
  succeed(machine, {"--use", "both"});
  EXPECT_EQ(R"({"vnc":"user","ssh":"user"})", chosen(machine, "both"));
}

TEST(Use, IsForTheSchemesThatAreNamed) {
  const Machine machine;
  define(machine);
  succeed(machine, {"--use", "both", "ssh"});
  EXPECT_EQ(R"({"ssh":"user"})", chosen(machine, "both"));
  EXPECT_EQ(R"({"vnc":"rank"})", chosen(machine, "plain"));
  succeed(machine, {"--use", "both", "vnc", "ssh"});
  EXPECT_EQ(R"({"vnc":"user","ssh":"user"})", chosen(machine, "both"));
  succeed(machine, {"--use", "plain", "vnc"});
  EXPECT_EQ(R"({"vnc":"user"})", chosen(machine, "plain"));
}

TEST(Use, DoesNotNeedTheProgram) {
  const Machine machine;
  machine.define("plain", door::PLAIN);
  succeed(machine, {"--use", "plain"});
  EXPECT_EQ("refused: choice", machine.comesOf({"vnc://h"}));
}

TEST(Use, NeedsADefinitionWithTheScheme) {
  const Machine machine;
  define(machine);
  machine.define("faulty", "colour = 1\n");
  machine.define("hidden", "");
  for (const Strings& words : {Strings{"nobody"}, Strings{""}, Strings{"Plain"},
                               Strings{"plain", "ssh"}, Strings{"plain", "vnc", "ssh"},
                               Strings{"plain", ""}, Strings{"faulty"}, Strings{"hidden"}}) {
    Strings arguments{"--use"};
    arguments.insert(arguments.end(), words.begin(), words.end());
    const Outcome outcome = machine.run(arguments);
    EXPECT_EQ(4, outcome.status) << testing::PrintToString(words);
    EXPECT_TRUE(outcome.err.ends_with(" (choice)\n")) << outcome.err;
    EXPECT_FALSE(machine.has(Machine::settings())) << testing::PrintToString(words);
  }
}

TEST(Forget, MakesTheChoiceThatOfTheOthersAgain) {
  const Machine machine;
  define(machine);
  machine.set("[use]\nvnc = \"both\"\n", "etc");
  machine.set("[use]\nvnc = \"plain\"\nssh = \"both\"\n");
  succeed(machine, {"--forget", "vnc"});
  EXPECT_EQ(R"({"vnc":"administrator","ssh":"user"})", chosen(machine, "both"));
  succeed(machine, {"--forget", "ssh", "vnc", "other"});
  EXPECT_EQ(R"({"vnc":"administrator"})", chosen(machine, "both"));
  EXPECT_EQ("[use]\n", userFile(machine));
}

TEST(Trust, KeepsHostsInTheFormInWhichTheyArePassedOn) {
  const Machine machine;
  define(machine);
  machine.set("[trust]\nhosts = []\n");
  succeed(machine, {"--trust", "Build.EXAMPLE.", ".Lab.Example", "1.2.3.4", "[FE80::1%25eth0]"});
  const std::string text = userFile(machine);
  for (const char* host :
       {"\"build.example\"", "\".lab.example\"", "\"1.2.3.4\"", "\"[FE80::1%25eth0]\""}) {
    EXPECT_EQ(1U, countOf(text, host)) << host << " is not in\n" << text;
  }
  EXPECT_EQ(8U, countOf(text, "\"")) << text;
  for (const char* link :
       {"vnc://build.example", "vnc://a.lab.example", "vnc://1.2.3.4", "vnc://[fe80::1%25eth0]"}) {
    EXPECT_EQ(true, machine.dry({link})["trusted"]) << link;
  }
}

TEST(Trust, KeepsAHostOnce) {
  const Machine machine;
  define(machine);
  succeed(machine, {"--trust", "host", "HOST", "host."});
  succeed(machine, {"--trust", "[fe80::1]", "host"});
  const std::string text = userFile(machine);
  succeed(machine, {"--trust", "[FE80:0::1]", "Host"});
  EXPECT_EQ(text, userFile(machine));
  EXPECT_EQ(1U, countOf(text, "\"host\"")) << text;
  EXPECT_EQ(1U, countOf(text, "\"[fe80::1]\"")) << text;
}

TEST(Trust, ChangesNothingWhenOneOfSeveralHostsIsBad) {
  const Machine machine;
  define(machine);
  machine.set("# mine\n[trust]\nhosts = [\"a\"]\n");
  for (const char* bad : {"", ".", "..a", "a b", "127.1", "::1", "[::1", "h:5900", "u@h", "h-",
                          "vnc://h", ".[::1]", ".1.2.3.4", "a..b", "[v1.x]", "+", "\xC3\xA4"}) {
    refuse(machine, {"--trust", "b", bad, "c"}, "host", 2);
    refuse(machine, {"--distrust", "a", bad}, "host", 2);
    EXPECT_EQ("# mine\n[trust]\nhosts = [\"a\"]\n", userFile(machine)) << bad;
  }
}

TEST(Distrust, TakesEqualHostsOut) {
  const Machine machine;
  define(machine);
  machine.set("[trust]\nhosts = [\"Host\", \"other\", \"[fe80:0::1]\", \".host\"]\n");
  succeed(machine, {"--distrust", "HOST.", "[FE80::1]"});
  EXPECT_EQ(false, machine.dry({"vnc://host"})["trusted"]);
  EXPECT_EQ(false, machine.dry({"vnc://[fe80::1]"})["trusted"]);
  EXPECT_EQ(true, machine.dry({"vnc://other"})["trusted"]);
  EXPECT_EQ(true, machine.dry({"vnc://a.host"})["trusted"]);
  succeed(machine, {"--distrust", ".host", "nobody"});
  EXPECT_EQ(false, machine.dry({"vnc://a.host"})["trusted"]);
}

TEST(Distrust, SaysWhichOtherFileStillTrustsTheHost) {
  const Machine machine;
  define(machine);
  machine.set("[trust]\nhosts = [\"host\", \"mine\"]\n");
  machine.set("[trust]\nhosts = [\"HOST\"]\n", "first");
  machine.set("[trust]\nhosts = [\"other\"]\n", "second");
  const Variables variables{
      {"XDG_CONFIG_DIRS", machine.path("first") + ":" + machine.path("second")}};
  const Outcome still = machine.run({"--distrust", "host"}, variables);
  EXPECT_EQ(0, still.status);
  EXPECT_TRUE(contains(still.out, machine.path(Machine::settings("first")))) << still.out;
  EXPECT_FALSE(contains(still.out, machine.path(Machine::settings("second")))) << still.out;
  EXPECT_TRUE(contains(still.out, "host")) << still.out;
  EXPECT_EQ(true, machine.dry({"vnc://host"}, variables)["trusted"]);
  EXPECT_FALSE(contains(userFile(machine), "\"host\""));
  const Outcome gone = machine.run({"--distrust", "mine"}, variables);
  EXPECT_EQ(0, gone.status);
  EXPECT_FALSE(contains(gone.out, "first")) << gone.out;
  EXPECT_FALSE(contains(gone.out, "second")) << gone.out;
}

TEST(Distrust, SaysWhichOtherFileTrustsAllHostsBelow) {
  const Machine machine;
  define(machine);
  machine.set("[trust]\nhosts = [\"a.lab.example\"]\n");
  machine.set("[trust]\nhosts = [\".lab.example\"]\n", "etc");
  const Outcome outcome = machine.run({"--distrust", "a.lab.example"});
  EXPECT_EQ(0, outcome.status);
  EXPECT_TRUE(contains(outcome.out, machine.path(Machine::settings("etc")))) << outcome.out;
}

const char* const LIVED_IN =
    "# What I use.\n"
    "colour = \"green\"  # not read\n"
    "\n"
    "[use]   # viewers\n"
    "# the good one\n"
    "vnc = 'plain'  # for now\n"
    "\n"
    "[other]\n"
    "list = [1, 2,\n"
    "  3] # three\n"
    "\n"
    "[trust]\n"
    "hosts = [\n"
    "  \"a\",  # the first\n"
    "  # nothing here\n"
    "  \"b\",\n"
    "]\n";

TEST(Wishes, KeepCommentsAndWhatTheyDoNotKnow) {
  const Machine machine;
  define(machine);
  machine.set(LIVED_IN);
  succeed(machine, {"--use", "both"});
  succeed(machine, {"--trust", "c"});
  succeed(machine, {"--distrust", "b"});
  const std::string text = userFile(machine);
  for (const char* kept :
       {"# What I use.\ncolour = \"green\"  # not read\n\n[use]   # viewers\n# the good one\n",
        "# for now\n", "\n[other]\nlist = [1, 2,\n  3] # three\n\n[trust]\n", "# the first\n",
        "# nothing here\n"}) {
    EXPECT_TRUE(contains(text, kept)) << kept << "\nis not in\n" << text;
  }
  EXPECT_EQ(R"({"vnc":"user","ssh":"user"})", chosen(machine, "both"));
  for (const auto& [host, trusted] :
       std::map<std::string, bool>{{"a", true}, {"b", false}, {"c", true}}) {
    EXPECT_EQ(trusted, machine.dry({"--viewer=plain", "vnc://" + host})["trusted"]) << host;
  }
}

TEST(Wishes, ThatAreFulfilledAlreadyLeaveTheFileAsItIs) {
  const Machine machine;
  define(machine);
  machine.set(LIVED_IN);
  succeed(machine, {"--use", "plain"});
  succeed(machine, {"--forget", "ssh"});
  succeed(machine, {"--trust", "a", "B"});
  succeed(machine, {"--distrust", "c"});
  EXPECT_EQ(LIVED_IN, userFile(machine));
}

TEST(Wishes, MakeAFileAndAFolderForTheUserOnly) {
  for (const Strings& arguments : {Strings{"--use", "plain"}, Strings{"--trust", "h"}}) {
    const Machine machine;
    define(machine);
    const Variables variables{{"XDG_CONFIG_HOME", machine.path("new/config")}};
    const Outcome outcome =
        machine.call({.arguments = arguments, .variables = variables, .prepare = [] { umask(0); }});
    EXPECT_EQ(0, outcome.status) << outcome.err;
    EXPECT_EQ(fs::perms(0600), mode(machine, Machine::settings("new/config")));
    EXPECT_EQ(fs::perms(0700), mode(machine, "new/config/hoplaunch"));
    EXPECT_EQ(fs::perms(0700), mode(machine, "new/config"));
  }
}

TEST(Wishes, TakeTheFileFromOthersThatTheyChange) {
  const Machine machine;
  define(machine);
  machine.set("[trust]\nhosts = [\"a\"]\n");
  fs::permissions(machine.path(Machine::settings()), fs::perms(0664));
  succeed(machine, {"--trust", "b"});
  EXPECT_EQ(fs::perms(0600), mode(machine, Machine::settings()));
}

TEST(Wishes, WriteThroughASymbolicLink) {
  const Machine machine;
  define(machine);
  machine.write("dotfiles/real.toml", "# real\n");
  fs::create_directories(machine.path("config/hoplaunch"));
  fs::create_symlink("../../dotfiles/real.toml", machine.path(Machine::settings()));
  succeed(machine, {"--trust", "host"});
  EXPECT_TRUE(fs::is_symlink(machine.path(Machine::settings())));
  EXPECT_FALSE(fs::is_symlink(machine.path("dotfiles/real.toml")));
  const std::string text = machine.read("dotfiles/real.toml");
  EXPECT_TRUE(text.starts_with("# real\n")) << text;
  EXPECT_TRUE(contains(text, "\"host\"")) << text;
}

TEST(Wishes, NeverOverwriteAFileWithAFault) {
  const Machine machine;
  define(machine);
  for (const char* text : {"[use\n", "[use]\nvnc = 1\n", "[use]\nVNC = \"plain\"\n",
                           "[trust]\nhosts = \"h\"\n", "[trust]\nhosts = [\"a b\"]\n", "\xFF"}) {
    machine.set(text);
    for (const Strings& arguments : {Strings{"--use", "plain"}, Strings{"--forget", "vnc"},
                                     Strings{"--trust", "h"}, Strings{"--distrust", "h"}}) {
      const Outcome outcome = machine.run(arguments);
      EXPECT_EQ(4, outcome.status);
      EXPECT_TRUE(outcome.err.ends_with(" (settings)\n")) << outcome.err;
      EXPECT_TRUE(contains(outcome.err, machine.path(Machine::settings()) + ":")) << outcome.err;
      EXPECT_EQ(text, userFile(machine));
    }
  }
}

TEST(Wishes, ThatCannotBeWrittenEndWithStatusFour) {
  const Machine machine;
  define(machine);
  machine.write("file", "");
  const std::vector<Variables> cases{
      {{"XDG_CONFIG_HOME", machine.path("file")}},
      {{"XDG_CONFIG_HOME", "/proc/self"}},
      {{"XDG_CONFIG_HOME", std::nullopt}, {"HOME", std::nullopt}},
  };
  for (const Variables& variables : cases) {
    const Outcome outcome = machine.run({"--trust", "h"}, variables);
    EXPECT_EQ(4, outcome.status) << testing::PrintToString(variables);
    EXPECT_TRUE(outcome.err.starts_with("hopopen: ")) << outcome.err;
    EXPECT_EQ(1U, countOf(outcome.err, "\n")) << outcome.err;
  }
}

TEST(Wishes, ChangeTheUsersFileOnly) {
  const Machine machine;
  define(machine);
  machine.set("[use]\nvnc = \"both\"\n[trust]\nhosts = [\"h\"]\n", "etc");
  succeed(machine, {"--use", "plain"});
  succeed(machine, {"--forget", "vnc"});
  succeed(machine, {"--distrust", "h"});
  EXPECT_EQ("[use]\nvnc = \"both\"\n[trust]\nhosts = [\"h\"]\n",
            machine.read(Machine::settings("etc")));
}

TEST(Wishes, OfTwoHundredAtOnceAreAllFulfilled) {
#ifdef SLOW  // programs start slowly
  constexpr int pairs = 20;
#else
  constexpr int pairs = 100;
#endif
  const Machine machine;
  std::string schemes;
  for (int index = 0; index < pairs; ++index) {
    schemes += "\"s" + std::to_string(index) + "\", ";
  }
  machine.define("many", "name = \"Many\"\nschemes = [" + schemes +
                             "]\nprograms = [\"many\"]\narguments = []\n");
  std::vector<pid_t> children;
  for (int index = 0; index < pairs; ++index) {
    const std::string number = std::to_string(index);
    for (const Strings& arguments :
         {Strings{"--use", "many", "s" + number}, Strings{"--trust", "h" + number + ".example"}}) {
      const pid_t child = fork();
      if (child == 0) {
        _exit(machine.run(arguments).status);
      }
      children.push_back(child);
    }
  }
  for (const pid_t child : children) {
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(0, status);
  }
  const std::string text = userFile(machine);
  for (int index = 0; index < pairs; ++index) {
    const std::string number = std::to_string(index);
    EXPECT_EQ(1U, countOf(text, "\"h" + number + ".example\"")) << text;
    EXPECT_EQ(1U, countOf(text, "\ns" + number + " = \"many\"\n")) << text;
  }
  EXPECT_EQ("refused: choice", machine.comesOf({"s7://h7.example"}));
}

}  // namespace

}  // namespace hopopen_wishes_test
