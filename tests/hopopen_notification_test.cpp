// SPDX-License-Identifier: MIT
// The notification of a refusal: which program shows it, which text, and when there is none.
//
// The programs are scripts that keep their arguments and then do what a test wants.

#include "hopopen_runner.h"

namespace hopopen_notification_test {

namespace {

using door::Call;
using door::Machine;
using door::Outcome;
using door::Strings;
using door::Variables;

const Variables ON_A_DESKTOP{{"DISPLAY", ":99"}};

const Strings NOTIFIERS{"notify-send", "zenity", "kdialog", "xmessage"};

void notifier(const Machine& machine, const std::string& name, const std::string& then = "exit 0",
              const std::string& folder = "bin") {
  machine.script(name,
                 "for word in \"$@\"; do printf '%s\\0' \"$word\"; done > " +
                     machine.path("new." + name) + "\nmv " + machine.path("new." + name) + " " +
                     machine.path("shown." + name) + "\n" + then + "\n",
                 folder);
}

// The names of the programs that were started, and are not running any more.
Strings shownBy(const Machine& machine) {
  Machine::settle();
  Strings result;
  for (const std::string& name : NOTIFIERS) {
    if (machine.has("shown." + name)) {
      result.push_back(name);
    }
  }
  return result;
}

Strings argumentsOf(const Machine& machine, const std::string& name) {
  Machine::settle();
  return split(machine.read("shown." + name), '\0');
}

// The text of a refusal for people, without "hopopen: " and the code.
std::string messageOf(const Outcome& outcome) {
  return outcome.err.substr(9, outcome.err.rfind(" (") - 9);
}

TEST(Notification, IsByTheFirstProgramThatIsThere) {
  for (std::size_t first = 0; first < NOTIFIERS.size(); ++first) {
    const Machine machine;
    machine.plain();
    for (std::size_t index = first; index < NOTIFIERS.size(); ++index) {
      // The order of the folders is the other way around.
      notifier(machine, NOTIFIERS[index], "exit 0", "folder" + std::to_string(9 - index));
    }
    std::string path;
    for (std::size_t index = 0; index < NOTIFIERS.size(); ++index) {
      path += machine.path("folder" + std::to_string(6 + index)) + ":";
    }
    const Outcome outcome = machine.run({"vnc://h:0"}, {{"DISPLAY", ":99"}, {"PATH", path}});
    EXPECT_EQ(2, outcome.status);
    EXPECT_EQ((Strings{NOTIFIERS[first]}), shownBy(machine));
  }
}

TEST(Notification, HasItsTextAsOneArgument) {
  for (const std::string& name : NOTIFIERS) {
    const Machine machine;
    machine.plain();
    notifier(machine, name);
    const Outcome outcome = machine.run({"vnc://h:0"}, ON_A_DESKTOP);
    const std::string message = messageOf(outcome);
    int holding = 0;
    const Strings arguments = argumentsOf(machine, name);
    for (std::string argument : arguments) {
      std::replace(argument.begin(), argument.end(), '\n', ' ');
      holding += contains(argument, message) ? 1 : 0;
    }
    EXPECT_EQ(1, holding) << name << ": " << testing::PrintToString(arguments);
    EXPECT_EQ(1U, countOf(testing::PrintToString(arguments), "vnc://")) << name;
  }
}

TEST(Notification, HasNoMarkupOfALink) {
  for (const std::string& name : NOTIFIERS) {
    const Machine machine;
    machine.plain();
    notifier(machine, name);
    const Outcome outcome =
        machine.run({"--", "vnc://h/<b onclick='x'>&lt;&#60;</b>"}, ON_A_DESKTOP);
    EXPECT_TRUE(contains(outcome.err, "<b onclick='x'>&lt;&#60;</b>")) << outcome.err;
    std::string all;
    for (const std::string& argument : argumentsOf(machine, name)) {
      all += argument + "\n";
    }
    EXPECT_EQ(std::string::npos, all.find_first_of("<>&")) << name << ": " << all;
    EXPECT_EQ(2U, countOf(all, "x3C")) << name << ": " << all;
    EXPECT_EQ(2U, countOf(all, "x3E")) << name << ": " << all;
    EXPECT_EQ(2U, countOf(all, "x26")) << name << ": " << all;
  }
}

// Of these programs, notify-send and kdialog read backslashes themselves: two stand for one.
// (zenity does without --no-markup only.)
TEST(Notification, HasItsBackslashesAsEachProgramShowsThem) {
  const std::map<std::string, std::string> expected{{"notify-send", "\"vnc://\\\\x3C\""},
                                                    {"zenity", "\"vnc://\\x3C\""},
                                                    {"kdialog", "\"vnc://\\\\x3C\""},
                                                    {"xmessage", "\"vnc://\\x3C\""}};
  for (const auto& [name, shown] : expected) {
    const Machine machine;
    machine.plain();
    notifier(machine, name);
    machine.run({"--", "vnc://<"}, ON_A_DESKTOP);
    std::string all;
    for (const std::string& argument : argumentsOf(machine, name)) {
      all += argument + "\n";
    }
    EXPECT_TRUE(contains(all, shown)) << name << ": " << all;
  }
}

// Of these programs, the others break long lines well.
TEST(Notification, HasLinesOfAtMost72Bytes) {
  for (const char* name : {"zenity", "kdialog", "xmessage"}) {
    const Machine machine;
    machine.plain();
    notifier(machine, name);
    for (const std::string& link :
         {"vnc://" + std::string(113, 'x') + ":0", "vnc://" + std::string(30, '<'),
          "vnc://x" + std::string(30, '<'), "vnc://xx" + std::string(30, '<'),
          "vnc://xxx" + std::string(30, '<')}) {
      SCOPED_TRACE(name + (": " + link));
      const Outcome outcome = machine.run({"--", link}, ON_A_DESKTOP);
      const Strings arguments = argumentsOf(machine, name);
      const auto text = std::max_element(
          arguments.begin(), arguments.end(),
          [](const std::string& a, const std::string& b) { return a.size() < b.size(); });
      ASSERT_NE(arguments.end(), text);
      std::string whole;
      for (std::string line : split(*text, '\n')) {
        if (line.starts_with("--text=")) {
          line = line.substr(7);
        }
        // A backslash that the program reads itself is written twice after that.
        for (std::size_t at = 0; (at = line.find("\\\\", at)) != line.npos; ++at) {
          line.erase(at, 1);
        }
        EXPECT_GE(72U, line.size()) << line;
        const std::size_t escape = line.rfind('\\');
        EXPECT_TRUE(escape == line.npos || escape + 4 <= line.size()) << "cut: " << line;
        whole += line;
      }
      // Nothing is lost but the blanks at which lines end.
      std::string expected = outcome.err.substr(0, outcome.err.size() - 1);
      std::erase(expected, ' ');
      std::erase(whole, ' ');
      for (std::size_t at = 0; (at = expected.find('<', at)) != expected.npos;) {
        expected.replace(at, 1, "\\x3C");
      }
      EXPECT_EQ(expected, whole);
    }
  }
}

TEST(Notification, HasNoControlCharacterAndNoPassword) {
  for (const std::string& name : NOTIFIERS) {
    const Machine machine;
    machine.plain();
    notifier(machine, name);
    machine.run({"--", "vnc://u:secret@h/\x1B[1m\n\r\xC3\xA4\\n"}, ON_A_DESKTOP);
    const Strings arguments = argumentsOf(machine, name);
    EXPECT_FALSE(arguments.empty()) << name;
    for (const std::string& argument : arguments) {
      EXPECT_TRUE(door::isPlain(argument)) << name << ": " << argument;
      EXPECT_FALSE(contains(argument, "secret")) << name << ": " << argument;
      EXPECT_FALSE(contains(argument, "\\n")) << name << ": " << argument;
    }
  }
}

TEST(Notification, HasNoOptionOfALink) {
  for (const std::string& name : NOTIFIERS) {
    const Machine machine;
    machine.plain();
    notifier(machine, name);
    const Strings usual = [&] {
      machine.run({"--", "host"}, ON_A_DESKTOP);
      return argumentsOf(machine, name);
    }();
    for (const char* link : {"--help", "-file=/etc/passwd", "--text=x", "\n--help"}) {
      machine.run({"--", link}, ON_A_DESKTOP);
      const Strings arguments = argumentsOf(machine, name);
      ASSERT_EQ(usual.size(), arguments.size()) << name;
      for (std::size_t index = 0; index < usual.size(); ++index) {
        // Arguments without the link stay the same, and those with it do not begin with it.
        EXPECT_EQ(usual[index].substr(0, 1), arguments[index].substr(0, 1)) << name;
        EXPECT_FALSE(arguments[index].starts_with(link)) << name;
      }
    }
  }
}

TEST(Notification, IsByTheNextProgramWhenOneFails) {
  struct Case {
    const char* what;
    const char* then;
  };
  for (const Case& row : {Case{"a status", "exit 1"},
                          {"another status", "exit 255"},
                          {"a signal", "kill -9 $$"},
                          {"a status after a second", "sleep 1; exit 1"}}) {
    SCOPED_TRACE(row.what);
    const Machine machine;
    machine.plain();
    notifier(machine, "notify-send", row.then);
    notifier(machine, "kdialog", "exit 0");
    notifier(machine, "xmessage", "exit 0");
    const Outcome outcome = machine.run({"vnc://h:0"}, ON_A_DESKTOP);
    EXPECT_EQ(2, outcome.status);
    EXPECT_EQ((Strings{"notify-send", "kdialog"}), shownBy(machine));
  }
}

TEST(Notification, IsByTheNextProgramWhenOneCannotBeExecuted) {
  const Machine machine;
  machine.plain();
  machine.write("bin/notify-send", "nothing that runs\n");
  std::filesystem::permissions(machine.path("bin/notify-send"), std::filesystem::perms::owner_all);
  machine.write("bin/zenity", "#!/bin/sh\nnot executable\n");
  notifier(machine, "xmessage");
  EXPECT_EQ(2, machine.run({"vnc://h:0"}, ON_A_DESKTOP).status);
  EXPECT_EQ((Strings{"xmessage"}), shownBy(machine));
}

TEST(Notification, MayFailWithoutAWord) {
  const Machine machine;
  machine.plain();
  for (const std::string& name : NOTIFIERS) {
    notifier(machine, name, "echo out; echo err >&2; exit 1");
  }
  const Outcome outcome = machine.run({"vnc://h:0"}, ON_A_DESKTOP);
  EXPECT_EQ(2, outcome.status);
  EXPECT_EQ(NOTIFIERS, shownBy(machine));
  EXPECT_EQ("", machine.read("out"));
  EXPECT_EQ(outcome.err, machine.read("err"));
}

TEST(Notification, ThatStaysIsNotWaitedFor) {
  const Machine machine;
  machine.plain();
  notifier(machine, "notify-send", "sleep 3; exit 1");
  notifier(machine, "zenity");
  const Outcome outcome = machine.run({"vnc://h:0"}, ON_A_DESKTOP);
  EXPECT_EQ(2, outcome.status);
  EXPECT_GT(1.5, outcome.seconds);
  EXPECT_EQ((Strings{"notify-send"}), shownBy(machine)) << "it failed after two seconds";
}

// A program that reads all output of hopopen must not wait until somebody closes a window.
TEST(Notification, ThatStaysHoldsNothingOfTheCaller) {
  const Machine machine;
  machine.plain();
  notifier(machine, "notify-send",
           "held=$(readlink /proc/$$/fd/1 /proc/$$/fd/2)\necho \"$held\" > " +
               machine.path("descriptors"));
  machine.run({"--log=log", "vnc://h:0"}, ON_A_DESKTOP);
  EXPECT_EQ((Strings{"notify-send"}), shownBy(machine));
  EXPECT_EQ("/dev/null\n/dev/null\n", machine.read("descriptors"));
}

TEST(Notification, IsShownForEachCode) {
  const Machine machine;
  machine.plain();
  machine.define("gone",
                 "name = \"Gone\"\nschemes = [\"gone\"]\nprograms = [\"gone\"]\narguments = []\n");
  machine.define("broken",
                 "name = \"B\"\nschemes = [\"broken\"]\nprograms = [\"broken\"]\narguments = []\n");
  machine.write("bin/broken", "nothing that runs\n");
  std::filesystem::permissions(machine.path("bin/broken"), std::filesystem::perms::owner_all);
  notifier(machine, "notify-send");
  const std::vector<std::pair<const char*, Strings>> calls{
      {"syntax", {""}},
      {"scheme", {"other://h"}},
      {"user", {"vnc://-u@h"}},
      {"host", {"vnc://"}},
      {"port", {"vnc://h:0"}},
      {"path", {"vnc://h/x"}},
      {"choice", {"--viewer=other", "vnc://h"}},
      {"viewer", {"gone://h"}},
      {"restriction", {"vnc://h?ViewOnly"}},
      {"start", {"broken://h"}}};
  for (const auto& [code, arguments] : calls) {
    std::filesystem::remove(machine.path("shown.notify-send"));
    const Outcome outcome = machine.run(arguments, ON_A_DESKTOP);
    EXPECT_TRUE(outcome.err.ends_with(" (" + std::string(code) + ")\n")) << outcome.err;
    EXPECT_EQ((Strings{"notify-send"}), shownBy(machine)) << code;
  }
  std::filesystem::remove(machine.path("shown.notify-send"));
  machine.set("[use\n");
  EXPECT_EQ(4, machine.run({"vnc://h"}, ON_A_DESKTOP).status);
  EXPECT_EQ((Strings{"notify-send"}), shownBy(machine));
}

TEST(Notification, NeedsADesktop) {
  struct Case {
    Variables variables;
    bool shown;
  };
  const std::vector<Case> cases{{{}, false},
                                {{{"DISPLAY", ""}}, false},
                                {{{"WAYLAND_DISPLAY", ""}}, false},
                                {{{"DISPLAY", ""}, {"WAYLAND_DISPLAY", ""}}, false},
                                {{{"DISPLAY", ":0"}}, true},
                                {{{"WAYLAND_DISPLAY", "wayland-0"}}, true},
                                {{{"DISPLAY", ""}, {"WAYLAND_DISPLAY", "wayland-0"}}, true},
                                {{{"DISPLAY", ":0"}, {"WAYLAND_DISPLAY", ""}}, true}};
  for (const Case& row : cases) {
    const Machine machine;
    machine.plain();
    notifier(machine, "notify-send");
    EXPECT_EQ(2, machine.run({"vnc://h:0"}, row.variables).status);
    EXPECT_EQ(row.shown ? Strings{"notify-send"} : Strings{}, shownBy(machine))
        << testing::PrintToString(row.variables);
  }
}

TEST(Notification, IsNotShownWhereSomebodyReadsStandardError) {
  const Machine machine;
  machine.plain();
  notifier(machine, "notify-send");
  const Outcome outcome =
      machine.call({.arguments = {"vnc://h:0"}, .variables = ON_A_DESKTOP, .terminal = true});
  EXPECT_EQ(2, outcome.status);
  EXPECT_TRUE(outcome.err.ends_with(" (port)\n")) << outcome.err;
  EXPECT_EQ(Strings{}, shownBy(machine));
}

TEST(Notification, IsNotShownWhenItIsQuietOrADryRun) {
  const Machine machine;
  machine.plain();
  notifier(machine, "notify-send");
  machine.run({"--quiet", "vnc://h:0"}, ON_A_DESKTOP);
  machine.run({"--dry-run", "vnc://h:0"}, ON_A_DESKTOP);
  machine.run({"--dry-run", "--format=json", "vnc://h:0"}, ON_A_DESKTOP);
  EXPECT_EQ(Strings{}, shownBy(machine));
}

TEST(Notification, IsNotShownForALaunch) {
  const Machine machine;
  machine.plain();
  notifier(machine, "notify-send");
  EXPECT_EQ(42, machine.run({"vnc://h?other=1"}, ON_A_DESKTOP).status);
  EXPECT_EQ(Strings{}, shownBy(machine));
}

TEST(Notification, IsByNoProgramOfAFolderThatIsEmptyOrRelative) {
  const Machine machine;
  machine.plain();
  notifier(machine, "notify-send", "exit 0", "work");
  notifier(machine, "zenity", "exit 0", "work/relative");
  Variables variables = ON_A_DESKTOP;
  variables["PATH"] = ":.:relative:" + machine.path("bin");
  EXPECT_EQ(2, machine.run({"vnc://h:0"}, variables).status);
  EXPECT_EQ(Strings{}, shownBy(machine));
}

}  // namespace

}  // namespace hopopen_notification_test
