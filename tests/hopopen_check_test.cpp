// SPDX-License-Identifier: MIT
// What `hopopen --check` says of a machine on which a click does nothing.  Each test breaks one
// thing, and sees the lines that change: those of the thing, and those that follow from it.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <string>

#include "checked_machine.h"
#include "own_root.h"

namespace hopopen_check_test {

namespace {

using door::CheckedMachine;
using door::Json;
using door::Machine;
using door::Outcome;
using door::Strings;
using door::Variables;

class CheckOfClicks : public testing::Test {
 protected:
  void SetUp() override {
    if (machine.check().status == NO_ROOT_OF_ITS_OWN) {
      GTEST_SKIP() << "no process may have a root of its own";
    }
  }

  // An entry of another program that opens vnc links.
  void addOther(const std::string& folder = "share") const {
    machine.program("other");
    machine.write(folder + "/applications/other.desktop",
                  "[Desktop Entry]\nType=Application\nName=Other\nExec=other %u\n");
  }

  const CheckedMachine machine;
};

const char* const CHOOSE = "  Type \"xdg-mime default hopopen.desktop x-scheme-handler/vnc\".\n";
const char* const ENTRY_WITHOUT_A_PATH =
    "[Desktop Entry]\nType=Application\nName=Links\nExec=hopopen -- %u\nTryExec=hopopen\n"
    "MimeType=x-scheme-handler/vnc;\n";
const char* const REINSTALL =
    "  Install the package again: \"sudo apt-get install --reinstall hoplaunch\".\n";
const char* const NO_HANDLER =
    "fault handler vnc: mimeapps.list: no program opens vnc links; no list and no cache names one "
    "that is there\n";

TEST_F(CheckOfClicks, SaysOkInTheOrderOfAClickWhenAllIsWell) {
  const Outcome good = machine.check();
  EXPECT_EQ(0, good.status);
  EXPECT_EQ("", good.err);
  EXPECT_EQ(
      "ok handler vnc: @/share/applications/mimeinfo.cache: hopopen.desktop opens vnc links\n"
      "ok entry: @/share/applications/hopopen.desktop: is valid\n"
      "ok tryexec: @/bin/hopopen: is there\n"
      "ok cache: @/share/applications/mimeinfo.cache: names the schemes of the entry\n"
      "ok opener: @/bin/xdg-open: opens links for other programs\n"
      "ok policy chromium: no file: no policy forbids these links\n"
      "ok policy firefox: no file: no policy forbids these links\n"
      "ok profile: no file: no profile of a browser keeps these links\n"
      "ok sandbox: no folder: no browser is from a snap or a flatpak\n"
      "ok display: DISPLAY: is :7\n"
      "ok viewer vnc: @/bin/plain: Plain (plain) opens vnc links\n"
      "ok terminal: @/bin/x-terminal-emulator: shows viewers that need a terminal\n"
      "ok notifier: @/bin/notify-send: shows why a link was not opened\n"
      "ok semaphores: /proc/sys/kernel/sem: leaves enough sets for hoplaunch\n"
      "ok file: all files: could be read\n"
      "ok definition: 1 viewer: no definition has a fault\n"
      "ok settings: no file: no settings have a fault\n",
      good.out);
}

TEST_F(CheckOfClicks, IsAnObjectWithFaultsAndChecksInJson) {
  machine.define("faulty", "colour = 1\n" + std::string(door::PLAIN));
  const Outcome told = machine.check({"--format=json"});
  EXPECT_EQ(4, told.status);
  EXPECT_TRUE(door::isPlain(told.out)) << told.out;
  const Json all = Json::parse(told.out);
  EXPECT_EQ(2U, all.size());
  EXPECT_EQ(1U, all["faults"].size());
  EXPECT_EQ(17U, all["checks"].size());
  EXPECT_EQ(R"({"name":"handler vnc","state":"ok","place":"@/share/applications/mimeinfo.cache",)"
            R"("message":"hopopen.desktop opens vnc links","remedy":null})",
            all["checks"][0].dump(true));
  const Json last = all["checks"][15];
  EXPECT_EQ("definition", last["name"]);
  EXPECT_EQ("fault", last["state"]);
  EXPECT_EQ("@/share/hoplaunch/viewers/faulty.toml:1:1", last["place"]);
  EXPECT_EQ(all["faults"][0]["message"].get<std::string>(), last["message"].get<std::string>());
  EXPECT_EQ("Correct the file, or remove it.", last["remedy"]);
}

// --- handler ---------------------------------------------------------------

TEST_F(CheckOfClicks, FindsThatAnotherEntryComesFirstInACache) {
  addOther();
  machine.write("share/applications/mimeinfo.cache",
                "[MIME Cache]\nx-scheme-handler/vnc=other.desktop;hopopen.desktop;\n");
  EXPECT_EQ(std::string("fault handler vnc: @/share/applications/mimeinfo.cache: other.desktop "
                        "opens vnc links, not hopopen\n") +
                CHOOSE,
            machine.told());
  EXPECT_EQ(4, machine.check().status);
}

TEST_F(CheckOfClicks, FindsThatASystemsListNamesAnother) {
  addOther();
  machine.write("etc/mimeapps.list",
                "[Default Applications]\nx-scheme-handler/vnc=other.desktop\n");
  EXPECT_EQ(std::string("fault handler vnc: @/etc/mimeapps.list: other.desktop opens vnc links, "
                        "not hopopen\n") +
                CHOOSE,
            machine.told());
}

TEST_F(CheckOfClicks, FindsThatADesktopsListNamesAnother) {
  addOther();
  machine.write("etc/kde-mimeapps.list",
                "[Default Applications]\nx-scheme-handler/vnc=other.desktop;\n");
  EXPECT_EQ("", machine.told());
  EXPECT_EQ(std::string("fault handler vnc: @/etc/kde-mimeapps.list: other.desktop opens vnc "
                        "links, not hopopen\n") +
                CHOOSE,
            machine.told({{"XDG_CURRENT_DESKTOP", "X-Own:KDE"}}));
}

TEST_F(CheckOfClicks, WarnsThatTheUsersOwnListNamesAnother) {
  addOther();
  machine.write("config/mimeapps.list",
                "[Default Applications]\nx-scheme-handler/vnc=other.desktop\n");
  EXPECT_EQ(
      "warning handler vnc: @/config/mimeapps.list: other.desktop opens vnc links, not hopopen\n"
      "  If hopopen is to open them, type \"xdg-mime default hopopen.desktop "
      "x-scheme-handler/vnc\".\n",
      machine.told());
  EXPECT_EQ(0, machine.check().status);
}

TEST_F(CheckOfClicks, LetsTheUsersListComeBeforeTheSystems) {
  addOther();
  machine.write("etc/mimeapps.list",
                "[Default Applications]\nx-scheme-handler/vnc=other.desktop\n");
  machine.write("config/mimeapps.list",
                "[Default Applications]\nx-scheme-handler/vnc=gone.desktop;hopopen.desktop;\n");
  EXPECT_EQ("ok handler vnc: @/config/mimeapps.list: hopopen.desktop opens vnc links\n",
            machine.told());
}

TEST_F(CheckOfClicks, FindsThatNoProgramOpensASchemeWithADefinition) {
  machine.define("shell",
                 "name = \"Shell\"\nschemes = [\"ssh\"]\nprograms = [\"plain\"]\narguments = []\n");
  EXPECT_EQ(
      "fault handler ssh: mimeapps.list: no program opens ssh links; no list and no cache names "
      "one that is there\n"
      "  Type \"xdg-mime default hopopen.desktop x-scheme-handler/ssh\".\n"
      "ok viewer ssh: @/bin/plain: Shell (shell) opens ssh links\n"
      "ok definition: 2 viewers: no definition has a fault\n",
      machine.told());
}

TEST_F(CheckOfClicks, OverlooksACacheThatNamesAnEntryWhichAnEarlierFolderReplaces) {
  addOther();
  addOther("data");
  machine.write("share/applications/mimeinfo.cache",
                "[MIME Cache]\nx-scheme-handler/vnc=other.desktop;hopopen.desktop;\n");
  EXPECT_EQ("", machine.told());
}

TEST_F(CheckOfClicks, TakesAnEntryOfAnotherNameThatStartsHopopen) {
  machine.write("share/applications/hoplaunch-vnc.desktop",
                "[Desktop Entry]\nType=Application\nName=Links\nExec=" +
                    machine.path("bin/hopopen") + " -- %u\n");
  machine.write("config/mimeapps.list",
                "[Default Applications]\nx-scheme-handler/vnc=hoplaunch-vnc.desktop\n");
  EXPECT_EQ("ok handler vnc: @/config/mimeapps.list: hoplaunch-vnc.desktop opens vnc links\n",
            machine.told());
}

// --- entry -----------------------------------------------------------------

TEST_F(CheckOfClicks, FindsThatThereIsNoEntry) {
  std::filesystem::remove(machine.path("share/applications/hopopen.desktop"));
  EXPECT_EQ(std::string(NO_HANDLER) + CHOOSE +
                "fault entry: hopopen.desktop: is in no folder of desktop entries\n" + REINSTALL +
                "gone tryexec\ngone cache\n",
            machine.told());
}

TEST_F(CheckOfClicks, FindsThatTheEntryIsNotValid) {
  machine.write("share/applications/hopopen.desktop",
                "[Desktop Entry]\nType=Application\nName=Links\nExec=" +
                    machine.path("bin/hopopen") + " --\n");
  EXPECT_EQ(std::string(NO_HANDLER) + CHOOSE +
                "fault entry: @/share/applications/hopopen.desktop: is not valid: its Exec has no "
                "%u, so no link reaches the program\n" +
                REINSTALL + "gone tryexec\ngone cache\n",
            machine.told());
}

TEST_F(CheckOfClicks, FindsThatAnEntryOfTheUserHidesIt) {
  machine.write("data/applications/hopopen.desktop", "[Desktop Entry]\nHidden=true\n");
  EXPECT_EQ(std::string(NO_HANDLER) + CHOOSE +
                "fault entry: @/data/applications/hopopen.desktop: is hidden: it says Hidden=true\n"
                "  Remove @/data/applications/hopopen.desktop, so that the entry of the package "
                "counts.\n"
                "gone tryexec\ngone cache\n",
            machine.told());
}

// --- tryexec ---------------------------------------------------------------

TEST_F(CheckOfClicks, FindsThatTheProgramIsNotThere) {
  std::filesystem::remove(machine.path("bin/hopopen"));
  EXPECT_EQ(std::string(NO_HANDLER) + CHOOSE +
                "fault tryexec: @/bin/hopopen: is not there, so desktops overlook the entry\n" +
                REINSTALL,
            machine.told());
}

TEST_F(CheckOfClicks, FindsThatAnEntryOfTheUserNamesAProgramThatIsNotThere) {
  machine.write("data/applications/hopopen.desktop",
                "[Desktop Entry]\nType=Application\nName=Links\nExec=hopopen -- %u\n"
                "TryExec=/gone/hopopen\n");
  EXPECT_EQ(std::string(NO_HANDLER) + CHOOSE +
                "ok entry: @/data/applications/hopopen.desktop: is valid\n"
                "fault tryexec: /gone/hopopen: is not there, so desktops overlook the entry\n"
                "  Remove @/data/applications/hopopen.desktop, so that the entry of the package "
                "counts.\n"
                "ok cache: @/data/applications/mimeinfo.cache: names the schemes of the entry\n",
            machine.told());
}

TEST_F(CheckOfClicks, WarnsThatAnotherHopopenComesFirst) {
  machine.program("hopopen", "first");
  EXPECT_EQ(
      "warning tryexec: @/first/hopopen: comes first in PATH, but a click starts @/bin/hopopen\n"
      "  Remove the one that you do not want, or change PATH.\n",
      machine.told({{"PATH", machine.path("first") + ":" + machine.path("bin")}}));
}

TEST_F(CheckOfClicks, WarnsThatAnotherHopopenComesFirstThatTheEntryStartsAsWell) {
  machine.program("hopopen", "first");
  machine.write("share/applications/hopopen.desktop", ENTRY_WITHOUT_A_PATH);
  EXPECT_EQ(
      "warning tryexec: @/first/hopopen: comes before @/bin/hopopen in PATH\n"
      "  Remove the one that you do not want, or change PATH.\n",
      machine.told({{"PATH", machine.path("first") + ":" + machine.path("bin")}}));
}

TEST_F(CheckOfClicks, TakesALinkToTheSameHopopenForTheSame) {
  std::filesystem::create_directories(machine.path("first"));
  std::filesystem::create_symlink(machine.path("bin/hopopen"), machine.path("first/hopopen"));
  EXPECT_EQ("", machine.told({{"PATH", machine.path("first") + ":" + machine.path("bin")}}));
  machine.write("share/applications/hopopen.desktop", ENTRY_WITHOUT_A_PATH);
  EXPECT_EQ("ok tryexec: @/first/hopopen: is there\n",
            machine.told({{"PATH", machine.path("first") + ":" + machine.path("bin")}}));
}

// --- cache -----------------------------------------------------------------

TEST_F(CheckOfClicks, WarnsThatTheCacheDoesNotNameTheSchemes) {
  machine.write("share/applications/mimeinfo.cache", "[MIME Cache]\n");
  EXPECT_EQ(std::string(NO_HANDLER) + CHOOSE +
                "warning cache: @/share/applications/mimeinfo.cache: does not say that hopopen "
                "opens vnc links\n"
                "  Type \"sudo update-desktop-database @/share/applications\".\n",
            machine.told());
}

TEST_F(CheckOfClicks, WarnsThatThereIsNoCacheThoughAListNamesHopopen) {
  std::filesystem::remove(machine.path("share/applications/mimeinfo.cache"));
  machine.write("config/mimeapps.list",
                "[Default Applications]\nx-scheme-handler/vnc=hopopen.desktop\n");
  EXPECT_EQ(
      "ok handler vnc: @/config/mimeapps.list: hopopen.desktop opens vnc links\n"
      "warning cache: @/share/applications/mimeinfo.cache: does not say that hopopen opens vnc "
      "links\n"
      "  Type \"sudo update-desktop-database @/share/applications\".\n",
      machine.told());
}

// --- opener ----------------------------------------------------------------

TEST_F(CheckOfClicks, WarnsThatThereIsNoOpener) {
  std::filesystem::remove(machine.path("bin/xdg-open"));
  EXPECT_EQ(
      "warning opener: PATH: has neither xdg-open nor gio\n"
      "  Install the package xdg-utils: \"sudo apt-get install xdg-utils\".\n",
      machine.told());
  machine.program("gio");
  EXPECT_EQ("ok opener: @/bin/gio: opens links for other programs\n", machine.told());
}

// --- display, viewer, terminal, notifier, semaphores -------------------------

TEST_F(CheckOfClicks, WarnsThatThereIsNoDisplay) {
  EXPECT_EQ(
      "warning display: DISPLAY: is not set, and neither is WAYLAND_DISPLAY\n"
      "  Type the command in a terminal on the desktop.\n",
      machine.told({{"DISPLAY", ""}}));
  EXPECT_EQ("ok display: WAYLAND_DISPLAY: is wayland-0\n",
            machine.told({{"WAYLAND_DISPLAY", "wayland-0"}}));
}

TEST_F(CheckOfClicks, FindsThatTheChosenViewerIsNotKnown) {
  machine.set("[use]\nvnc = \"nothing\"\n");
  EXPECT_EQ(
      "fault viewer vnc: nothing: you chose this viewer, but it is not known\n"
      "  See \"hopopen --list\", and choose another with \"hopopen --use NAME vnc\".\n"
      "ok settings: @/config/hoplaunch/hopopen.toml: no settings have a fault\n",
      machine.told());
}

TEST_F(CheckOfClicks, FindsThatTheChosenViewerIsNotInstalled) {
  machine.define("far",
                 "name = \"Far\"\nschemes = [\"vnc\"]\nprograms = [\"far\"]\n"
                 "packages = [\"far-viewer\"]\narguments = []\n");
  machine.set("[use]\nvnc = \"far\"\n", "etc");
  EXPECT_EQ(
      "fault viewer vnc: @/share/hoplaunch/viewers/far.toml: the administrator chose Far (far), "
      "which is not installed\n"
      "  Install Far: \"sudo apt-get install far-viewer\", or choose another "
      "with \"hopopen --use NAME vnc\".\n"
      "ok definition: 2 viewers: no definition has a fault\n"
      "ok settings: @/etc/hoplaunch/hopopen.toml: no settings have a fault\n",
      machine.told());
}

TEST_F(CheckOfClicks, FindsThatTheChosenViewerDoesNotOpenTheScheme) {
  machine.registered({"vnc", "ssh"});
  machine.define("shell",
                 "name = \"Shell\"\nschemes = [\"ssh\"]\nprograms = [\"plain\"]\narguments = []\n");
  machine.set("[use]\nvnc = \"shell\"\n");
  EXPECT_TRUE(contains(
      machine.told(),
      "fault viewer vnc: @/share/hoplaunch/viewers/shell.toml: you chose Shell (shell), which does "
      "not open vnc links\n"
      "  See \"hopopen --list\", and choose another with \"hopopen --use NAME vnc\".\n"))
      << machine.told();
}

TEST_F(CheckOfClicks, WarnsThatNoViewerIsInstalled) {
  std::filesystem::remove(machine.path("bin/plain"));
  machine.define("plain", std::string(door::PLAIN) + "packages = [\"plain-viewer\", \"plugin\"]\n");
  EXPECT_EQ(
      "warning viewer vnc: PATH: no viewer for vnc links is installed\n"
      "  Install Plain: \"sudo apt-get install plain-viewer plugin\".\n",
      machine.told());
  EXPECT_EQ(0, machine.check().status);
}

TEST_F(CheckOfClicks, WarnsThatTheOnlyViewerIsForTrustedMachines) {
  machine.define("plain", std::string(door::PLAIN) + "unguarded = [\"clipboard\"]\n");
  EXPECT_EQ(
      "warning viewer vnc: @/bin/plain: Plain (plain) opens links to machines that you trust "
      "only: it lets through clipboard\n"
      "  Trust a machine that you know with \"hopopen --trust HOST\", or choose it "
      "all the same with \"hopopen --use plain vnc\".\n",
      machine.told());
}

TEST_F(CheckOfClicks, NamesTheViewerToInstallInsteadOfOneForTrustedMachines) {
  machine.define("plain", std::string(door::PLAIN) + "unguarded = [\"clipboard\"]\n");
  machine.define("safe",
                 "name = \"Safe\"\nrank = 90\nschemes = [\"vnc\"]\nprograms = [\"safe\"]\n"
                 "packages = [\"safe-viewer\", \"plugin\"]\n"
                 "arguments = [\"{host}\"]\n");
  EXPECT_EQ(
      "warning viewer vnc: @/bin/plain: Plain (plain) opens links to machines that you trust "
      "only: it lets through clipboard\n"
      "  Install Safe: \"sudo apt-get install safe-viewer plugin\", or choose it "
      "all the same with \"hopopen --use plain vnc\".\n"
      "ok definition: 2 viewers: no definition has a fault\n",
      machine.told());
}

TEST_F(CheckOfClicks, WarnsThatAViewerNeedsATerminal) {
  std::filesystem::remove(machine.path("bin/x-terminal-emulator"));
  EXPECT_EQ("ok terminal: PATH: has no terminal, and no viewer waits for one\n", machine.told());
  machine.define("plain", std::string(door::PLAIN) + "terminal = true\n");
  EXPECT_EQ(
      "warning viewer vnc: @/share/hoplaunch/viewers/plain.toml: Plain (plain) would open vnc "
      "links, but there is no terminal\n"
      "  Install a terminal, such as the package xterm: \"sudo apt-get install xterm\".\n"
      "warning terminal: PATH: has neither xdg-terminal-exec nor x-terminal-emulator, and Plain "
      "(plain) needs one\n"
      "  Install a terminal, such as the package xterm: \"sudo apt-get install xterm\".\n",
      machine.told());
}

TEST_F(CheckOfClicks, WarnsThatTheChosenViewerNeedsATerminalThoughAnotherDoesNot) {
  std::filesystem::remove(machine.path("bin/x-terminal-emulator"));
  machine.define("inside", std::string(door::PLAIN) + "terminal = true\n");
  machine.set("[use]\nvnc = \"inside\"\n");
  EXPECT_EQ(
      "fault viewer vnc: @/share/hoplaunch/viewers/inside.toml: you chose Plain (inside), which "
      "needs a terminal, and there is none\n"
      "  Install a terminal, such as the package xterm: \"sudo apt-get install xterm\", or choose "
      "another with \"hopopen --use NAME vnc\".\n"
      "warning terminal: PATH: has neither xdg-terminal-exec nor x-terminal-emulator, and Plain "
      "(inside) needs one\n"
      "  Install a terminal, such as the package xterm: \"sudo apt-get install xterm\".\n"
      "ok definition: 2 viewers: no definition has a fault\n"
      "ok settings: @/config/hoplaunch/hopopen.toml: no settings have a fault\n",
      machine.told());
}

TEST_F(CheckOfClicks, WarnsThatNothingShowsMessages) {
  std::filesystem::remove(machine.path("bin/notify-send"));
  EXPECT_EQ(
      "warning notifier: PATH: has none of notify-send, zenity, kdialog and xmessage\n"
      "  Install the package libnotify-bin: \"sudo apt-get install libnotify-bin\".\n",
      machine.told());
  EXPECT_EQ(
      "warning display: DISPLAY: is not set, and neither is WAYLAND_DISPLAY\n"
      "  Type the command in a terminal on the desktop.\n"
      "ok notifier: PATH: has none, and there is no desktop to show one\n",
      machine.told({{"DISPLAY", {}}}));
}

// A new namespace without sets, that can have this many.
void leaveSets(const char* number) {
  const std::string limits = std::string("250 32000 100 ") + number;
  const int file = unshare(CLONE_NEWIPC) == 0 ? open("/proc/sys/kernel/sem", O_WRONLY) : -1;
  if (file < 0 || write(file, limits.data(), limits.size()) < 0 || close(file) != 0) {
    _exit(NO_ROOT_OF_ITS_OWN);
  }
}

TEST_F(CheckOfClicks, WarnsThatFewerThanTenSemaphoreSetsAreLeft) {
  if (machine.check({}, {}, [] { leaveSets("10"); }).status == NO_ROOT_OF_ITS_OWN) {
    GTEST_SKIP() << "the limit cannot be changed";
  }
  EXPECT_EQ("", machine.told({}, [] { leaveSets("10"); }));
  EXPECT_EQ(
      "warning semaphores: /proc/sys/kernel/sem: leaves 9 semaphore sets; hoplaunch needs two\n"
      "  See who has them with \"ipcs -s\". Links that hopopen opens need none.\n",
      machine.told({}, [] { leaveSets("9"); }));
}

// --- definition, settings ----------------------------------------------------

TEST_F(CheckOfClicks, FindsAFaultOfADefinition) {
  machine.define("faulty", "colour = 1\n" + std::string(door::PLAIN));
  EXPECT_TRUE(
      machine.told().starts_with("fault definition: @/share/hoplaunch/viewers/faulty.toml:1:1: "))
      << machine.told();
  EXPECT_TRUE(machine.told().ends_with("\n  Correct the file, or remove it.\n"));
}

TEST_F(CheckOfClicks, FindsAFaultOfTheSettings) {
  machine.set("[use]\nvnc = 1\n");
  EXPECT_TRUE(machine.told().starts_with("fault settings: @/config/hoplaunch/hopopen.toml:2:7: "))
      << machine.told();
  EXPECT_TRUE(machine.told().ends_with("\n  Correct the file: until then no link is opened.\n"));
}

// --- all of it -----------------------------------------------------------------

TEST_F(CheckOfClicks, ChangesNothing) {
  machine.write("config/mimeapps.list", "[Default Applications]\n");
  machine.write("config/chromium/Default/Preferences", "{}");
  const auto all = [&] {
    std::string result;
    for (const auto& entry :
         std::filesystem::recursive_directory_iterator(machine.path("config"))) {
      const auto time =
          static_cast<std::int64_t>(entry.last_write_time().time_since_epoch().count());
      result += entry.path().string() + ' ' + std::to_string(time) + '\n';
    }
    return result;
  };
  const std::string before = all();
  EXPECT_EQ(0, machine.check().status);
  EXPECT_EQ(before, all());
  EXPECT_FALSE(machine.has("home/.cache"));
}

TEST_F(CheckOfClicks, ShowsNamesOfFilesAndWhatTheySayWithoutControlCharacters) {
  addOther();
  const std::string bytes = "other\x1B[1m\xC3\xA4.desktop";
  std::filesystem::rename(machine.path("share/applications/other.desktop"),
                          machine.path("share/applications/" + bytes));
  machine.write("etc/mimeapps.list", "[Default Applications]\nx-scheme-handler/vnc=" + bytes);
  const Outcome told = machine.check();
  EXPECT_TRUE(door::isPlain(told.out)) << told.out;
  EXPECT_TRUE(contains(
      told.out, "fault handler vnc: @/etc/mimeapps.list: other\\x1B[1m\\xC3\\xA4.desktop opens"))
      << told.out;
}

}  // namespace

}  // namespace hopopen_check_test
