// SPDX-License-Identifier: MIT
// What `hopopen --check` says of browsers that keep links for themselves, and of files that
// are none to read.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "checked_machine.h"
#include "own_root.h"

namespace hopopen_check_browsers_test {

namespace {

using door::CheckedMachine;
using door::Json;
using door::Outcome;

class CheckOfBrowsers : public testing::Test {
 protected:
  void SetUp() override {
    if (machine.check().status == NO_ROOT_OF_ITS_OWN) {
      GTEST_SKIP() << "no process may have a root of its own";
    }
  }

  const CheckedMachine machine;
};

const char* const ALLOW =
    "  Ask whoever looks after this computer to allow these links in that file.\n";
const char* const LOOK =
    "  Ask whoever looks after this computer to look at the file: nobody can tell what it "
    "forbids.\n";
const char* const OF_CHROMIUM =
    "  Open chrome://settings/handlers in the browser, and remove the handler; or close the "
    "browser, and remove the scheme from \"excluded_schemes\" in the file.\n";
const char* const OF_FIREFOX =
    "  Open about:preferences in Firefox, and choose \"Always ask\" for these links under "
    "Applications.\n";
const char* const MOVE_AWAY = "  Look at what it is, and move it away if no program needs it.\n";

TEST_F(CheckOfBrowsers, FindsAPolicyOfChromiumThatForbidsTheScheme) {
  for (const char* const folder :
       {"/etc/chromium/policies/managed", "/etc/opt/chrome/policies/managed",
        "/etc/chromium-browser/policies/managed"}) {
    const std::string file = std::string(folder) + "/links.json";
    machine.write(CheckedMachine::absolute(file), R"({"URLBlocklist": ["vnc:*"]})");
    EXPECT_EQ("fault policy chromium: " + file +
                  ": forbids vnc links: URLBlocklist has \"vnc:*\"\n" + ALLOW,
              machine.told());
    EXPECT_EQ(4, machine.check().status);
    std::filesystem::remove(machine.path(CheckedMachine::absolute(file)));
  }
}

TEST_F(CheckOfBrowsers, NamesThePoliciesOfChromiumThatForbidNothing) {
  machine.write("root/etc/chromium/policies/managed/a.json", R"({"URLBlocklist": ["ftp:*"]})");
  machine.write("root/etc/chromium/policies/managed/b.txt", "none");
  EXPECT_EQ(
      "ok policy chromium: /etc/chromium/policies/managed/a.json: no policy forbids these links\n",
      machine.told());
}

TEST_F(CheckOfBrowsers, WarnsOfAPolicyOfChromiumThatCannotBeRead) {
  machine.write("root/etc/chromium/policies/managed/a.json", "{");
  EXPECT_EQ(std::string("warning policy chromium: /etc/chromium/policies/managed/a.json: cannot be "
                        "read: it is no JSON\n") +
                LOOK,
            machine.told());
  EXPECT_EQ(0, machine.check().status);
}

TEST_F(CheckOfBrowsers, FindsAPolicyOfFirefoxThatForbidsTheScheme) {
  const std::string file = "/etc/firefox/policies/policies.json";
  const struct {
    const char* text;
    const char* rule;
  } policies[] = {
      {R"({"policies": {"WebsiteFilter": {"Block": ["<all_urls>"]}}})",
       "WebsiteFilter blocks \"<all_urls>\""},
      {R"({"policies": {"Handlers": {"schemes": {"vnc": {"action": "useHelperApp", "ask": false,
          "handlers": [{"name": "Other", "path": "/usr/bin/other"}]}}}}})",
       "Handlers gives vnc links to /usr/bin/other"},
  };
  for (const auto& policy : policies) {
    machine.write(CheckedMachine::absolute(file), policy.text);
    EXPECT_EQ(
        "fault policy firefox: " + file + ": forbids vnc links: " + policy.rule + "\n" + ALLOW,
        machine.told());
    EXPECT_EQ(4, machine.check().status);
  }
}

TEST_F(CheckOfBrowsers, WarnsOfAPolicyOfFirefoxThatCannotBeRead) {
  machine.write("root/etc/firefox/policies/policies.json", "policies");
  EXPECT_EQ(std::string("warning policy firefox: /etc/firefox/policies/policies.json: cannot be "
                        "read: it is no JSON\n") +
                LOOK,
            machine.told());
}

TEST_F(CheckOfBrowsers, WarnsOfAProfileOfChromiumThatBlocksTheScheme) {
  for (const char* const folder : {"config/chromium/Default", "config/google-chrome/Profile 1",
                                   "home/snap/chromium/common/chromium/Default",
                                   "home/.var/app/org.chromium.Chromium/config/chromium/Default"}) {
    const std::string file = std::string(folder) + "/Preferences";
    machine.write(file, R"({"protocol_handler": {"excluded_schemes": {"vnc": true}}})");
    EXPECT_EQ("warning profile: @/" + file + ": blocks vnc links\n" + OF_CHROMIUM, machine.told());
    EXPECT_EQ(0, machine.check().status);
    std::filesystem::remove(machine.path(file));
  }
}

TEST_F(CheckOfBrowsers, WarnsOfAProfileOfFirefoxThatGivesTheSchemeToAnotherProgram) {
  for (const char* const folder :
       {"home/.mozilla/firefox/a.default", "config/mozilla/firefox/a.default",
        "home/snap/firefox/common/.mozilla/firefox/a.default",
        "home/.var/app/org.mozilla.firefox/.mozilla/firefox/a.default"}) {
    const std::string file = std::string(folder) + "/handlers.json";
    machine.write(file,
                  R"({"schemes": {"vnc": {"action": 2, "handlers": [{"path": "/x/other"}]}}})");
    EXPECT_EQ("warning profile: @/" + file + ": gives vnc links to /x/other\n" + OF_FIREFOX,
              machine.told());
    std::filesystem::remove(machine.path(file));
  }
}

TEST_F(CheckOfBrowsers, WarnsOfAProfileOfFirefoxThatIsElsewhereAndSwitchesTheSchemeOff) {
  machine.write("home/.mozilla/firefox/profiles.ini",
                "[Profile0]\nIsRelative=0\nPath=" + machine.path("mine") + "\n");
  machine.write("mine/prefs.js",
                "// comment\nuser_pref(\"network.protocol-handler.external.vnc\", false);\n");
  EXPECT_EQ(
      "warning profile: @/mine/prefs.js: blocks vnc links\n"
      "  Open about:config in Firefox, and reset \"network.protocol-handler.external\" for these "
      "links.\n",
      machine.told());
}

TEST_F(CheckOfBrowsers, WarnsOfABrowserFromASnapOrAFlatpak) {
  const struct {
    std::string folder;
    std::string place;
    const char* browser;
  } browsers[] = {
      {"root/snap/chromium/current", "/snap/chromium/current", "Chromium (snap)"},
      {"root/snap/firefox/current", "/snap/firefox/current", "Firefox (snap)"},
      {"root/var/lib/flatpak/app/org.mozilla.firefox", "/var/lib/flatpak/app/org.mozilla.firefox",
       "Firefox (flatpak)"},
      {"data/flatpak/app/org.chromium.Chromium", "@/data/flatpak/app/org.chromium.Chromium",
       "Chromium (flatpak)"},
  };
  for (const auto& browser : browsers) {
    std::filesystem::create_directories(machine.path(browser.folder));
    EXPECT_EQ("warning sandbox: " + browser.place + ": " + browser.browser +
                  " asks which program is to open a link\n"
                  "  Choose hopopen when it asks, or use the browser of a Debian package.\n",
              machine.told());
    EXPECT_EQ(0, machine.check().status);
    std::filesystem::remove(machine.path(browser.folder));
  }
}

// --- file ------------------------------------------------------------------

TEST_F(CheckOfBrowsers, WarnsOfWhatIsNoRegularFile) {
  for (const char* const file :
       {"config/mimeapps.list", "data/applications/mimeinfo.cache",
        "root/etc/chromium/policies/managed/a.json", "root/etc/firefox/policies/policies.json",
        "config/chromium/Default/Preferences", "home/.mozilla/firefox/a/handlers.json"}) {
    const std::string name = file;
    machine.write(name + ".keep", "");
    ASSERT_EQ(0, mkfifo(machine.path(name).c_str(), 0600)) << name;
    const std::string place = name.starts_with("root/") ? name.substr(4) : "@/" + name;
    EXPECT_EQ("warning file: " + place + ": is no regular file\n" + MOVE_AWAY, machine.told());
    EXPECT_EQ(0, machine.check().status);
    std::filesystem::remove(machine.path(name));
  }
}

TEST_F(CheckOfBrowsers, WarnsOfAFileThatIsLargerThanOneMiB) {
  const std::string name = "config/chromium/Default/Preferences";
  const std::string start = R"({"protocol_handler": {"excluded_schemes": {"vnc": true}}})";
  machine.write(name, start + std::string((1 << 20) - start.size(), ' '));
  EXPECT_EQ("warning profile: @/" + name + ": blocks vnc links\n" + OF_CHROMIUM, machine.told());
  machine.write(name, start + std::string((1 << 20) + 1 - start.size(), ' '));
  EXPECT_EQ("warning file: @/" + name + ": is larger than 1 MiB\n" + MOVE_AWAY, machine.told());
}

TEST_F(CheckOfBrowsers, FindsAllCausesTogether) {
  machine.write("root/etc/chromium/policies/managed/a.json", R"({"URLBlocklist": ["*"]})");
  machine.write("root/etc/firefox/policies/policies.json",
                R"({"policies": {"WebsiteFilter": {"Block": ["vnc://*/*"]}}})");
  machine.write("home/.mozilla/firefox/a/handlers.json", R"({"schemes": {"vnc": {"action": 3}}})");
  std::filesystem::create_directories(machine.path("root/snap/firefox/current"));
  for (const char* const name : {"plain", "xdg-open", "notify-send", "hopopen"}) {
    std::filesystem::remove(machine.path(std::string("bin/") + name));
  }
  ASSERT_EQ(0, mkfifo(machine.path("config/mimeapps.list").c_str(), 0600));
  machine.write("share/applications/mimeinfo.cache", "[MIME Cache]\n");
  machine.set("[use]\nvnc = \"nothing\"\nX = \"a\"\n");
  machine.define("faulty", "colour\n");
  std::string names;
  const Json checks = Json::parse(machine.check({"--format=json"}).out)["checks"];
  for (const Json one : checks) {
    names += one["state"].get<std::string>() + ' ' + one["name"].get<std::string>() + '\n';
  }
  EXPECT_EQ(
      "fault handler vnc\nok entry\nfault tryexec\nwarning cache\nwarning opener\n"
      "fault policy chromium\nfault policy firefox\nwarning profile\nwarning sandbox\n"
      "ok display\nfault viewer vnc\nok terminal\nwarning notifier\nok semaphores\n"
      "warning file\nfault definition\nfault settings\n",
      names);
}

}  // namespace

}  // namespace hopopen_check_browsers_test
