// SPDX-License-Identifier: MIT
// What settings files say of a host, and which of them counts.

#include "host_rules.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace host_rules_test {

namespace {

using hopopen::host;
using hopopen::hostRules;
using hopopen::preferences;
using hopopen::said;

host named(const std::string& name) {
  host result;
  EXPECT_FALSE(hopopen::readHost({name, 0}, result)) << name;
  return result;
}

// Settings of the user, in the file "user", and of administrators, in "first" and "second".
preferences settingsOf(const std::optional<std::string>& user,
                       const std::vector<std::string>& others = {}) {
  preferences result;
  result.hasUser = user.has_value();
  if (user) {
    result.files.push_back(hopopen::readSettings(*user, "user", result.found));
  }
  for (const std::string& text : others) {
    const char* const file = result.files.size() == (user ? 1U : 0U) ? "first" : "second";
    result.files.push_back(hopopen::readSettings(text, file, result.found));
  }
  EXPECT_TRUE(result.found.empty()) << result.found.front().lineOfText();
  return result;
}

std::string shown(const std::optional<said<std::string>>& what) {
  return what ? what->value + " for " + what->where.text() + " by " + what->file +
                    (what->byUser ? "" : " (others)")
              : "none";
}

std::string userOf(const preferences& wishes, const std::string& name) {
  return shown(hopopen::rulesFor(wishes, named(name), "vnc").user);
}

std::string viewerOf(const preferences& wishes, const std::string& name,
                     const std::string& scheme = "vnc") {
  const auto wish =
      hopopen::viewerFor(wishes, scheme, hopopen::rulesFor(wishes, named(name), scheme));
  if (!wish) {
    return "none";
  }
  return wish->viewer + (wish->where ? " for " + wish->where->text() : "") +
         (wish->by == hopopen::chooser::USER ? "" : " (others)");
}

bool trusts(const preferences& wishes, const std::string& name) {
  const bool result = hopopen::isTrusted(wishes, named(name));
  EXPECT_EQ(hopopen::rulesFor(wishes, named(name), "vnc").trusted, result);
  return result;
}

}  // namespace

TEST(HostRules, AreNoneWithoutATable) {
  const hostRules rules = hopopen::rulesFor(settingsOf("use.vnc = 'a'"), named("h"), "vnc");
  EXPECT_FALSE(rules.viewer || rules.user || rules.trust || rules.through || rules.trusted);
  EXPECT_EQ(userOf(settingsOf(std::nullopt), "h"), "none");
}

TEST(HostRules, AreThoseOfTheHost) {
  const preferences wishes = settingsOf(
      "[host.\"Build.Example.\"]\nuser = 'build'\n[host.\"[fe80::1]\"]\nuser = 'six'\n"
      "[host.'10.0.0.1']\nuser = 'four'\n");
  EXPECT_EQ(userOf(wishes, "build.EXAMPLE"), "build for build.example by user");
  EXPECT_EQ(userOf(wishes, "[FE80:0::1]"), "six for [fe80::1] by user");
  EXPECT_EQ(userOf(wishes, "10.0.0.1"), "four for 10.0.0.1 by user");
  EXPECT_EQ(userOf(wishes, "a.build.example"), "none");
  EXPECT_EQ(userOf(wishes, "example"), "none");
  EXPECT_EQ(userOf(wishes, "[fe80::1%25eth0]"), "none");
}

TEST(HostRules, AreThoseOfTheDomain) {
  const preferences wishes = settingsOf("[host.\".lab.example\"]\nuser = 'lab'\n");
  EXPECT_EQ(userOf(wishes, "a.lab.example"), "lab for .lab.example by user");
  EXPECT_EQ(userOf(wishes, "a.b.lab.example"), "lab for .lab.example by user");
  EXPECT_EQ(userOf(wishes, "lab.example"), "none");
  EXPECT_EQ(userOf(wishes, "mylab.example"), "none");
}

TEST(HostRules, AreForEachKeyThoseOfTheLongestMatchThatHasIt) {
  const preferences wishes = settingsOf(
      "[host.\".example\"]\nuser = 'example'\nthrough = 'gate'\nuse = {vnc = 'a', ssh = 'b'}\n"
      "[host.\"x.lab.example\"]\nuse.vnc = 'c'\ntrust = true\n"
      "[host.\".lab.example\"]\nuser = 'lab'\n");
  const hostRules rules = hopopen::rulesFor(wishes, named("x.lab.example"), "vnc");
  EXPECT_EQ(shown(rules.viewer), "c for x.lab.example by user");
  EXPECT_EQ(shown(rules.user), "lab for .lab.example by user");
  EXPECT_EQ(rules.through->value.text(), "gate");
  EXPECT_EQ(rules.through->where.text(), ".example");
  EXPECT_EQ(rules.through->file, "user");
  EXPECT_TRUE(rules.through->byUser);
  EXPECT_TRUE(rules.trust->value);
  EXPECT_EQ(rules.trust->where.text(), "x.lab.example");
  EXPECT_EQ(viewerOf(wishes, "x.lab.example", "ssh"), "b for .example");
  EXPECT_EQ(viewerOf(wishes, "x.lab.example", "rdp"), "none");
  EXPECT_EQ(userOf(wishes, "y.example"), "example for .example by user");
}

TEST(HostRules, OfTheUserComeBeforeThoseOfOthersForEachKey) {
  const preferences wishes =
      settingsOf("[host.\".example\"]\nuser = 'mine'\n",
                 {"[host.\"x.example\"]\nuser = 'theirs'\nthrough = 'gate'\ntrust = true\n"});
  const hostRules rules = hopopen::rulesFor(wishes, named("x.example"), "vnc");
  EXPECT_EQ(shown(rules.user), "mine for .example by user");
  EXPECT_EQ(rules.through->file, "first");
  EXPECT_FALSE(rules.through->byUser);
  EXPECT_TRUE(rules.trusted);
}

TEST(HostRules, OfAdministratorsAreTakenTogether) {
  const std::string far = "[host.\".example\"]\nuser = 'far'\n";
  const std::string close = "[host.\"x.example\"]\nuser = 'close'\n";
  const std::string other = "[host.\"x.example\"]\nuser = 'other'\n";
  EXPECT_EQ(userOf(settingsOf(std::nullopt, {far, close}), "x.example"),
            "close for x.example by second (others)");
  EXPECT_EQ(userOf(settingsOf("", {close, other}), "x.example"),
            "close for x.example by first (others)");
  EXPECT_EQ(userOf(settingsOf("", {other, close}), "x.example"),
            "other for x.example by first (others)");
}

TEST(HostRules, ChooseTheViewerBeforeTheChoiceForAllOfTheSamePeople) {
  const std::string mine = "[host.h]\nuse.vnc = 'mine'\n";
  const std::string theirs = "[host.h]\nuse.vnc = 'theirs'\n";
  const std::string mineForAll = "[use]\nvnc = 'mine-all'\n";
  const std::string theirsForAll = "[use]\nvnc = 'theirs-all'\n";
  EXPECT_EQ(viewerOf(settingsOf(mineForAll + mine, {theirsForAll + theirs}), "h"), "mine for h");
  EXPECT_EQ(viewerOf(settingsOf(mineForAll, {theirsForAll + theirs}), "h"), "mine-all");
  EXPECT_EQ(viewerOf(settingsOf(mine, {theirsForAll + theirs}), "other"), "theirs-all (others)");
  EXPECT_EQ(viewerOf(settingsOf("", {theirsForAll + theirs}), "h"), "theirs for h (others)");
  EXPECT_EQ(viewerOf(settingsOf("", {theirsForAll, theirs}), "h"), "theirs for h (others)");
  EXPECT_EQ(viewerOf(settingsOf(std::nullopt, {theirsForAll}), "h"), "theirs-all (others)");
  EXPECT_EQ(viewerOf(settingsOf(mine), "h", "ssh"), "none");
}

// --- Trust -------------------------------------------------------------------

TEST(HostRules, TrustHostsOfAllLists) {
  const preferences wishes = settingsOf("trust.hosts = ['a']", {"", "trust.hosts = ['.lab']"});
  EXPECT_TRUE(trusts(wishes, "a"));
  EXPECT_TRUE(trusts(wishes, "x.lab"));
  EXPECT_FALSE(trusts(wishes, "lab"));
}

TEST(HostRules, TrustWhomATableTrusts) {
  const preferences wishes =
      settingsOf("[host.a]\ntrust = true\n", {"[host.'.lab']\ntrust = true\n"});
  EXPECT_TRUE(trusts(wishes, "a"));
  EXPECT_TRUE(trusts(wishes, "x.lab"));
  EXPECT_FALSE(trusts(wishes, "lab"));
  EXPECT_FALSE(trusts(wishes, "b"));
}

TEST(HostRules, DistrustAgainstListsOfTheSameOrAShorterMatch) {
  const std::string distrust = "[host.\".lab.example\"]\ntrust = false\n";
  for (const bool own : {true, false}) {
    const auto with = [&](const std::string& list) {
      const std::string text = "trust.hosts = ['" + list + "']\n";
      return own ? settingsOf(text + distrust) : settingsOf(text, {distrust});
    };
    EXPECT_FALSE(trusts(with(".example"), "x.lab.example"));
    EXPECT_FALSE(trusts(with(".lab.example"), "x.lab.example"));
    EXPECT_TRUE(trusts(with("x.lab.example"), "x.lab.example"));
    EXPECT_TRUE(trusts(with(".x.lab.example"), "a.x.lab.example"));
    EXPECT_TRUE(trusts(with(".example"), "lab.example"));
  }
}

TEST(HostRules, DistrustOneHostAgainstAllLists) {
  EXPECT_FALSE(trusts(settingsOf("trust.hosts = ['h.example', '.example']\n"
                                 "[host.'h.example']\ntrust = false\n"),
                      "h.example"));
  EXPECT_FALSE(
      trusts(settingsOf("trust.hosts = ['h.example']\n", {"[host.'h.example']\ntrust = false\n"}),
             "h.example"));
}

TEST(HostRules, TrustByTheTableOfTheUserBeforeThatOfOthers) {
  const std::string yes = "[host.'.example']\ntrust = true\n";
  const std::string no = "[host.'h.example']\ntrust = false\n";
  EXPECT_TRUE(trusts(settingsOf(yes, {no}), "h.example"));
  EXPECT_FALSE(trusts(settingsOf(no, {"[host.'h.example']\ntrust = true\n"}), "h.example"));
  EXPECT_FALSE(trusts(settingsOf(yes + no), "h.example"));
  EXPECT_TRUE(trusts(settingsOf(yes + no), "i.example"));
  EXPECT_TRUE(trusts(settingsOf("[host.'.example']\ntrust = false\n"
                                "[host.'h.example']\ntrust = true\n"),
                     "h.example"));
}

}  // namespace host_rules_test
