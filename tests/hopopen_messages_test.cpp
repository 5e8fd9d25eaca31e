// SPDX-License-Identifier: MIT
// The message about a refused link: one plain line without the password.

#include "hopopen_runner.h"

namespace hopopen_messages_test {

namespace {

using door::Json;
using door::Machine;
using door::Outcome;
using door::Strings;
using door::Variables;

// A viewer for each scheme of the links below.
void installViewers(const Machine& machine) {
  machine.define("plain",
                 "name = \"Plain\"\nschemes = [\"vnc\", \"ssh\"]\nprograms = "
                 "[\"plain\"]\narguments = [\"{host}\"]\n");
  machine.program("plain");
}

struct Refused {
  const char* code;
  const char* link;
  int status;
};

const Refused refusals[] = {
    {"syntax", "", 2},
    {"syntax", "host", 2},
    {"syntax", "vnc://h x", 2},
    {"scheme", "other://h", 2},
    {"user", "vnc://-x@h", 2},
    {"user", "vnc://h?VncUsername=-x", 2},
    {"host", "vnc://", 2},
    {"host", "vnc://127.1", 2},
    {"port", "vnc://h:0", 2},
    {"path", "vnc://h/x", 2},
    {"restriction", "vnc://h?ViewOnly=true", 2},
};

TEST(Refusals, AreOneLineWithTheirCode) {
  const Machine machine;
  installViewers(machine);
  for (const Refused& row : refusals) {
    const Outcome outcome = machine.run({"--", row.link});
    EXPECT_EQ(row.status, outcome.status) << row.link;
    EXPECT_FALSE(outcome.viewer) << row.link;
    EXPECT_EQ("", outcome.out);
    EXPECT_TRUE(outcome.err.starts_with("hopopen: ")) << outcome.err;
    EXPECT_TRUE(outcome.err.ends_with(" (" + std::string(row.code) + ")\n")) << outcome.err;
    EXPECT_EQ(1U, countOf(outcome.err, "\n")) << outcome.err;
    EXPECT_TRUE(door::isPlain(outcome.err)) << outcome.err;
    EXPECT_TRUE(contains(outcome.err, '"' + std::string(row.link) + '"')) << outcome.err;
  }
}

TEST(Refusals, AreTheSameOnATerminal) {
  const Machine machine;
  installViewers(machine);
  for (const Refused& row : refusals) {
    const Outcome file = machine.run({"--", row.link});
    const Outcome terminal = machine.call({.arguments = {"--", row.link}, .terminal = true});
    EXPECT_EQ(file.err, terminal.err);
    EXPECT_EQ(row.status, terminal.status);
  }
}

TEST(Refusals, AreToldByADryRunOnStandardOutput) {
  const Machine machine;
  installViewers(machine);
  for (const Refused& row : refusals) {
    const std::string line = machine.run({"--", row.link}).err;
    const std::string message = line.substr(9, line.rfind(" (") - 9);
    const Outcome json = machine.run({"--dry-run", "--format=json", "--", row.link});
    EXPECT_EQ(row.status, json.status) << row.link;
    EXPECT_EQ("", json.err);
    const Json told = Json::parse(json.out);
    EXPECT_EQ(false, told["launch"]);
    EXPECT_EQ(row.code, told["refusal"]["code"]);
    EXPECT_EQ(message, told["refusal"]["message"]);
    EXPECT_EQ(3U, told["refusal"].size());
    const Outcome text = machine.run({"--dry-run", "--", row.link});
    EXPECT_EQ(row.status, text.status);
    EXPECT_EQ("", text.err);
    EXPECT_TRUE(contains(text.out, message)) << text.out;
    EXPECT_TRUE(contains(text.out, row.code)) << text.out;
  }
}

TEST(Refusals, AreNotSaidWhenItIsQuiet) {
  const Machine machine;
  installViewers(machine);
  for (const Refused& row : refusals) {
    const Outcome outcome = machine.run({"--quiet", "--", row.link});
    EXPECT_EQ(row.status, outcome.status);
    EXPECT_EQ("", outcome.err);
    EXPECT_EQ("", outcome.out);
  }
}

TEST(Refusals, AreToldByADryRunAlsoWhenItIsQuiet) {
  const Machine machine;
  installViewers(machine);
  EXPECT_EQ("port", machine.dry({"--quiet", "vnc://h:0"})["refusal"]["code"]);
}

TEST(ShownLinks, AreCutAfter120Bytes) {
  const Machine machine;
  installViewers(machine);
  const std::string shortest = "vnc://h/" + std::string(111, 'x');
  EXPECT_EQ(119U, shortest.size());
  const std::string full = shortest + "y";
  EXPECT_TRUE(contains(machine.run({shortest}).err, '"' + shortest + '"'));
  EXPECT_TRUE(contains(machine.run({full}).err, '"' + full + '"'));
  const std::string cut = machine.run({full + "z"}).err;
  EXPECT_TRUE(contains(cut, '"' + full + "...\"")) << cut;
  EXPECT_FALSE(contains(cut, "yz")) << cut;
}

TEST(ShownLinks, AreCutByBytesAndNotByWhatIsShownForThem) {
  const Machine machine;
  installViewers(machine);
  std::string escaped;
  for (int index = 0; index < 120; ++index) {
    escaped += "\\xC4";
  }
  const std::string whole = machine.run({std::string(120, '\xC4')}).err;
  EXPECT_TRUE(contains(whole, '"' + escaped + '"')) << whole;
  const std::string cut = machine.run({std::string(121, '\xC4')}).err;
  EXPECT_TRUE(contains(cut, '"' + escaped + "...\"")) << cut;
}

TEST(ShownLinks, HaveEachUnusualByteAsAnEscape) {
  const Machine machine;
  installViewers(machine);
#ifdef SLOW
  constexpr int STEP = 7;  // each takes long
#else
  constexpr int STEP = 1;
#endif
  for (int byte = 1; byte < 256; byte += STEP) {
    const char character = static_cast<char>(byte);
    std::string shown(1, character);
    if (byte < 0x20 || byte > 0x7E || character == '"' || character == '\\') {
      const char* const digits = "0123456789ABCDEF";
      shown = std::string("\\x") + digits[byte / 16] + digits[byte % 16];
    }
    const std::string line = machine.run({"--", std::string("0vnc://a") + character + "b"}).err;
    EXPECT_TRUE(contains(line, "\"0vnc://a" + shown + "b\"")) << byte << ": " << line;
    EXPECT_TRUE(door::isPlain(line) && countOf(line, "\n") == 1) << byte << ": " << line;
  }
}

TEST(ShownWords, AreWithoutControlCharacters) {
  const Machine machine;
  installViewers(machine);
  const std::string nasty = "a\x1B]0;x\x07\n\r\xC3\xA4\"";
  const std::vector<Strings> calls{{"--viewer", nasty, "vnc://h"},
                                   {"--use", nasty},
                                   {"--use", "plain", nasty},
                                   {"--trust", nasty},
                                   {"--distrust", nasty},
                                   {"--format", nasty, "vnc://h"},
                                   {"--" + nasty},
                                   {"-" + nasty},
                                   {nasty, nasty},
                                   {"--quiet=" + nasty, "vnc://h"},
                                   {"--log", machine.path(nasty + "/log"), nasty}};
  for (const Strings& arguments : calls) {
    const Outcome outcome = machine.run(arguments);
    EXPECT_NE(0, outcome.status);
    EXPECT_TRUE(door::isPlain(outcome.err)) << outcome.err;
    EXPECT_TRUE(door::isPlain(outcome.out)) << outcome.out;
    EXPECT_NE("", outcome.err);
  }
}

TEST(ShownWords, OfADryRunAreWithoutControlCharacters) {
  const Machine machine;
  machine.define("a",
                 "name = \"\u00c4\u202e\"\nschemes = [\"vnc\"]\nprograms = [\"a\"]\n"
                 "arguments = [\"\\u001b[1m\\n\", \"\u00e4\"]\n"
                 "[environment]\nA = \"\\u001b\\n\"\n"
                 "[parameters.ConnectionName]\nallow = \".*\"\narguments = [\"{value}\"]\n");
  machine.program("a", "bin\x1B\xC3");
  const Variables variables{{"PATH", machine.path("bin\x1B\xC3")}};
  const std::string link = "vnc://u@h?ConnectionName=%C3%A4%E2%80%AE%C3&other%2D=%9B1m";
  const Outcome text = machine.run({"--dry-run", link}, variables);
  EXPECT_EQ(0, text.status) << text.out;
  EXPECT_TRUE(door::isPlain(text.out)) << text.out;
  const Json told = machine.dry({link}, variables);
  EXPECT_EQ("\u00c4\u202e", told["viewer"]["title"]);
  EXPECT_EQ(machine.path("bin\x1B\xEF\xBF\xBD/a"), told["viewer"]["file"]);
  EXPECT_EQ("\u00e4\u202e\uFFFD", told["parameters"][0]["value"]);
  EXPECT_EQ("\uFFFD1m", told["parameters"][1]["value"]);
  EXPECT_EQ((Strings{"a", "\u00e4\u202e\uFFFD", "\x1B[1m\n", "\u00e4"}),
            told["arguments"].get<Strings>());
}

TEST(ShownWords, OfAFaultyDefinitionAreWithoutControlCharacters) {
  const Machine machine;
  installViewers(machine);
  for (const char* text : {"name = \x1B[1m", "\"\\u001b[2J\" = 1", "[\"\\u009b\u0085\"]",
                           "a\x07 = 1", "name = \"\xFF\"", "name = \"a\"\n\"name\" = \"\\u001b\"",
                           "# \x1B[1m\n", "\x1B", "name = '''\x1B'''"}) {
    machine.define("faulty", text);
    const Outcome launch = machine.run({"vnc://h"});
    EXPECT_EQ(42, launch.status);
    EXPECT_TRUE(door::isPlain(launch.err)) << text << launch.err;
    EXPECT_EQ(1U, countOf(launch.err, "\n")) << text << launch.err;
    EXPECT_TRUE(door::isPlain(machine.run({"--check"}).out)) << text;
  }
}

struct Masked {
  const char* link;
  const char* shown;
};

const Masked masks[] = {
    {"vnc://u:secret@h/x", "vnc://u:***@h/x"},
    {"vnc://u:p@h/x", "vnc://u:***@h/x"},
    {"vnc://:secret@h/x", "vnc://:***@h/x"},
    {"vnc://u:secret@h:0", "vnc://u:***@h:0"},
    {"VNC://u:secret@h/x", "VNC://u:***@h/x"},
    {"vnc://u:s:e@secret@h/x", "vnc://u:***@h/x"},
    {"vnc://a:secret@b:secret@h/x", "vnc://a:***@h/x"},
    {"vnc://u:secret@", "vnc://u:***@"},
    {"vnc://u:secret@h?ViewOnly=1", "vnc://u:***@h?ViewOnly=1"},
    {"vnc://u:secret@h#a#b", "vnc://u:***@h#a#b"},
    {"vnc://u:secret@h x", "vnc://u:***@h x"},
    {"vnc://u:secret %@h", "vnc://u:***@h"},
    {"vnc://u:secret\n@h", "vnc://u:***@h"},
    {"vnc:u:secret@h", "vnc:u:***@h"},
    {"vnc:/u:secret@h", "vnc:/u:***@h"},
    {"0vnc://u:secret@h", "0vnc://u:***@h"},
    {"://u:secret@h", "://u:***@h"},
    {"other://u:secret@h", "other://u:***@h"},
    {"ssh://u:secret@h/x", "ssh://u:***@h/x"},
    {"ssh://u;a=b:secret@h/x", "ssh://u;a=b:***@h/x"},
    {"ssh://u;password=secret@h/x", "ssh://u;password=***@h/x"},
    {"ssh://u;SshPassword=secret,a=b@h/x", "ssh://u;SshPassword=***,a=b@h/x"},
    {"ssh://u;a=b,sshpassword=secret:secret@h/x", "ssh://u;a=b,sshpassword=***:***@h/x"},
    {"vnc://h/x?VncPassword=secret", "vnc://h/x?VncPassword=***"},
    {"vnc://h/x?a=b&vncpassword=secret&c=d", "vnc://h/x?a=b&vncpassword=***&c=d"},
    {"vnc://h/x?PASSWORD=secret#f", "vnc://h/x?PASSWORD=***#f"},
    {"vnc://h/x?%56nc%50assword=secret", "vnc://h/x?%56nc%50assword=***"},
    {"vnc://h/x?password=p&password=q", "vnc://h/x?password=***&password=***"},
    {"vnc://h/x?SshPassword=secret", "vnc://h/x?SshPassword=***"},
    {"vnc://h?password=secret&password=secret2", "vnc://h?password=***&password=***"},
    {"vnc://h?password=se=secret&&x y", "vnc://h?password=***&&x y"},
    {"vnc://h?password=secret?x y", "vnc://h?password=***"},
    {"other:?password=secret", "other:?password=***"},
    {"vnc://h:0?NotAPassword=open", "vnc://h:0?NotAPassword=open"},
    {"vnc://h:0?VncPasswords=open", "vnc://h:0?VncPasswords=open"},
    {"vnc://h:1:2/a@b", "vnc://h:1:2/a@b"},
};

TEST(Passwords, AreMaskedInTheLineAndTheLog) {
  const Machine machine;
  installViewers(machine);
  for (const Masked& row : masks) {
    std::filesystem::remove(machine.path("work/log"));
    const Outcome outcome = machine.run({"--log=log", "--", row.link});
    EXPECT_NE(42, outcome.status) << row.link;
    const std::string shown = '"' + std::string(row.shown) + '"';
    EXPECT_TRUE(contains(outcome.err, shown)) << row.link << "\n" << outcome.err;
    const std::string log = machine.read("work/log");
    EXPECT_TRUE(contains(log, ": URI = " + shown + "\n")) << row.link << "\n" << log;
  }
}

TEST(Passwords, AreMaskedInADryRun) {
  const Machine machine;
  installViewers(machine);
  for (const Masked& row : masks) {
    EXPECT_EQ(row.shown, machine.dry({"--", row.link})["link"]) << row.link;
    const Outcome text = machine.run({"--dry-run", "--", row.link});
    const std::string shown = '"' + std::string(row.shown) + '"';
    EXPECT_TRUE(contains(text.out, shown)) << row.link << " " << text.out;
    EXPECT_FALSE(contains(text.out, "...")) << "nothing is left out: " << text.out;
  }
}

TEST(Passwords, AreNowhereInWhatIsToldOfALinkThatWouldOpen) {
  const Machine machine;
  machine.define("a",
                 "name = \"A\"\nschemes = [\"vnc\"]\nprograms = [\"a\"]\n"
                 "arguments = [\"{link}\", \"{user}\"]\n[environment]\nP = \"{password}\"\n"
                 "Q = \"x{password}y\"\n");
  machine.program("a");
  for (const char* link : {"vnc://u:secret@h", "vnc://u:s%65cret@h", "vnc://u@h?VncPassword=secret",
                           "vnc://u:secret@h?vncpassword=secret&SshPassword=secret&password=secret",
                           "vnc://h?VncUsername=u&%56ncPassword=s%65cret"}) {
    for (const char* format : {"--format=json", "--format=text"}) {
      const Outcome outcome = machine.run({"--dry-run", format, "--log=log", link});
      EXPECT_EQ(0, outcome.status) << outcome.out;
      EXPECT_FALSE(contains(outcome.out, "ecret")) << outcome.out;
      EXPECT_TRUE(contains(outcome.out, "***")) << outcome.out;
    }
    EXPECT_EQ(42, machine.run({"--log=log", link}).status);
  }
  EXPECT_FALSE(contains(machine.read("work/log"), "ecret")) << machine.read("work/log");
}

TEST(Passwords, AreNotCutInTheMiddle) {
  const Machine machine;
  installViewers(machine);
  for (std::size_t length = 80; length < 130; ++length) {
    const std::string link = "vnc://" + std::string(length, 'u') + ":secretsecret@h/x";
    const Outcome outcome = machine.run({link});
    EXPECT_FALSE(contains(outcome.err, ":s")) << outcome.err;
    EXPECT_FALSE(contains(outcome.err, "sec")) << outcome.err;
  }
}

}  // namespace

}  // namespace hopopen_messages_test
