// SPDX-License-Identifier: MIT
// Which hosts are trusted, what that changes, and faults of the files that say so.

#include "hopopen_runner.h"

namespace hopopen_trust_test {

namespace {

using door::Json;
using door::Machine;
using door::Outcome;
using door::Strings;
using door::Variables;

const char* const TWO_FACED =
    "name = \"Two\"\n"
    "schemes = [\"vnc\"]\n"
    "programs = [\"two\"]\n"
    "arguments = [\"{bracketed}\"]\n"
    "stranger = [\"-s\", \"{host}\"]\n"
    "trusted = [\"-t\"]\n"
    "[parameters.Shared]\n"
    "arguments = [\"-p\"]\n";

struct Trust {
  const char* entry;  // of the settings
  const char* host;   // of the link
  bool trusted;
};

const Trust trusts[] = {
    {"build.example", "build.example", true},
    {"build.example", "BUILD.Example", true},
    {"build.example", "build.example.", true},
    {"build.example", "build%2Eexample", true},
    {"build.example", "a.build.example", false},
    {"build.example", "abuild.example", false},
    {"build.example", "example", false},
    {"build.example", "build.example.evil", false},
    {"Build.EXAMPLE", "build.example", true},
    {"build.example.", "build.example", true},
    {"host", "host", true},
    {"host", "hos", false},
    {"_host", "_host", true},
    {".lab.example", "a.lab.example", true},
    {".lab.example", "b.a.lab.example", true},
    {".lab.example", "A.LAB.EXAMPLE.", true},
    {".lab.example", "lab.example", false},
    {".lab.example", "lab.example.", false},
    {".lab.example", "alab.example", false},
    {".lab.example", "a.lab.example.evil", false},
    {".Lab.Example.", "a.lab.example", true},
    {".example", "a.b.c.example", true},
    {"1.2.3.4", "1.2.3.4", true},
    {"1.2.3.4", "1.2.3.5", false},
    {"1.2.3.4", "a.1.2.3.4x", false},
    {"[fe80::1]", "[fe80::1]", true},
    {"[fe80::1]", "[FE80::1]", true},
    {"[fe80::1]", "[fe80:0000::0001]", true},
    {"[fe80::1]", "[fe80:0:0:0:0:0:0:1]", true},
    {"[fe80::1]", "[fe80::2]", false},
    {"[fe80::1]", "[fe80::1%25eth0]", false},
    {"[FE80:0::1]", "[fe80::1]", true},
    {"[fe80::1%25eth0]", "[fe80::1%25eth0]", true},
    {"[fe80::1%25eth0]", "[fe80:0::1%25eth0]", true},
    {"[fe80::1%25eth0]", "[fe80::1%25eth1]", false},
    {"[fe80::1%25eth0]", "[fe80::1%25ETH0]", false},
    {"[fe80::1%25eth0]", "[fe80::1]", false},
    {"[::ffff:1.2.3.4]", "[::ffff:102:304]", true},
    {"[::ffff:1.2.3.4]", "1.2.3.4", false},
    {"1.2.3.4", "[::ffff:1.2.3.4]", false},
    {"[::1]", "localhost", false},
};

TEST(Trust, IsByNameDomainAndAddress) {
  const Machine machine;
  machine.define("two", TWO_FACED);
  machine.program("two");
  for (const Trust& row : trusts) {
    machine.set("[trust]\nhosts = [\"" + std::string(row.entry) + "\"]\n");
    const Json told = machine.dry({"vnc://" + std::string(row.host)});
    EXPECT_EQ(row.trusted, told["trusted"])
        << "trusted: " << row.entry << ", asked for: " << row.host << " " << told;
    EXPECT_EQ(row.trusted ? "-t" : "-s", told["arguments"][1]);
  }
}

TEST(Trust, ChangesOnlyTheFirstArguments) {
  const Machine machine;
  machine.define("two", TWO_FACED);
  machine.program("two");
  machine.set("[trust]\nhosts = [\"good\"]\n");
  EXPECT_EQ((Strings{"two", "-s", "bad", "-p", "bad"}), machine.launch({"vnc://bad?shared=1"}));
  EXPECT_EQ((Strings{"two", "-t", "-p", "good"}), machine.launch({"vnc://good?shared=1"}));
}

TEST(Trust, IsThatOfAllFilesTogether) {
  const Machine machine;
  machine.plain();
  machine.set("[trust]\nhosts = [\"one\"]\n");
  machine.set("[trust]\nhosts = [\"two\", \"two\"]\n", "first");
  machine.set("[trust]\nhosts = [\".three\"]\n", "second");
  const Variables variables{
      {"XDG_CONFIG_DIRS", machine.path("first") + ":" + machine.path("second")}};
  for (const char* host : {"one", "two", "a.three"}) {
    EXPECT_EQ(true, machine.dry({"vnc://" + std::string(host)}, variables)["trusted"]) << host;
  }
  EXPECT_EQ(false, machine.dry({"vnc://three"}, variables)["trusted"]);
}

TEST(Trust, IsOfNobodyWithoutSettings) {
  const Machine machine;
  machine.plain();
  for (const char* host : {"localhost", "127.0.0.1", "[::1]", "h.local"}) {
    EXPECT_EQ(false, machine.dry({"vnc://" + std::string(host)})["trusted"]) << host;
  }
}

TEST(Settings, MayHoldKeysThatNobodyKnows) {
  const Machine machine;
  machine.plain();
  machine.set(
      "colour = 1\n[use]\nvnc = \"plain\"\n[trust]\nother = 1\nhosts = [\"h\"]\n[[colours]]\n");
  EXPECT_EQ(true, machine.dry({"vnc://h"})["trusted"]);
}

TEST(Settings, MayBeOfAnyFormThatTomlHas) {
  const Machine machine;
  machine.plain();
  for (const char* text :
       {"use = {vnc = 'plain'}\ntrust = {hosts = ['h']}\n",
        "use.vnc = \"plain\"\ntrust.hosts = [\n  \"a\", # one\n  \"h\",\n]\n",
        "\xEF\xBB\xBF[use]\r\n\"vnc\" = \"plain\"\r\n[trust]\r\nhosts=[\"h\"]"}) {
    machine.set(text);
    EXPECT_EQ(true, machine.dry({"vnc://h"})["trusted"]) << text;
  }
}

TEST(Settings, OfNoBytesAndWithoutTablesSayNothing) {
  const Machine machine;
  machine.plain();
  for (const char* text : {"", "\n", "# nothing\n", "[use]\n[trust]\n", "[trust]\nhosts = []\n"}) {
    machine.set(text);
    EXPECT_EQ("plain", machine.comesOf({"vnc://h"})) << text;
  }
}

struct Fault {
  const char* what;
  const char* text;
  const char* place;
};

const Fault faultsOfSettings[] = {
    {"no TOML", "[use\n", "1:5"},
    {"no TOML: a key without a value", "[use]\nvnc =\n", "2:6"},
    {"use is no table", "use = 1\n", "1:7"},
    {"use is a list of tables", "[[use]]\n", "1:1"},
    {"a viewer that is no text", "[use]\nvnc = 1\n", "2:7"},
    {"a viewer that is a list", "[use]\nvnc = [\"a\"]\n", "2:7"},
    {"a scheme in upper case", "[use]\nVNC = \"a\"\n", "2:1"},
    {"a scheme with one capital", "[use]\nssh = \"a\"\nvNc = \"a\"\n", "3:1"},
    {"trust is no table", "trust = [\"h\"]\n", "1:9"},
    {"hosts is no list", "[trust]\nhosts = \"h\"\n", "2:9"},
    {"a host that is no text", "[trust]\nhosts = [\"h\", 1]\n", "2:15"},
    {"an empty host", "[trust]\nhosts = [\"\"]\n", "2:10"},
    {"a dot alone", "[trust]\nhosts = [\".\"]\n", "2:10"},
    {"two dots first", "[trust]\nhosts = [\"..a\"]\n", "2:10"},
    {"a blank in a host", "[trust]\nhosts = [\n  \"h\",\n  \"a b\"]\n", "4:3"},
    {"a host with a port", "[trust]\nhosts = [\"h:5900\"]\n", "2:10"},
    {"a host with a user", "[trust]\nhosts = [\"u@h\"]\n", "2:10"},
    {"a host with a star", "[trust]\nhosts = [\"*.example\"]\n", "2:10"},
    {"a link", "[trust]\nhosts = [\"vnc://h\"]\n", "2:10"},
    {"a short IPv4 address", "[trust]\nhosts = [\"127.1\"]\n", "2:10"},
    {"a part of an IPv4 address", "[trust]\nhosts = [\".0.0.1\"]\n", "2:10"},
    {"an IPv6 address without brackets", "[trust]\nhosts = [\"fe80::1\"]\n", "2:10"},
    {"a bad IPv6 address", "[trust]\nhosts = [\"[fe80::1::]\"]\n", "2:10"},
    {"a label that begins with a dash", "[trust]\nhosts = [\"-a\"]\n", "2:10"},
    {"a host that is no ASCII", "[trust]\nhosts = [\"\u00e4\"]\n", "2:10"},
};

TEST(Settings, WithAFaultRefuseEveryLaunch) {
  const Machine machine;
  machine.plain();
  for (const char* folder : {"config", "etc"}) {
    for (const Fault& fault : faultsOfSettings) {
      SCOPED_TRACE(std::string(fault.what) + " in " + folder);
      machine.set(fault.text, folder);
      const Outcome launch = machine.run({"vnc://h"});
      EXPECT_EQ(4, launch.status);
      EXPECT_FALSE(launch.viewer);
      const std::string file = machine.path(Machine::settings(folder));
      EXPECT_TRUE(contains(launch.err, file + ":" + fault.place + ": ")) << launch.err;
      EXPECT_TRUE(launch.err.starts_with("hopopen: ")) << launch.err;
      EXPECT_TRUE(launch.err.ends_with(" (settings)\n")) << launch.err;
      EXPECT_EQ(1U, countOf(launch.err, "\n")) << launch.err;
      EXPECT_TRUE(door::isPlain(launch.err)) << launch.err;
    }
    std::filesystem::remove(machine.path(Machine::settings(folder)));
  }
}

TEST(Settings, WithAFaultRefuseLaunchesThatDoNotNeedThem) {
  const Machine machine;
  machine.plain();
  machine.set("[use]\nssh = 1\n", "etc");
  EXPECT_EQ("refused: settings", machine.comesOf({"--viewer=plain", "vnc://h"}));
  machine.set("[use]\nvnc = \"plain\"\n");
  EXPECT_EQ("refused: settings", machine.comesOf({"vnc://h"}));
}

TEST(Settings, WithAFaultDoNotHideTheFaultsOfALink) {
  const Machine machine;
  machine.plain();
  machine.set("[use\n");
  EXPECT_EQ("refused: syntax", machine.comesOf({"vnc:/h"}));
  EXPECT_EQ("refused: host", machine.comesOf({"vnc://"}));
  EXPECT_EQ("refused: path", machine.comesOf({"vnc://h/x"}));
  EXPECT_EQ("refused: settings", machine.comesOf({"vnc://h?ViewOnly=1"}));
}

TEST(Settings, ThatCannotBeReadRefuseEveryLaunch) {
  const Machine machine;
  machine.plain();
  std::filesystem::create_directories(machine.path(Machine::settings()));
  const std::string start = machine.path(Machine::settings()) + ":1:1: ";
  EXPECT_TRUE(contains(machine.run({"vnc://h"}).err, start)) << machine.run({"vnc://h"}).err;
  EXPECT_EQ("refused: settings", machine.comesOf({"vnc://h"}));
  std::filesystem::remove(machine.path(Machine::settings()));
  EXPECT_EQ("plain", machine.comesOf({"vnc://h"}));
  ASSERT_EQ(0, mkfifo(machine.path(Machine::settings()).c_str(), 0600));
  EXPECT_EQ("refused: settings", machine.comesOf({"vnc://h"}));
}

TEST(Settings, ThatAreNotThereAreNone) {
  const Machine machine;
  machine.plain();
  EXPECT_EQ("plain", machine.comesOf({"vnc://h"}, {{"XDG_CONFIG_HOME", machine.path("gone")},
                                                   {"XDG_CONFIG_DIRS", machine.path("gone")}}));
  machine.write("file", "no folder\n");
  EXPECT_EQ("plain", machine.comesOf({"vnc://h"}, {{"XDG_CONFIG_HOME", machine.path("file")}}));
}

TEST(Settings, WithAFaultAreShownWithoutControlCharacters) {
  const Machine machine;
  machine.plain();
  machine.set("[trust]\nhosts = [\"\\u001b[31m\\n\"]\n[use]\n\"\\u001b\u00c4\" = \"a\"\n",
              "etc\x1B[1m\n");
  const Variables variables{{"XDG_CONFIG_DIRS", machine.path("etc\x1B[1m\n")}};
  const Outcome launch = machine.run({"vnc://h"}, variables);
  EXPECT_EQ(4, launch.status);
  EXPECT_TRUE(door::isPlain(launch.err)) << launch.err;
  EXPECT_EQ(1U, countOf(launch.err, "\n")) << launch.err;
  EXPECT_TRUE(contains(launch.err, "etc\\x1B[1m\\x0A/hoplaunch/hopopen.toml:2:10: ")) << launch.err;
  const Outcome check = machine.run({"--check"}, variables);
  EXPECT_TRUE(door::isPlain(check.out)) << check.out;
  EXPECT_EQ(2U, countOf(check.out, "etc\\x1B[1m\\x0A/hoplaunch/hopopen.toml:")) << check.out;
}

}  // namespace

}  // namespace hopopen_trust_test
