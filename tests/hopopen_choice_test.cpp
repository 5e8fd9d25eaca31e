// SPDX-License-Identifier: MIT
// Which viewer is chosen, who chooses it, and the message when there is none.

#include <sched.h>
#include <sys/mount.h>

#include "hopopen_runner.h"

namespace hopopen_choice_test {

namespace {

using door::Json;
using door::Machine;
using door::Outcome;
using door::Strings;
using door::Variables;

// A definition for vnc whose program has its name.
std::string viewer(const std::string& name, const std::string& further = "") {
  return "name = \"The " + name + "\"\nschemes = [\"vnc\"]\nprograms = [\"" + name +
         "\"]\narguments = [\"{host}\"]\n" + further;
}

void install(const Machine& machine, const std::string& name, const std::string& further = "") {
  machine.define(name, viewer(name, further));
  machine.program(name);
}

std::string refusal(const Machine& machine, const Strings& arguments, int status) {
  const Outcome outcome = machine.run(arguments);
  EXPECT_EQ(status, outcome.status) << outcome.err;
  EXPECT_FALSE(outcome.viewer);
  EXPECT_EQ(1U, countOf(outcome.err, "\n")) << outcome.err;
  return outcome.err;
}

void expectParts(const std::string& text, const Strings& parts) {
  for (const std::string& part : parts) {
    EXPECT_TRUE(contains(text, part)) << part << " is not in\n" << text;
  }
}

TEST(Choice, IsTheLowestRank) {
  const Machine machine;
  install(machine, "a", "rank = 30\n");
  install(machine, "b", "rank = 20\n");
  install(machine, "c", "rank = 40\n");
  EXPECT_EQ("b", machine.comesOf({"vnc://h"}));
  install(machine, "d", "rank = -1\n");
  EXPECT_EQ("d", machine.comesOf({"vnc://h"}));
}

TEST(Choice, TakesFiftyForARankThatIsNotThere) {
  const Machine machine;
  install(machine, "b");
  install(machine, "c", "rank = 51\n");
  EXPECT_EQ("b", machine.comesOf({"vnc://h"}));
  install(machine, "a", "rank = 50\n");
  EXPECT_EQ("a", machine.comesOf({"vnc://h"}));
  install(machine, "z", "rank = 49\n");
  EXPECT_EQ("z", machine.comesOf({"vnc://h"}));
}

TEST(Choice, OfEqualRanksIsTheFirstName) {
  const Machine machine;
  install(machine, "b", "rank = 7\n");
  install(machine, "c", "rank = 7\n");
  EXPECT_EQ("b", machine.comesOf({"vnc://h"}));
  machine.define("a", viewer("b", "rank = 7\n"), "data");
  EXPECT_EQ("a", machine.comesOf({"vnc://h"})) << "the folder does not matter";
}

TEST(Choice, IsOfTheInstalledOnesOnly) {
  const Machine machine;
  machine.define("a", viewer("a", "rank = 1\n"));
  install(machine, "b", "rank = 2\n");
  EXPECT_EQ("b", machine.comesOf({"vnc://h"}));
}

TEST(Choice, IsOfThoseWithTheSchemeOnly) {
  const Machine machine;
  install(machine, "a", "rank = 2\n");
  machine.program("b");
  machine.define("b",
                 "name = \"b\"\nschemes = [\"ssh\", \"telnet\"]\nprograms = [\"b\"]\n"
                 "arguments = []\nrank = 1\n");
  EXPECT_EQ("a", machine.comesOf({"vnc://h"}));
  EXPECT_EQ("b", machine.comesOf({"telnet://h"}));
  EXPECT_EQ("a", machine.comesOf({"VNC://h"}));
}

TEST(Choice, LeavesUnguardedViewersToTrustedHosts) {
  const Machine machine;
  install(machine, "a", "rank = 1\nunguarded = [\"clipboard\"]\n");
  install(machine, "b", "rank = 2\n");
  install(machine, "c", "rank = 3\nunguarded = []\n");
  machine.set("[trust]\nhosts = [\"good\"]\n");
  EXPECT_EQ("b", machine.comesOf({"vnc://h"}));
  EXPECT_EQ("a", machine.comesOf({"vnc://good"}));
}

TEST(Choice, TakesAnEmptyListOfUnguardedForNone) {
  const Machine machine;
  install(machine, "a", "unguarded = []\n");
  EXPECT_EQ("a", machine.comesOf({"vnc://h"}));
}

TEST(Choice, IsTheOptionsThenTheUsersThenTheAdministrators) {
  const Machine machine;
  install(machine, "a", "rank = 1\n");
  install(machine, "b", "rank = 2\n");
  install(machine, "c", "rank = 3\n");
  install(machine, "d", "rank = 4\n");
  const Variables variables{
      {"XDG_CONFIG_DIRS", machine.path("first") + ":" + machine.path("second")}};
  EXPECT_EQ("a", machine.comesOf({"vnc://h"}, variables));
  machine.set("[use]\nvnc = \"b\"\n", "second");
  EXPECT_EQ("b", machine.comesOf({"vnc://h"}, variables));
  machine.set("[use]\nssh = \"x\"\n", "first");
  EXPECT_EQ("b", machine.comesOf({"vnc://h"}, variables)) << "the first says nothing about vnc";
  machine.set("[use]\nvnc = \"c\"\n", "first");
  EXPECT_EQ("c", machine.comesOf({"vnc://h"}, variables));
  machine.set("[use]\nvnc = \"d\"\n");
  EXPECT_EQ("d", machine.comesOf({"vnc://h"}, variables));
  EXPECT_EQ("b", machine.comesOf({"--viewer=b", "vnc://h"}, variables));
  EXPECT_EQ("b", machine.comesOf({"vnc://h", "--viewer", "b"}, variables));
  EXPECT_EQ("d", machine.comesOf({"VNC://h"}, variables));
}

TEST(Choice, IsExplainedByADryRun) {
  const Machine machine;
  install(machine, "a", "rank = 1\n");
  install(machine, "b", "rank = 2\n");
  const auto viewer = [&](const Strings& options) {
    Strings arguments = options;
    arguments.insert(arguments.end(), {"--dry-run", "vnc://h"});
    const std::string text = machine.run(arguments).out;
    const std::size_t start = text.find("\nviewer ") + 1;
    return text.substr(start, text.find('\n', start) - start);
  };
  EXPECT_TRUE(viewer({}).ends_with(" (a), the first by rank")) << viewer({});
  machine.set("[use]\nvnc = \"b\"\n", "etc");
  EXPECT_TRUE(viewer({}).ends_with(" (b), chosen by the administrator")) << viewer({});
  machine.set("[use]\nvnc = \"a\"\n");
  EXPECT_TRUE(viewer({}).ends_with(" (a), chosen in your settings")) << viewer({});
  EXPECT_TRUE(viewer({"--viewer=b"}).ends_with(" (b), chosen by --viewer"));
}

TEST(Choice, OfAUserIsFoundBelowHomeByDefault) {
  const Machine machine;
  install(machine, "a");
  install(machine, "b");
  machine.set("[use]\nvnc = \"b\"\n", "home/.config");
  machine.set("[use]\nvnc = \"b\"\n", "work/.config");
  EXPECT_EQ("a", machine.comesOf({"vnc://h"}));
  EXPECT_EQ("b", machine.comesOf({"vnc://h"}, {{"XDG_CONFIG_HOME", ""}}));
  EXPECT_EQ("b", machine.comesOf({"vnc://h"}, {{"XDG_CONFIG_HOME", std::nullopt}}));
  EXPECT_EQ("a", machine.comesOf({"vnc://h"},
                                 {{"XDG_CONFIG_HOME", std::nullopt}, {"HOME", std::nullopt}}));
  EXPECT_EQ("a", machine.comesOf({"vnc://h"}, {{"XDG_CONFIG_DIRS", ".config:"}}));
}

TEST(Choice, OfTheAdministratorIsInEtcXdgByDefault) {
  const Machine machine;
  install(machine, "a");
  install(machine, "b");
  machine.set("[use]\nvnc = \"b\"\n", "system/xdg");
  const auto mountFolder = [&] {
    if (unshare(CLONE_NEWNS) != 0 ||
        mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount(machine.path("system").c_str(), "/etc", nullptr, MS_BIND, nullptr) != 0) {
      _exit(77);
    }
  };
  for (const std::optional<std::string>& unset : {std::optional<std::string>(), {""}}) {
    const Outcome outcome = machine.call({.arguments = {"--dry-run", "--format=json", "vnc://h"},
                                          .variables = {{"XDG_CONFIG_DIRS", unset}},
                                          .prepare = mountFolder});
    if (outcome.status == 77) {
      GTEST_SKIP() << "nothing can be mounted here";
    }
    EXPECT_EQ("b", Json::parse(outcome.out)["viewer"]["name"]) << outcome.out;
  }
}

TEST(Choice, ByNameTakesUnguardedViewersForStrangers) {
  const Machine machine;
  install(machine, "a", "unguarded = [\"clipboard\"]\nstranger = [\"-s\"]\n");
  EXPECT_EQ("refused: viewer", machine.comesOf({"vnc://h"}));
  EXPECT_EQ("a", machine.comesOf({"--viewer=a", "vnc://h"}));
  machine.set("[use]\nvnc = \"a\"\n");
  EXPECT_EQ("a", machine.comesOf({"vnc://h"}));
  EXPECT_EQ((Strings{"a", "-s", "h"}), machine.launch({"vnc://h"}));
}

TEST(Choice, OfAViewerWithoutDefinitionIsRefused) {
  const Machine machine;
  install(machine, "a");
  const std::string message = refusal(machine, {"--viewer=other", "vnc://h"}, 4);
  EXPECT_TRUE(message.starts_with("hopopen: ")) << message;
  EXPECT_TRUE(message.ends_with(" (choice)\n")) << message;
  expectParts(message, {"other"});
  for (const char* name : {"A", "a.toml", "../a", "", " a"}) {
    expectParts(refusal(machine, {"--viewer", name, "vnc://h"}, 4), {"(choice)\n"});
  }
  machine.define("faulty", "colour = 1\n");
  machine.define("hidden", "");
  EXPECT_EQ("refused: choice", machine.comesOf({"--viewer=faulty", "vnc://h"}));
  EXPECT_EQ("refused: choice", machine.comesOf({"--viewer=hidden", "vnc://h"}));
}

TEST(Choice, OfAViewerWithoutTheSchemeIsRefused) {
  const Machine machine;
  install(machine, "a");
  machine.program("b");
  machine.define("b",
                 "name = \"The b\"\nschemes = [\"ssh\"]\nprograms = [\"b\"]\n"
                 "arguments = []\n");
  expectParts(refusal(machine, {"--viewer=b", "vnc://h"}, 4), {"b", "vnc", " (choice)\n"});
  machine.set("[use]\nvnc = \"b\"\n");
  expectParts(refusal(machine, {"vnc://h"}, 4), {"b", "vnc", " (choice)\n"});
}

TEST(Choice, OfAViewerThatIsNotInstalledIsRefusedAlthoughOthersAre) {
  const Machine machine;
  install(machine, "a");
  machine.define("b", viewer("b", "packages = [\"the-package\"]\n"));
  expectParts(refusal(machine, {"--viewer=b", "vnc://h"}, 4), {"b", "the-package", " (choice)\n"});
  machine.set("[use]\nvnc = \"b\"\n");
  expectParts(refusal(machine, {"vnc://h"}, 4), {"b", " (choice)\n"});
  machine.set("");
  machine.set("[use]\nvnc = \"b\"\n", "etc");
  expectParts(refusal(machine, {"vnc://h"}, 4), {"b", " (choice)\n"});
}

TEST(Choice, ForAnotherSchemeDoesNotMatter) {
  const Machine machine;
  install(machine, "a");
  machine.set("[use]\nssh = \"nobody\"\n");
  EXPECT_EQ("a", machine.comesOf({"vnc://h"}));
}

TEST(NoViewer, IsRefusedWithUpToThreePackages) {
  const Machine machine;
  machine.define("a", viewer("a", "rank = 4\npackages = [\"pack-four\"]\n"));
  machine.define("b", viewer("b", "rank = 1\npackages = [\"pack-one\"]\n"));
  machine.define("c", viewer("c", "rank = 3\npackages = [\"pack-three\"]\n"));
  machine.define("d", viewer("d", "rank = 2\npackages = [\"pack-two\"]\n"));
  machine.define("e",
                 "name = \"e\"\nschemes = [\"ssh\"]\nprograms = [\"e\"]\narguments = []\n"
                 "rank = 0\npackages = [\"pack-ssh\"]\n");
  const std::string message = refusal(machine, {"vnc://h"}, 3);
  EXPECT_TRUE(message.starts_with("hopopen: ")) << message;
  expectParts(message, {"pack-one", "pack-two", "pack-three", " (viewer)\n"});
  EXPECT_FALSE(contains(message, "pack-four")) << message;
  EXPECT_FALSE(contains(message, "pack-ssh")) << message;
}

TEST(NoViewer, NamesAPackageOnce) {
  const Machine machine;
  machine.define("a", viewer("a", "rank = 1\npackages = [\"pack-one\"]\n"));
  machine.define("b", viewer("b", "rank = 2\npackages = [\"pack-one\", \"pack-two\"]\n"));
  const std::string message = refusal(machine, {"vnc://h"}, 3);
  EXPECT_EQ(1U, countOf(message, "pack-one")) << message;
  EXPECT_EQ(1U, countOf(message, "pack-two")) << message;
}

TEST(NoViewer, IsRefusedWithoutPackagesWhereNoneAreKnown) {
  const Machine machine;
  machine.define("a", viewer("a"));
  expectParts(refusal(machine, {"vnc://h"}, 3), {" (viewer)\n"});
}

TEST(NoViewer, SaysWhatTheInstalledOnesLetThroughAndHowToChooseThem) {
  const Machine machine;
  install(machine, "loose", "unguarded = [\"clipboard\", \"full screen\"]\n");
  const std::string message = refusal(machine, {"vnc://some.host:5901"}, 3);
  expectParts(message, {"clipboard", "full screen", "hopopen --use loose",
                        "hopopen --trust some.host", " (viewer)\n"});
}

TEST(NoViewer, NamesAnAddressAsItIsTrusted) {
  const Machine machine;
  install(machine, "loose", "unguarded = [\"clipboard\"]\n");
  expectParts(refusal(machine, {"vnc://[FE80::1%25eth0]"}, 3), {"[FE80::1%25eth0]"});
}

TEST(NoViewer, HasNoPlaceInTheLink) {
  const Machine machine;
  machine.define("a", viewer("a"));
  const Json told = machine.dry({"vnc://u@h:5901?Shared=1"});
  EXPECT_EQ(false, told["launch"]);
  EXPECT_EQ("viewer", told["refusal"]["code"]);
  EXPECT_TRUE(told["refusal"]["position"].is_null());
  EXPECT_TRUE(told["viewer"].is_null());
  EXPECT_TRUE(told["arguments"].is_null());
  EXPECT_EQ("h", told["host"]);
  EXPECT_EQ(5901, told["port"]);
  EXPECT_EQ("u", told["user"]);
  EXPECT_EQ(false, told["trusted"]);
}

// The chosen viewer cannot do what a link asks for: hopopen names others, but tries none.
TEST(Restriction, NamesTheInstalledViewersThatCouldKeepIt) {
  const Machine machine;
  install(machine, "a", "rank = 1\n");
  install(machine, "b", "rank = 2\n[parameters.ViewOnly]\narguments = [\"-v\"]\n");
  machine.define("c", viewer("c", "[parameters.ViewOnly]\narguments = [\"-v\"]\n"));
  const std::string message = refusal(machine, {"vnc://h?ViewOnly=true"}, 2);
  expectParts(message, {"The b", " (restriction)\n"});
  EXPECT_FALSE(contains(message, "The c")) << "it is not installed: " << message;
  EXPECT_EQ("b", machine.comesOf({"--viewer=b", "vnc://h?ViewOnly=true"}));
}

}  // namespace

}  // namespace hopopen_choice_test
