// SPDX-License-Identifier: MIT
// Changes of what a settings file says of single hosts, tried on every form that TOML has.

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "settings_edit.h"
#include "trusted.h"

namespace settings_host_edit_test {

namespace {

using hopopen::change;
using hopopen::trustedHost;

using texts = std::vector<std::string>;

trustedHost host(const std::string& name) {
  return hopopen::readTrusted(name).value();
}

std::string made(const std::string& text, const change& what) {
  return hopopen::edited(text, what).value_or("(nothing)");
}

std::string used(const std::string& text, const std::map<std::string, std::string>& viewers,
                 const std::string& where) {
  change what{.forHost = host(where)};
  what.use.insert(viewers.begin(), viewers.end());
  return made(text, what);
}

std::string forgot(const std::string& text, const texts& schemes, const std::string& where) {
  change what{.forHost = host(where)};
  for (const std::string& scheme : schemes) {
    what.use[scheme] = std::nullopt;
  }
  return made(text, what);
}

std::string trusted(const std::string& text, const std::string& where) {
  return made(text, {.trust = {host(where)}});
}

std::string distrusted(const std::string& text, const std::string& where) {
  return made(text, {.distrust = {host(where)}});
}

}  // namespace

// --- Choosing a viewer -------------------------------------------------------

TEST(UseForAHost, MakesItsTable) {
  EXPECT_EQ(used("", {{"vnc", "krdc"}}, "build.example"),
            "[host.\"build.example\"]\nuse = { vnc = \"krdc\" }\n");
  EXPECT_EQ(used("# mine\n", {{"vnc", "krdc"}, {"ssh", "putty"}}, ".lab.example"),
            "# mine\n\n[host.\".lab.example\"]\nuse = { ssh = \"putty\", vnc = \"krdc\" }\n");
  EXPECT_EQ(used("", {{"x+y", "a"}}, "[FE80::1%25eth0]"),
            "[host.\"[FE80::1%25eth0]\"]\nuse = { \"x+y\" = \"a\" }\n");
  EXPECT_EQ(used("", {{"vnc", "a"}}, "build"), "[host.build]\nuse = { vnc = \"a\" }\n");
}

TEST(UseForAHost, MakesItsTableBesideThoseOfOthers) {
  EXPECT_EQ(used("[use]\nvnc = \"a\"\n[host.b]\nuser = \"c\"\n", {{"vnc", "d"}}, "e"),
            "[use]\nvnc = \"a\"\n[host.b]\nuser = \"c\"\n\n[host.e]\nuse = { vnc = \"d\" }\n");
  EXPECT_EQ(used("[host]\n", {{"vnc", "d"}}, ".b"),
            "[host]\n\n[host.\".b\"]\nuse = { vnc = \"d\" }\n");
  EXPECT_EQ(used("host.b.user = 'c'\n", {{"vnc", "d"}}, "e"),
            "host.b.user = 'c'\n\n[host.e]\nuse = { vnc = \"d\" }\n");
  EXPECT_EQ(used("host = { b = { user = 'c' } } # one\n", {{"vnc", "d"}}, "e"),
            "host = { b = { user = 'c' }, e = { use = { vnc = \"d\" } } } # one\n");
  EXPECT_EQ(used("host = {}\n", {{"vnc", "d"}}, "e.f"),
            "host = { \"e.f\" = { use = { vnc = \"d\" } } }\n");
}

TEST(UseForAHost, TakesTheTableThatIsThereHoweverItsHostIsWritten) {
  EXPECT_EQ(used("[host.\"Build.Example.\"] # one\nuser = 'x' # two\n# three\n", {{"vnc", "a"}},
                 "build.example"),
            "[host.\"Build.Example.\"] # one\nuser = 'x' # two\nuse = { vnc = \"a\" }\n# three\n");
  EXPECT_EQ(used("[host.'[0:0::1]']", {{"vnc", "a"}}, "[::1]"),
            "[host.'[0:0::1]']\nuse = { vnc = \"a\" }\n");
  EXPECT_EQ(used("[ host . \"\\u0062\" ]\r\n  user = 'x'\r\n", {{"vnc", "a"}}, "b"),
            "[ host . \"\\u0062\" ]\r\n  user = 'x'\r\n  use = { vnc = \"a\" }\r\n");
}

TEST(UseForAHost, MakesTheTableAboveTablesBelowIt) {
  EXPECT_EQ(used("[host.b.more]\nuser = 'x'\n", {{"vnc", "a"}}, "b"),
            "[host.b.more]\nuser = 'x'\n\n[host.b]\nuse = { vnc = \"a\" }\n");
}

TEST(UseForAHost, AddsDottedKeysAmongDottedKeys) {
  EXPECT_EQ(used("host.'b.c'.user = 'x' # one\n", {{"vnc", "a"}}, "b.c"),
            "host.'b.c'.user = 'x' # one\nhost.\"b.c\".use = { vnc = \"a\" }\n");
  EXPECT_EQ(used("[host]\n  b.user = 'x'\n", {{"vnc", "a"}}, "b"),
            "[host]\n  b.user = 'x'\n  b.use = { vnc = \"a\" }\n");
  EXPECT_EQ(used("[host.b]\nuse.vnc = 'x'\nuser = 'y'\n", {{"ssh", "a"}}, "b"),
            "[host.b]\nuse.vnc = 'x'\nuse.ssh = \"a\"\nuser = 'y'\n");
  EXPECT_EQ(used("host.b.use.vnc = 'x'\n", {{"ssh", "a"}}, "b"),
            "host.b.use.vnc = 'x'\nhost.b.use.ssh = \"a\"\n");
  EXPECT_EQ(used("[host]\nb.use.vnc = 'x'\n", {{"ssh", "a"}}, "b"),
            "[host]\nb.use.vnc = 'x'\nb.use.ssh = \"a\"\n");
  EXPECT_EQ(used("host.b.more.x = 1\n", {{"vnc", "a"}}, "b"),
            "host.b.use = { vnc = \"a\" }\nhost.b.more.x = 1\n");
}

TEST(UseForAHost, AddsToTheTableOfViewers) {
  EXPECT_EQ(used("[host.b]\nuse = {vnc = 'x'} # one\n", {{"ssh", "a"}}, "b"),
            "[host.b]\nuse = {vnc = 'x', ssh = \"a\"} # one\n");
  EXPECT_EQ(used("[host.b]\nuse = {}\n", {{"ssh", "a"}}, "b"), "[host.b]\nuse = { ssh = \"a\" }\n");
  EXPECT_EQ(used("[host.b.use] # one\nvnc = 'x'\n\n[other]\n", {{"ssh", "a"}}, "b"),
            "[host.b.use] # one\nvnc = 'x'\nssh = \"a\"\n\n[other]\n");
  EXPECT_EQ(used("[host.b.use]\n", {{"ssh", "a"}}, "b"), "[host.b.use]\nssh = \"a\"\n");
  EXPECT_EQ(used("host = {b = {use = {vnc = 'x'}}}", {{"ssh", "a"}}, "b"),
            "host = {b = {use = {vnc = 'x', ssh = \"a\"}}}");
  EXPECT_EQ(used("[host]\nb = {user = 'x'}\n", {{"ssh", "a"}}, "b"),
            "[host]\nb = {user = 'x', use = { ssh = \"a\" }}\n");
}

TEST(UseForAHost, ReplacesTheViewerAlone) {
  EXPECT_EQ(used("[host.b]\nuse = {vnc = 'x', ssh = 'y'} # one\n", {{"vnc", "a"}}, "b"),
            "[host.b]\nuse = {vnc = 'a', ssh = 'y'} # one\n");
  EXPECT_EQ(used("[host.b.use]\nvnc = \"x\" # one\n", {{"vnc", "a"}, {"ssh", "c"}}, "b"),
            "[host.b.use]\nvnc = \"a\" # one\nssh = \"c\"\n");
}

TEST(UseForAHost, LeavesTheChoiceForAllAndForOtherHosts) {
  const std::string text = "[use]\nvnc = 'x'\n[host.'.b']\nuse = {vnc = 'x'}\n";
  EXPECT_EQ(used(text, {{"vnc", "a"}}, "b"), text + "\n[host.b]\nuse = { vnc = \"a\" }\n");
}

TEST(UseForAHost, LeavesWhatIsSoAlready) {
  const std::string text = "[host.b]\nuse = {vnc = \"\\u0061\"}\n";
  EXPECT_EQ(used(text, {{"vnc", "a"}}, "B."), text);
  EXPECT_EQ(used(text, {}, "c"), text);
}

TEST(UseForAHost, LosesNothingOfFormsThatItCannotChange) {
  const std::string text = "host = { b.user = 'x' }\n";
  const std::string result = used(text, {{"vnc", "a"}}, "b");
  EXPECT_EQ(result, "(nothing)");
  EXPECT_EQ(used("[host.'+']\n", {{"vnc", "a"}}, "b"), "(nothing)");
}

// --- Forgetting it -----------------------------------------------------------

TEST(ForgetForAHost, TakesThePair) {
  EXPECT_EQ(forgot("[host.b]\nuse = { vnc = 'x', ssh = 'y' } # one\n", {"vnc"}, "b"),
            "[host.b]\nuse = { ssh = 'y' } # one\n");
  EXPECT_EQ(forgot("[host.b.use]\nvnc = 'x' # one\nssh = 'y'\n", {"vnc"}, "b"),
            "[host.b.use]\n# one\nssh = 'y'\n");
  EXPECT_EQ(forgot("[host.b]\nuse.vnc = 'x'\nuser = 'y'\n", {"vnc", "ssh"}, "B"),
            "[host.b]\nuser = 'y'\n");
  EXPECT_EQ(forgot("host.b.use.vnc = 'x'\n", {"vnc"}, "b"), "");
}

TEST(ForgetForAHost, LeavesTheChoiceForAllAndForOtherHosts) {
  const std::string text = "[use]\nvnc = 'x'\n[host.'.b']\nuse = {vnc = 'x'}\n";
  EXPECT_EQ(forgot(text, {"vnc"}, "b"), text);
  EXPECT_EQ(forgot(text, {"vnc"}, ".b"), "[use]\nvnc = 'x'\n[host.'.b']\nuse = {}\n");
  EXPECT_EQ(forgot("[host.b]\nuser = 'x'\n", {"vnc"}, "b"), "[host.b]\nuser = 'x'\n");
}

TEST(Forget, LeavesTheChoiceForHosts) {
  EXPECT_EQ(
      made("[use]\nvnc = 'x'\n[host.b]\nuse = {vnc = 'x'}\n", {.use = {{"vnc", std::nullopt}}}),
      "[use]\n[host.b]\nuse = {vnc = 'x'}\n");
}

// --- Trust -------------------------------------------------------------------

TEST(Distrust, TurnsATableThatTrustsTheHost) {
  EXPECT_EQ(distrusted("[host.\"B.\"]\ntrust = true # one\nuser = 'x'\n", "b"),
            "[host.\"B.\"]\ntrust = false # one\nuser = 'x'\n");
  EXPECT_EQ(distrusted("host = { '.b' = {trust=true, user = 'x'}, b = {trust=true} }\n", ".b"),
            "host = { '.b' = {trust=false, user = 'x'}, b = {trust=true} }\n");
  EXPECT_EQ(distrusted("host.b.trust=true", "b"), "host.b.trust=false");
}

TEST(Distrust, TakesTheHostOutOfTheListBesides) {
  EXPECT_EQ(distrusted("[trust]\nhosts = ['a', 'b']\n[host.b]\ntrust = true\n", "b"),
            "[trust]\nhosts = ['a']\n[host.b]\ntrust = false\n");
}

TEST(Distrust, LeavesTablesThatDoNotTrustTheHost) {
  for (const std::string text :
       {"[host.b]\ntrust = false\n", "[host.b]\nuser = 'x'\n", "[host.'.b']\ntrust = true\n",
        "[host.c]\ntrust = true\n", "[host.b.more]\ntrust = true\n"}) {
    EXPECT_EQ(distrusted(text, "b"), text);
  }
}

TEST(Trust, TurnsATableThatDistrustsTheHost) {
  EXPECT_EQ(trusted("[host.b]\ntrust = false # one\n", "B"), "[host.b]\ntrust = true # one\n");
  EXPECT_EQ(trusted("[host.b]\ntrust = true\n", "b"), "[host.b]\ntrust = true\n");
}

TEST(Trust, IsInTheListWhereTheTableOfTheHostSaysNothingOfIt) {
  EXPECT_EQ(trusted("[host.b]\nuser = 'x'\n", "b"),
            "[host.b]\nuser = 'x'\n\n[trust]\nhosts = [\"b\"]\n");
  EXPECT_EQ(trusted("[host.'.b']\ntrust = false\n", "c.b"),
            "[host.'.b']\ntrust = false\n\n[trust]\nhosts = [\"c.b\"]\n");
}

TEST(Distrust, MayNameAHostTwice) {
  EXPECT_EQ(made("[host.b]\ntrust = true\n", {.distrust = {host("b"), host("B.")}}),
            "[host.b]\ntrust = false\n");
}

TEST(Trust, BeatsADistrustOfTheSameChange) {
  EXPECT_EQ(made("[host.b]\ntrust = true\n", {.distrust = {host("b")}, .trust = {host("b")}}),
            "[host.b]\ntrust = true\n");
}

}  // namespace settings_host_edit_test
