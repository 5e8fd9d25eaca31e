// SPDX-License-Identifier: MIT
// The command line of hopopen: exactly one request, and words as they are.

#include "hopopen_runner.h"

namespace hopopen_commandline_test {

namespace {

using door::Json;
using door::Machine;
using door::Outcome;
using door::Strings;

TEST(CommandLine, HasExactlyOneLinkOrWish) {
  const Machine machine;
  machine.plain();
  const std::vector<Strings> wrong{{},
                                   {"vnc://h", "vnc://h"},
                                   {"vnc://h", ""},
                                   {"--", "vnc://h", "--quiet"},
                                   {"--quiet"},
                                   {"--dry-run"},
                                   {"--viewer=plain"},
                                   {"--list", "vnc://h"},
                                   {"vnc://h", "--list"},
                                   {"--list", ""},
                                   {"--list", "--", "vnc://h"},
                                   {"--check", "vnc://h"},
                                   {"--list", "--check"},
                                   {"--list", "--trust", "h"},
                                   {"--trust", "h", "--distrust", "h"},
                                   {"--use", "plain", "--forget", "vnc"},
                                   {"--forget", "vnc", "--check"},
                                   {"--use", "plain", "--", "vnc://h"},
                                   {"--trust", "h", "--", "vnc://h"},
                                   {"--use"},
                                   {"--use", "plain", "--for"},
                                   {"--use", "plain", "--for", "h", "i"},
                                   {"--use", "plain", "--for", "h", "--for", "i"},
                                   {"--for", "h"},
                                   {"--for", "h", "--trust", "h"},
                                   {"--distrust", "h", "--for", "h"},
                                   {"--list", "--for=h"},
                                   {"--check", "--for=h"},
                                   {"--for", "h", "--", "vnc://h"},
                                   {"--forget"},
                                   {"--trust"},
                                   {"--distrust"}};
  for (const Strings& arguments : wrong) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const Outcome outcome = machine.run(arguments);
    EXPECT_EQ(1, outcome.status);
    EXPECT_EQ("", outcome.out);
    EXPECT_TRUE(outcome.err.starts_with("hopopen: ")) << outcome.err;
    EXPECT_TRUE(door::isPlain(outcome.err)) << outcome.err;
    EXPECT_FALSE(outcome.viewer);
    EXPECT_FALSE(machine.has(Machine::settings()));
  }
}

TEST(CommandLine, ThatIsWrongIsExplained) {
  const Machine machine;
  machine.plain();
  struct Case {
    Strings arguments;
    const char* said;
  };
  const std::string one =
      "Give one link, or one of --list, --check, --use, --forget, --trust, --distrust.";
  for (const auto& [arguments, said] :
       {Case{{"vnc://h", "vnc://i"}, "Only one link can be opened at a time."},
        {{"a", "b", "c"}, "Only one link can be opened at a time."},
        {{"--", "a", "b"}, "Only one link can be opened at a time."},
        {{"--viewer=plain", "a", "b"}, "Only one link can be opened at a time."},
        {{}, one.c_str()},
        {{"--list", "vnc://h"}, one.c_str()},
        {{"--colour=red", "vnc://h"}, "There is no option \"--colour\"."},
        {{"vnc://h", "--viewer"}, "An option has no value, or has one too many."},
        {{"--use"}, "An option has no value, or has one too many."},
        {{"--for=h", "vnc://h"}, "Give --for together with --use or --forget."},
        {{"--trust", "h", "--for", "i"}, "Give --for together with --use or --forget."},
        {{"--for", "h"}, one.c_str()},
        {{"--format=xml", "vnc://h"}, "The format must be text or json."}}) {
    const Outcome outcome = machine.run(arguments);
    EXPECT_EQ("hopopen: " + std::string(said) +
                  "\nUsage: hopopen [OPTION]... [--] LINK\nSee hopopen --help.\n",
              outcome.err)
        << testing::PrintToString(arguments);
    EXPECT_EQ(1, outcome.status);
  }
}

TEST(CommandLine, HasOnlyOptionsThatAreKnownWithTheirValues) {
  const Machine machine;
  machine.plain();
  const std::vector<Strings> wrong{{"--nothing", "vnc://h"},
                                   {"--view=plain", "vnc://h"},
                                   {"--LIST"},
                                   {"-list"},
                                   {"-x", "vnc://h"},
                                   {"-", "--list", "vnc://h"},
                                   {"vnc://h", "--viewer"},
                                   {"vnc://h", "--log"},
                                   {"vnc://h", "--format"},
                                   {"--format=xml", "vnc://h"},
                                   {"--format=JSON", "vnc://h"},
                                   {"--format=", "vnc://h"},
                                   {"--config=/dev/null", "vnc://h"}};
  for (const Strings& arguments : wrong) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const Outcome outcome = machine.run(arguments);
    EXPECT_EQ(1, outcome.status);
    EXPECT_EQ("", outcome.out);
    EXPECT_TRUE(outcome.err.starts_with("hopopen: ")) << outcome.err;
    EXPECT_FALSE(outcome.viewer);
  }
}

TEST(CommandLine, MayHaveOptionsBeforeAndAfterTheLink) {
  const Machine machine;
  machine.plain();
  machine.define("b",
                 "name = \"b\"\nschemes = [\"vnc\"]\nprograms = [\"b\"]\narguments = [\"-b\"]\n");
  machine.program("b");
  const std::vector<Strings> good{{"--viewer", "b", "--quiet", "--log", "log", "vnc://h"},
                                  {"vnc://h", "--viewer", "b", "--quiet", "--log", "log"},
                                  {"--viewer=b", "vnc://h", "--log=log", "--quiet"},
                                  {"--quiet", "--log=log", "--viewer=b", "--", "vnc://h"}};
  for (const Strings& arguments : good) {
    EXPECT_EQ((Strings{"b", "-b"}), machine.launch(arguments)) << arguments[0];
    EXPECT_TRUE(machine.has("work/log"));
    std::filesystem::remove(machine.path("work/log"));
  }
}

TEST(CommandLine, TakesEveryWordAfterTwoDashesForTheLink) {
  const Machine machine;
  machine.plain();
  for (const char* word : {"--help", "--version", "--list", "-h", "-", "--", "--quiet"}) {
    const Outcome outcome = machine.run({"--", word});
    EXPECT_EQ(2, outcome.status) << word;
    EXPECT_TRUE(contains(outcome.err, '"' + std::string(word) + '"')) << outcome.err;
    EXPECT_TRUE(outcome.err.ends_with(" (syntax)\n")) << outcome.err;
    EXPECT_EQ("", outcome.out);
  }
  EXPECT_EQ((Strings{"plain", "h"}), machine.launch({"--", "vnc://h"}));
}

TEST(CommandLine, TakesLinksAsTheyAre) {
  const Machine machine;
  machine.plain();
  for (const char* link : {"[vnc://h]",
                           "[vnc://h,vnc://i]",
                           "vnc://h,vnc://i",
                           "{}",
                           "%%",
                           "vnc://h/%%",
                           "'vnc://h'",
                           "\"vnc://h\"",
                           "/help",
                           "/list",
                           "@file",
                           "a=b",
                           " vnc://h ",
                           "[]",
                           "[",
                           "$HOME",
                           "~",
                           "*",
                           "#",
                           "0",
                           "\xFF",
                           "\t",
                           "\\n",
                           "vnc",
                           "plain"}) {
    const Json told = machine.dry({"--", link});
    EXPECT_EQ(false, told["launch"]) << link;
    const std::string expected = link == std::string("\xFF") ? "\uFFFD" : link;
    EXPECT_EQ(expected, told["link"]) << told;
  }
  EXPECT_EQ((Strings{"plain", "::1"}), machine.launch({"vnc://[::1]"}));
  EXPECT_EQ((Strings{"plain", "h"}), machine.launch({"vnc://h?a=%25%25&b=1,2"}));
}

TEST(CommandLine, TakesValuesAsTheyAre) {
  const Machine machine;
  machine.plain();
  for (const char* name : {"[a,b]", "a,b", "%%", "{x}", "'q'", "a b", "--quiet", "="}) {
    EXPECT_EQ((Strings{"plain", "h"}), machine.launch({"--log=" + std::string(name), "vnc://h"}));
    EXPECT_TRUE(machine.has("work/" + std::string(name))) << name;
    const Outcome outcome = machine.run({"--viewer=" + std::string(name), "vnc://h"});
    EXPECT_EQ(4, outcome.status);
    EXPECT_TRUE(contains(outcome.err, '"' + std::string(name) + '"')) << outcome.err;
  }
}

TEST(CommandLine, TakesAnEmptyValueForAValue) {
  const Machine machine;
  machine.plain();
  EXPECT_EQ((Strings{"plain", "h"}), machine.launch({"--log=", "vnc://h"}));
  EXPECT_EQ((Strings{"plain", "h"}), machine.launch({"--log", "", "vnc://h"}));
  const Outcome outcome = machine.run({"--viewer=", "vnc://h"});
  EXPECT_EQ(4, outcome.status);
  EXPECT_TRUE(contains(outcome.err, "The chosen viewer \"\" is not known.")) << outcome.err;
}

TEST(CommandLine, TakesAnEmptyLinkForALink) {
  const Machine machine;
  machine.plain();
  for (const Strings& arguments : {Strings{""}, Strings{"--", ""}, Strings{"", "--viewer=plain"}}) {
    const Outcome outcome = machine.run(arguments);
    EXPECT_EQ(2, outcome.status);
    EXPECT_TRUE(outcome.err.ends_with(" (syntax)\n")) << outcome.err;
  }
  EXPECT_EQ(0, machine.dry({""})["refusal"]["position"]);
}

TEST(CommandLine, ThatIsWrongShowsNoPassword) {
  const Machine machine;
  machine.plain();
  const std::string link = "vnc://u:secret@h?password=secret";
  const std::vector<Strings> wrong{{link, link},
                                   {"--nothing", link},
                                   {"--nothing=" + link},
                                   {"-" + link},
                                   {"--" + link},
                                   {"--list", link},
                                   {"--list=" + link},
                                   {"--format=" + link, link},
                                   {"--format", link},
                                   {"--quiet=" + link},
                                   {"--viewer=" + link, link},
                                   {"--use", link},
                                   {"--use", "plain", link},
                                   {"--trust", link},
                                   {"--distrust", link}};
  for (const Strings& arguments : wrong) {
    const Outcome outcome = machine.run(arguments);
    EXPECT_NE(0, outcome.status);
    EXPECT_NE(42, outcome.status);
    EXPECT_NE("", outcome.err);
    EXPECT_FALSE(contains(outcome.err, "secret"))
        << testing::PrintToString(arguments) << outcome.err;
    EXPECT_EQ("", outcome.out);
  }
}

TEST(CommandLine, ShowsLittleOfALongLink) {
  const Machine machine;
  machine.plain();
  const Outcome outcome = machine.run({"vnc://" + std::string(100000, 'h')});
  EXPECT_EQ(2, outcome.status);
  EXPECT_TRUE(outcome.err.ends_with(" (syntax)\n"));
  EXPECT_GT(1000U, outcome.err.size());
}

TEST(CommandLine, HasTextAndJson) {
  const Machine machine;
  machine.plain();
  const Outcome text = machine.run({"--dry-run", "vnc://h"});
  EXPECT_EQ(text.out, machine.run({"--dry-run", "--format=text", "vnc://h"}).out);
  EXPECT_LT(1U, countOf(text.out, "\n"));
  const Outcome json = machine.run({"--dry-run", "--format", "json", "vnc://h"});
  EXPECT_EQ(
      R"({"link":"vnc://h","scheme":"vnc","user":null,"host":"h","port":null,"through":null,"trusted":false,)"
      R"("parameters":[],"dropped":[],"viewer":{"name":"plain","title":"Plain","file":")" +
          machine.path("bin/plain") +
          R"("},"arguments":["plain","h"],"environment":{},"unset":[],"launch":true,)"
          R"("refusal":null})"
          "\n",
      json.out);
}

TEST(CommandLine, GivesNullForWhatIsNotKnownYet) {
  const Machine machine;
  machine.plain();
  const Json told = machine.dry({"vnc//h"});
  Strings members;
  for (const auto& [name, value] : told.items()) {
    members.push_back(name);
  }
  EXPECT_EQ(
      (Strings{"link", "scheme", "user", "host", "port", "through", "trusted", "parameters",
               "dropped", "viewer", "arguments", "environment", "unset", "launch", "refusal"}),
      members);
  for (const char* name : {"scheme", "user", "host", "port", "through", "trusted", "parameters",
                           "dropped", "viewer", "arguments", "environment", "unset"}) {
    EXPECT_TRUE(told[name].is_null()) << name << " " << told;
  }
  EXPECT_EQ(false, told["launch"]);
}

TEST(CommandLine, HasHelpWithEveryOption) {
  const Machine machine;
  const Outcome help = machine.run({"--help"});
  EXPECT_EQ(0, help.status);
  EXPECT_EQ("", help.err);
  for (const char* option :
       {"--viewer", "--dry-run", "--format", "--log", "--quiet", "--list", "--check", "--use",
        "--forget", "--for", "--trust", "--distrust", "--help", "--version", "LINK"}) {
    EXPECT_TRUE(contains(help.out, option)) << option;
  }
}

TEST(CommandLine, HasAVersion) {
  const Machine machine;
  const Outcome version = machine.run({"--version"});
  EXPECT_EQ(0, version.status);
  EXPECT_EQ("", version.err);
  EXPECT_EQ("hopopen " PROJECT_VERSION "\n", version.out);
}

TEST(CommandLine, StartsNothingForAWish) {
  const Machine machine;
  machine.plain();
  machine.registered();
  for (const Strings& arguments :
       {Strings{"--list"}, Strings{"--check"}, Strings{"--use", "plain"},
        Strings{"--use", "plain", "--for", "h"}, Strings{"--forget", "vnc", "--for", "h"},
        Strings{"--forget", "vnc"}, Strings{"--trust", "h"}, Strings{"--distrust", "h"},
        Strings{"--dry-run", "vnc://h"}, Strings{"--help"}, Strings{"--version"}}) {
    const Outcome outcome = machine.run(arguments);
    EXPECT_EQ(0, outcome.status) << arguments[0] << outcome.err;
    EXPECT_FALSE(outcome.viewer) << arguments[0];
  }
}

}  // namespace

}  // namespace hopopen_commandline_test
