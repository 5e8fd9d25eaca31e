// SPDX-License-Identifier: MIT
// Changes of the text of a settings file, tried on every form that TOML has.

#include "settings_edit.h"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "trusted.h"

namespace settings_edit_test {

namespace {

using hopopen::change;
using hopopen::edited;
using hopopen::trustedHost;

using texts = std::vector<std::string>;

std::vector<trustedHost> hosts(const texts& names) {
  std::vector<trustedHost> result;
  for (const std::string& name : names) {
    result.push_back(hopopen::readTrusted(name).value());
  }
  return result;
}

std::string made(const std::string& text, const change& what) {
  return edited(text, what).value_or("(nothing)");
}

std::string used(const std::string& text, const std::map<std::string, std::string>& viewers) {
  change what;
  what.use.insert(viewers.begin(), viewers.end());
  return made(text, what);
}

std::string forgot(const std::string& text, const texts& schemes) {
  change what;
  for (const std::string& scheme : schemes) {
    what.use[scheme] = std::nullopt;
  }
  return made(text, what);
}

std::string trusted(const std::string& text, const texts& names) {
  return made(text, {.trust = hosts(names)});
}

std::string distrusted(const std::string& text, const texts& names) {
  return made(text, {.distrust = hosts(names)});
}

}  // namespace

// --- Choosing a viewer -------------------------------------------------------

TEST(Use, MakesTheTableOfAnEmptyFile) {
  EXPECT_EQ(used("", {{"vnc", "krdc"}}), "[use]\nvnc = \"krdc\"\n");
  EXPECT_EQ(used("", {{"vnc", "a"}, {"ssh", "b"}}), "[use]\nssh = \"b\"\nvnc = \"a\"\n");
  EXPECT_EQ(used("\xEF\xBB\xBF", {{"vnc", "a"}}), "\xEF\xBB\xBF[use]\nvnc = \"a\"\n");
}

TEST(Use, MakesATableAfterABlankLine) {
  EXPECT_EQ(used("# mine\n", {{"vnc", "a"}}), "# mine\n\n[use]\nvnc = \"a\"\n");
  EXPECT_EQ(used("# mine", {{"vnc", "a"}}), "# mine\n\n[use]\nvnc = \"a\"\n");
  EXPECT_EQ(used("# mine\n\n", {{"vnc", "a"}}), "# mine\n\n[use]\nvnc = \"a\"\n");
  EXPECT_EQ(used("# mine\r\n", {{"vnc", "a"}}), "# mine\r\n\r\n[use]\r\nvnc = \"a\"\r\n");
  EXPECT_EQ(used("# mine\r\n\r\n", {{"vnc", "a"}}), "# mine\r\n\r\n[use]\r\nvnc = \"a\"\r\n");
  EXPECT_EQ(used("[trust]\nhosts = []\n[other]\nx = 1", {{"vnc", "a"}}),
            "[trust]\nhosts = []\n[other]\nx = 1\n\n[use]\nvnc = \"a\"\n");
}

TEST(Use, AddsAfterTheLastKeyOfTheTable) {
  EXPECT_EQ(used("[use]\nssh = \"b\"  # why\n\n# next\n[other]\nx = 1\n", {{"vnc", "a"}}),
            "[use]\nssh = \"b\"  # why\nvnc = \"a\"\n\n# next\n[other]\nx = 1\n");
  EXPECT_EQ(used("[use]\nz = 'b'\na = 'c'\n\n", {{"vnc", "a"}}),
            "[use]\nz = 'b'\na = 'c'\nvnc = \"a\"\n\n");
  EXPECT_EQ(used("[use]\n  ssh = \"b\"\n", {{"vnc", "a"}}),
            "[use]\n  ssh = \"b\"\n  vnc = \"a\"\n");
  EXPECT_EQ(used("[use]\r\nssh = \"b\"\r\n", {{"vnc", "a"}}),
            "[use]\r\nssh = \"b\"\r\nvnc = \"a\"\r\n");
}

TEST(Use, AddsToATableThatEndsTheFileWithoutALineEnd) {
  EXPECT_EQ(used("[use]", {{"vnc", "a"}}), "[use]\nvnc = \"a\"\n");
  EXPECT_EQ(used("[use] # none", {{"vnc", "a"}}), "[use] # none\nvnc = \"a\"\n");
  EXPECT_EQ(used("[use]\nssh = 'b'", {{"vnc", "a"}}), "[use]\nssh = 'b'\nvnc = \"a\"\n");
  EXPECT_EQ(used("# x\r\n[use]\r\nssh = 'b' # y", {{"vnc", "a"}}),
            "# x\r\n[use]\r\nssh = 'b' # y\r\nvnc = \"a\"\r\n");
}

TEST(Use, AddsToAnEmptyTable) {
  EXPECT_EQ(used("[use]\n\n[trust]\n", {{"vnc", "a"}}), "[use]\nvnc = \"a\"\n\n[trust]\n");
  EXPECT_EQ(used("[ \"use\" ] # here\n# vnc = 'x'\n", {{"vnc", "a"}}),
            "[ \"use\" ] # here\nvnc = \"a\"\n# vnc = 'x'\n");
  EXPECT_EQ(used("[\t'use'\t]\n", {{"vnc", "a"}}), "[\t'use'\t]\nvnc = \"a\"\n");
  EXPECT_EQ(used("[\"\\u0075se\"]\n", {{"vnc", "a"}}), "[\"\\u0075se\"]\nvnc = \"a\"\n");
}

TEST(Use, AddsDottedKeysAmongDottedKeys) {
  EXPECT_EQ(used("use.ssh = 'b' # x\nx = 1\n[trust]\n", {{"vnc", "a"}}),
            "use.ssh = 'b' # x\nuse.vnc = \"a\"\nx = 1\n[trust]\n");
  EXPECT_EQ(used("'use' . ssh = 'b'", {{"vnc", "a"}}), "'use' . ssh = 'b'\nuse.vnc = \"a\"\n");
  EXPECT_EQ(used(" use.ssh = 'b'\n use.rdp = 'c'\n", {{"vnc", "a"}}),
            " use.ssh = 'b'\n use.rdp = 'c'\n use.vnc = \"a\"\n");
}

TEST(Use, AddsWithinAnInlineTable) {
  EXPECT_EQ(used("use = {}\n", {{"vnc", "a"}}), "use = { vnc = \"a\" }\n");
  EXPECT_EQ(used("use = { }\n", {{"vnc", "a"}}), "use = { vnc = \"a\" }\n");
  EXPECT_EQ(used("use = {ssh='b'} # x", {{"vnc", "a"}}), "use = {ssh='b', vnc = \"a\"} # x");
  EXPECT_EQ(used("use = { z = 'b', a = 'c' }\n", {{"vnc", "a"}, {"ssh", "b"}}),
            "use = { z = 'b', a = 'c', ssh = \"b\", vnc = \"a\" }\n");
}

TEST(Use, QuotesSchemesThatNeedIt) {
  EXPECT_EQ(used("[use]\n", {{"spice+tls", "a"}}), "[use]\n\"spice+tls\" = \"a\"\n");
  EXPECT_EQ(used("[use]\n", {{"a.b", "a"}}), "[use]\n\"a.b\" = \"a\"\n");
  EXPECT_EQ(used("[use]\n", {{"a-b", "a"}}), "[use]\na-b = \"a\"\n");
  EXPECT_EQ(used("use.ssh = 'b'\n", {{"a.b", "a"}}), "use.ssh = 'b'\nuse.\"a.b\" = \"a\"\n");
}

TEST(Use, ReplacesTheValueAlone) {
  EXPECT_EQ(used("[use]\n  vnc   =\t\"b\"   # why\n", {{"vnc", "a"}}),
            "[use]\n  vnc   =\t\"a\"   # why\n");
  EXPECT_EQ(used("[use]\nvnc = 'b'", {{"vnc", "a"}}), "[use]\nvnc = 'a'");
  EXPECT_EQ(used("use.vnc = \"\"\"b\"\"\"\r\n", {{"vnc", "a"}}), "use.vnc = \"a\"\r\n");
  EXPECT_EQ(used("[use]\nvnc = '''\nb''' # c\nz = ''\n", {{"vnc", "a"}}),
            "[use]\nvnc = \"a\" # c\nz = ''\n");
  EXPECT_EQ(used("use = {\"\\u0076nc\"='b',ssh='c'}", {{"vnc", "a"}, {"ssh", "d"}}),
            "use = {\"\\u0076nc\"='a',ssh='d'}");
  EXPECT_EQ(used("[use]\n\"spice+tls\" = \"b\"\n", {{"spice+tls", "a"}}),
            "[use]\n\"spice+tls\" = \"a\"\n");
}

TEST(Use, FindsAValueAfterCharactersOfManyBytes) {
  EXPECT_EQ(used("\xEF\xBB\xBF# \xC3\xA9\n[use] # \xF0\x9F\x98\x80\nssh = '\xE2\x82\xAC'\n"
                 "vnc = '\xC3\xA9'\n",
                 {{"vnc", "a"}}),
            "\xEF\xBB\xBF# \xC3\xA9\n[use] # \xF0\x9F\x98\x80\nssh = '\xE2\x82\xAC'\n"
            "vnc = 'a'\n");
  EXPECT_EQ(used("use = {ssh = '\xF0\x9F\x98\x80\xC3\xA9', vnc = 'b'}", {{"vnc", "a"}}),
            "use = {ssh = '\xF0\x9F\x98\x80\xC3\xA9', vnc = 'a'}");
}

TEST(Use, ReplacesAndAddsAtOnce) {
  EXPECT_EQ(used("[use]\nvnc = 'b'\n", {{"vnc", "a"}, {"ssh", "c"}, {"x+y", "d"}}),
            "[use]\nvnc = 'a'\nssh = \"c\"\n\"x+y\" = \"d\"\n");
  EXPECT_EQ(used("use = {vnc='b'}", {{"vnc", "a"}, {"ssh", "c"}}), "use = {vnc='a', ssh = \"c\"}");
}

TEST(Use, LeavesWhatIsSoAlready) {
  EXPECT_EQ(used("[use]\nvnc = '''a'''", {{"vnc", "a"}}), "[use]\nvnc = '''a'''");
  EXPECT_EQ(used("use.vnc = \"\\u0061\"\n", {{"vnc", "a"}}), "use.vnc = \"\\u0061\"\n");
}

TEST(Use, EscapesWhatATextCannotHave) {
  EXPECT_EQ(used("", {{"vnc", "\"\\\n\x7F\t\xC3\xA9'"}}),
            "[use]\nvnc = \"\\\"\\\\\\u000A\\u007F\\u0009\xC3\xA9'\"\n");
  EXPECT_EQ(used("use.vnc = 'b'", {{"vnc", "it's"}}), "use.vnc = \"it's\"");
}

TEST(Use, RefusesWhatNoSettingsFileCanSay) {
  EXPECT_EQ(used("", {{"Vnc", "a"}}), "(nothing)");
  EXPECT_EQ(used("", {{"", "a"}}), "(nothing)");
  EXPECT_EQ(used("", {{"vnc", "\xFF"}}), "(nothing)");
}

// --- Forgetting it -----------------------------------------------------------

TEST(Forget, TakesTheLine) {
  EXPECT_EQ(forgot("[use]\nvnc = 'a'\nssh = 'b'\n", {"vnc"}), "[use]\nssh = 'b'\n");
  EXPECT_EQ(forgot("[use]\nvnc = 'a'\nssh = 'b'\n", {"ssh"}), "[use]\nvnc = 'a'\n");
  EXPECT_EQ(forgot("[use]\nvnc = 'a'\nssh = 'b'\n", {"ssh", "vnc"}), "[use]\n");
  EXPECT_EQ(forgot("[use]\r\n\tvnc = 'a' \r\nssh = 'b'\r\n", {"vnc"}), "[use]\r\nssh = 'b'\r\n");
  EXPECT_EQ(forgot("[use]\nssh = 'b'\nvnc = 'a'", {"vnc"}), "[use]\nssh = 'b'\n");
  EXPECT_EQ(forgot("[use]\nvnc = '''\na'''\n\n[x]\n", {"vnc"}), "[use]\n\n[x]\n");
  EXPECT_EQ(forgot("[use]\n\"spice+tls\" = 'a'\n", {"spice+tls"}), "[use]\n");
}

TEST(Forget, LeavesTheCommentOfTheLine) {
  EXPECT_EQ(forgot("[use]\n  vnc = 'a'  # why\nssh = 'b'\n", {"vnc"}),
            "[use]\n  # why\nssh = 'b'\n");
  EXPECT_EQ(forgot("# up\nuse.vnc = 'a'# why", {"vnc"}), "# up\n# why");
}

TEST(Forget, TakesDottedKeys) {
  EXPECT_EQ(forgot("x = 1\nuse . vnc = 'a'\nuse.ssh = 'b'\n", {"vnc"}), "x = 1\nuse.ssh = 'b'\n");
  EXPECT_EQ(forgot("\xEF\xBB\xBFuse.vnc = 'a'\r\n# end\r\n", {"vnc"}), "\xEF\xBB\xBF# end\r\n");
  EXPECT_EQ(forgot("use.vnc = 'a'", {"vnc"}), "");
}

TEST(Forget, TakesPairsOfAnInlineTable) {
  EXPECT_EQ(forgot("use = { a = '1', b = '2', c = '3' }\n", {"a"}), "use = { b = '2', c = '3' }\n");
  EXPECT_EQ(forgot("use = { a = '1', b = '2', c = '3' }\n", {"b"}), "use = { a = '1', c = '3' }\n");
  EXPECT_EQ(forgot("use = { c = '1', b = '2', a = '3' }\n", {"a"}), "use = { c = '1', b = '2' }\n");
  EXPECT_EQ(forgot("use = { a = '1', b = '2', c = '3' }\n", {"b", "c"}), "use = { a = '1' }\n");
  EXPECT_EQ(forgot("use = {a='1',b='2',c='3'}\n", {"a", "c"}), "use = {b='2'}\n");
  EXPECT_EQ(forgot("use = { a = '1', b = '2' } # x\n", {"a", "b"}), "use = { } # x\n");
  EXPECT_EQ(forgot("use = {a = '1'}", {"a"}), "use = {}");
}

TEST(Forget, LeavesWhatIsNotThere) {
  EXPECT_EQ(forgot("", {"vnc"}), "");
  EXPECT_EQ(forgot("[use]", {"vnc"}), "[use]");
  EXPECT_EQ(forgot("use = {}", {"vnc"}), "use = {}");
  EXPECT_EQ(forgot("[use]\nvnc = 'a'", {"vn", "vncs"}), "[use]\nvnc = 'a'");
  EXPECT_EQ(forgot("[other]\nvnc = 'a'\nuse.vnc = 'b'\n", {"vnc"}),
            "[other]\nvnc = 'a'\nuse.vnc = 'b'\n");
}

// --- Trusting hosts ----------------------------------------------------------

TEST(Trust, MakesTheTable) {
  EXPECT_EQ(trusted("", {"a"}), "[trust]\nhosts = [\"a\"]\n");
  EXPECT_EQ(trusted("[use]\nvnc = 'a'\n", {"a", ".b", "[::1]"}),
            "[use]\nvnc = 'a'\n\n[trust]\nhosts = [\"a\", \".b\", \"[::1]\"]\n");
}

TEST(Trust, MakesTheList) {
  EXPECT_EQ(trusted("[trust] # x\n# y\n", {"a"}), "[trust] # x\nhosts = [\"a\"]\n# y\n");
  EXPECT_EQ(trusted("[trust]\n  x = 1\n[trust.y]\nz = 1\n", {"a"}),
            "[trust]\n  x = 1\n  hosts = [\"a\"]\n[trust.y]\nz = 1\n");
  EXPECT_EQ(trusted("trust.x = 1 # y\nz = 1", {"a"}),
            "trust.x = 1 # y\ntrust.hosts = [\"a\"]\nz = 1");
  EXPECT_EQ(trusted("b = 1\ntrust.x.y = 1\nz = 1", {"a"}),
            "b = 1\ntrust.hosts = [\"a\"]\ntrust.x.y = 1\nz = 1");
  EXPECT_EQ(trusted("trust = {}", {"a"}), "trust = { hosts = [\"a\"] }");
  EXPECT_EQ(trusted("trust = {x = {y = 1}, w = 2}", {"a"}),
            "trust = {x = {y = 1}, w = 2, hosts = [\"a\"]}");
}

TEST(Trust, MakesTheTableAboveTablesBelowIt) {
  EXPECT_EQ(trusted("[trust.more]\nx = 1\n[ trust . \"even more\".b ]\n", {"a"}),
            "[trust.more]\nx = 1\n[ trust . \"even more\".b ]\n\n[trust]\nhosts = [\"a\"]\n");
  EXPECT_EQ(trusted("['trust'.x]\n", {"a"}), "['trust'.x]\n\n[trust]\nhosts = [\"a\"]\n");
  EXPECT_EQ(trusted("[\"trus\\u0074\".x]\n", {"a"}),
            "[\"trus\\u0074\".x]\n\n[trust]\nhosts = [\"a\"]\n");
  EXPECT_EQ(trusted("[[trust.x]]\n", {"a"}), "[[trust.x]]\n\n[trust]\nhosts = [\"a\"]\n");
  EXPECT_EQ(trusted("[trust.x]\ny = 1\n[trust]\n[trust.z]\n", {"a"}),
            "[trust.x]\ny = 1\n[trust]\nhosts = [\"a\"]\n[trust.z]\n");
}

TEST(Trust, FillsAnEmptyList) {
  EXPECT_EQ(trusted("[trust]\nhosts = []\n", {"a", "b"}), "[trust]\nhosts = [\"a\", \"b\"]\n");
  EXPECT_EQ(trusted("[trust]\nhosts = [ ]", {"a"}), "[trust]\nhosts = [\"a\"]");
  EXPECT_EQ(trusted("trust.hosts = [\n]\n", {"a", "b"}),
            "trust.hosts = [\n  \"a\",\n  \"b\",\n]\n");
  EXPECT_EQ(trusted("[trust]\r\n  hosts = [ # none\r\n    # x, y\r\n  ]\r\n", {"a"}),
            "[trust]\r\n  hosts = [ # none\r\n    # x, y\r\n    \"a\",\r\n  ]\r\n");
  EXPECT_EQ(trusted("trust.hosts = [ # none\n  # x\n\t]", {"a"}),
            "trust.hosts = [ # none\n  # x\n\t  \"a\",\n\t]");
}

TEST(Trust, AddsToAListOnOneLine) {
  EXPECT_EQ(trusted("[trust]\nhosts = [\"a\"] # x\n", {"b", "c"}),
            "[trust]\nhosts = [\"a\", \"b\", \"c\"] # x\n");
  EXPECT_EQ(trusted("[trust]\nhosts = [ 'a', ]\n", {"b"}), "[trust]\nhosts = [ 'a', \"b\", ]\n");
  EXPECT_EQ(trusted("trust = {hosts=['a'],x=1}", {"b"}), "trust = {hosts=['a', \"b\"],x=1}");
  EXPECT_EQ(trusted("trust.hosts = [\"\"\"a\"\"\"]", {"b"}),
            "trust.hosts = [\"\"\"a\"\"\", \"b\"]");
}

TEST(Trust, AddsToAListOfManyLines) {
  EXPECT_EQ(trusted("[trust]\nhosts = [\n  \"a\", # one\n  'b'\n]\n", {"c"}),
            "[trust]\nhosts = [\n  \"a\", # one\n  'b',\n  \"c\"\n]\n");
  EXPECT_EQ(trusted("[trust]\nhosts = [\n  'a', # one\n  # end\n]\n", {"b", "c"}),
            "[trust]\nhosts = [\n  'a', # one\n  \"b\",\n  \"c\",\n  # end\n]\n");
  EXPECT_EQ(trusted("[trust]\r\nhosts = [\r\n\t'a' # one, two\r\n]\r\n", {"b"}),
            "[trust]\r\nhosts = [\r\n\t'a', # one, two\r\n\t\"b\"\r\n]\r\n");
  EXPECT_EQ(trusted("trust.hosts = [\n  'a' ,\n]", {"b"}), "trust.hosts = [\n  'a' ,\n  \"b\",\n]");
}

TEST(Trust, AddsToListsOfOddForms) {
  EXPECT_EQ(trusted("trust.hosts = ['a',\n  'b']", {"c"}), "trust.hosts = ['a',\n  'b', \"c\"]");
  EXPECT_EQ(trusted("trust.hosts = ['a'\n]", {"c"}), "trust.hosts = ['a', \"c\"\n]");
  EXPECT_EQ(trusted("trust.hosts = [\n'a'\n, 'b' # x\n]", {"c"}),
            "trust.hosts = [\n'a'\n, 'b', \"c\" # x\n]");
  EXPECT_EQ(trusted("trust.hosts = [\n'a'\n,\n]", {"c"}), "trust.hosts = [\n'a', \"c\"\n,\n]");
  EXPECT_EQ(trusted("trust.hosts = [\n'a' # x, y\n# z,\n, # w\n]", {"c"}),
            "trust.hosts = [\n'a', \"c\" # x, y\n# z,\n, # w\n]");
  EXPECT_EQ(trusted("trust.hosts = [\n  'a', 'b',\n]", {"c"}),
            "trust.hosts = [\n  'a', 'b', \"c\",\n]");
}

TEST(Trust, KeepsAHostOnceAndInOneForm) {
  EXPECT_EQ(trusted("", {"Build.Example.", "build.example", "[FE80::1]", "[fe80:0::1]"}),
            "[trust]\nhosts = [\"build.example\", \"[FE80::1]\"]\n");
  EXPECT_EQ(trusted("trust.hosts = ['BUILD.example.']", {"build.example"}),
            "trust.hosts = ['BUILD.example.']");
  EXPECT_EQ(trusted("trust.hosts = ['[::1]']", {"[0::1]", "[::1%25lo]", ".a", "a"}),
            "trust.hosts = ['[::1]', \"[::1%25lo]\", \".a\", \"a\"]");
  EXPECT_EQ(trusted("trust.hosts = ['a', 'A']", {"a"}), "trust.hosts = ['a', 'A']");
}

TEST(Trust, OfNobodyIsNoChange) {
  EXPECT_EQ(trusted("", {}), "");
  EXPECT_EQ(trusted("[trust]", {}), "[trust]");
}

// --- Distrusting them --------------------------------------------------------

TEST(Distrust, TakesElementsOfAListOnOneLine) {
  EXPECT_EQ(distrusted("trust.hosts = ['a', 'b', 'c'] # x", {"a"}), "trust.hosts = ['b', 'c'] # x");
  EXPECT_EQ(distrusted("trust.hosts = ['a', 'b', 'c']", {"b"}), "trust.hosts = ['a', 'c']");
  EXPECT_EQ(distrusted("trust.hosts = ['a', 'b', 'c']", {"c"}), "trust.hosts = ['a', 'b']");
  EXPECT_EQ(distrusted("trust.hosts = ['a', 'b', 'c']", {"a", "b"}), "trust.hosts = ['c']");
  EXPECT_EQ(distrusted("trust.hosts = ['a', 'b', 'c']", {"b", "c"}), "trust.hosts = ['a']");
  EXPECT_EQ(distrusted("trust.hosts = ['a', 'b', 'c']", {"a", "c"}), "trust.hosts = ['b']");
  EXPECT_EQ(distrusted("trust.hosts = ['a', 'b', 'c']", {"a", "b", "c"}), "trust.hosts = []");
  EXPECT_EQ(distrusted("trust.hosts = [ 'a', 'b', ]", {"b"}), "trust.hosts = [ 'a', ]");
  EXPECT_EQ(distrusted("trust.hosts = ['a','b','c',]", {"b"}), "trust.hosts = ['a','c',]");
  EXPECT_EQ(distrusted("trust = {hosts = [ 'a' ], x = 1}", {"a"}), "trust = {hosts = [ ], x = 1}");
}

TEST(Distrust, TakesLinesOfALongList) {
  EXPECT_EQ(distrusted("[trust]\nhosts = [\n  'a',\n  'b',\n  'c'\n]\n", {"b"}),
            "[trust]\nhosts = [\n  'a',\n  'c'\n]\n");
  EXPECT_EQ(distrusted("[trust]\nhosts = [\n  'a',\n  'b', # x\n  'c'\n]\n", {"c"}),
            "[trust]\nhosts = [\n  'a',\n  'b' # x\n]\n");
  EXPECT_EQ(distrusted("[trust]\r\nhosts = [\r\n  'a',\r\n  'b',\r\n]\r\n", {"a", "b"}),
            "[trust]\r\nhosts = [\r\n]\r\n");
  EXPECT_EQ(distrusted("trust.hosts = [\n  'a', 'b',\n  'c', 'd',\n]", {"b", "c"}),
            "trust.hosts = [\n  'a',\n  'd',\n]");
}

TEST(Distrust, LeavesComments) {
  EXPECT_EQ(
      distrusted("trust.hosts = [ # list\n  # of a\n  'a',  # is a\n  'b'  # is b\n  # end\n]",
                 {"a", "b"}),
      "trust.hosts = [ # list\n  # of a\n  # is a\n  # is b\n  # end\n]");
  EXPECT_EQ(distrusted("trust.hosts = ['a' # 'x', y\n, # comma\n'b']", {"a"}),
            "trust.hosts = [# 'x', y\n# comma\n'b']");
  EXPECT_EQ(distrusted("trust.hosts = ['a' # x\n, # comma\n'b']", {"b"}),
            "trust.hosts = ['a' # x\n# comma\n]");
}

TEST(Distrust, TakesCommasThatBeginLines) {
  EXPECT_EQ(distrusted("trust.hosts = [\n  'a'\n, 'b'\n, 'c'\n]", {"a"}),
            "trust.hosts = [\n'b'\n, 'c'\n]");
  EXPECT_EQ(distrusted("trust.hosts = [\n  'a'\n, 'b'\n, 'c'\n]", {"c"}),
            "trust.hosts = [\n  'a'\n, 'b'\n]");
}

TEST(Distrust, TakesAllThatAreEqual) {
  EXPECT_EQ(distrusted("trust.hosts = ['a', 'A.', '.a', \"\\u0061\", 'b']", {"a"}),
            "trust.hosts = ['.a', 'b']");
  EXPECT_EQ(distrusted("trust.hosts = ['[::1]', '[0::1]', '[::1%25lo]', '::2.a']", {"[0:0::1]"}),
            "(nothing)");  // the last one is a fault
  EXPECT_EQ(distrusted("trust.hosts = ['[::1]', '[0::1]', '[::1%25lo]']", {"[0:0::1]"}),
            "trust.hosts = ['[::1%25lo]']");
  EXPECT_EQ(distrusted("trust.hosts = ['''\na''', \"\"\"\\\n  b\"\"\"]", {"a", "b"}),
            "trust.hosts = []");
}

TEST(Distrust, LeavesWhatIsNotThere) {
  EXPECT_EQ(distrusted("", {"a"}), "");
  EXPECT_EQ(distrusted("[trust]\n", {"a"}), "[trust]\n");
  EXPECT_EQ(distrusted("trust.hosts = []", {"a"}), "trust.hosts = []");
  EXPECT_EQ(distrusted("trust.hosts = ['b.a', '.a',]", {"a"}), "trust.hosts = ['b.a', '.a',]");
  EXPECT_EQ(distrusted("[x]\ntrust.hosts = ['a']\nhosts = ['a']\n", {"a"}),
            "[x]\ntrust.hosts = ['a']\nhosts = ['a']\n");
}

// --- All of it ---------------------------------------------------------------

TEST(Edit, MakesSeveralChangesAtOnce) {
  EXPECT_EQ(made("# my file\n[use]\nvnc = 'a' # x\nssh = 'b'\n\n[trust]\nhosts = ['c', 'd']\n",
                 {.use = {{"vnc", std::nullopt}, {"ssh", "e"}, {"rdp", "f"}},
                  .distrust = hosts({"c", "g"}),
                  .trust = hosts({"g", "d"})}),
            "# my file\n[use]\n# x\nssh = 'e'\nrdp = \"f\"\n\n[trust]\nhosts = ['d', \"g\"]\n");
  EXPECT_EQ(made("", {.use = {{"vnc", "a"}}, .trust = hosts({"b"})}),
            "[use]\nvnc = \"a\"\n\n[trust]\nhosts = [\"b\"]\n");
}

TEST(Edit, TrustsWhatItDistrustsFirst) {
  EXPECT_EQ(made("trust.hosts = ['A', 'b']", {.distrust = hosts({"a"}), .trust = hosts({"a"})}),
            "trust.hosts = ['b', \"a\"]");
}

TEST(Edit, OfNothingIsTheSameText) {
  EXPECT_EQ(made("", {}), "");
  EXPECT_EQ(made(" \r\n#x\n[use] \n", {}), " \r\n#x\n[use] \n");
}

TEST(Edit, KeepsAllElse) {
  const std::string before =
      "\xEF\xBB\xBF# \xE2\x80\x94 mine \xE2\x80\x94\r\n"
      "title = \"\"\"[use]\r\nvnc = 'no'\r\n\"\"\"\r\n"
      "nan = nan\r\ndate = 1979-05-27 07:32:00\r\n"
      "list = [1, [\"]\"], {use = {vnc = '#'}}]\r\n\r\n"
      "[use] # ]\r\n\"vnc\" = 'a' # 'b'\r\n\r\n"
      "[other.use]\r\nvnc = 'b'\r\n\r\n[[more]]\r\ntrust.hosts = ['a']\r\n[[more]]\r\n";
  const std::string after =
      "\xEF\xBB\xBF# \xE2\x80\x94 mine \xE2\x80\x94\r\n"
      "title = \"\"\"[use]\r\nvnc = 'no'\r\n\"\"\"\r\n"
      "nan = nan\r\ndate = 1979-05-27 07:32:00\r\n"
      "list = [1, [\"]\"], {use = {vnc = '#'}}]\r\n\r\n"
      "[use] # ]\r\n\"vnc\" = 'c' # 'b'\r\nssh = \"d\"\r\n\r\n"
      "[other.use]\r\nvnc = 'b'\r\n\r\n[[more]]\r\ntrust.hosts = ['a']\r\n[[more]]\r\n"
      "\r\n[trust]\r\nhosts = [\"a\"]\r\n";
  EXPECT_EQ(made(before, {.use = {{"vnc", "c"}, {"ssh", "d"}}, .trust = hosts({"a"})}), after);
}

TEST(Edit, RefusesATextWithAFault) {
  EXPECT_EQ(used("[use]\nvnc = a\n", {{"vnc", "a"}}), "(nothing)");
  EXPECT_EQ(used("use = 1", {{"vnc", "a"}}), "(nothing)");
  EXPECT_EQ(used("[[use]]\n", {{"vnc", "a"}}), "(nothing)");
  EXPECT_EQ(used("[use]\nvnc = 1\n", {{"vnc", "a"}}), "(nothing)");
  EXPECT_EQ(used("[use.x]\ny = 1\n", {{"vnc", "a"}}), "(nothing)");
  EXPECT_EQ(forgot("[use]\nVnc = 'a'\n", {"Vnc"}), "(nothing)");
  EXPECT_EQ(trusted("trust = 'a'\n", {"a"}), "(nothing)");
  EXPECT_EQ(trusted("trust.hosts = 'a'\n", {"a"}), "(nothing)");
  EXPECT_EQ(trusted("trust.hosts = ['+']\n", {"a"}), "(nothing)");
  EXPECT_EQ(distrusted("trust.hosts = [1, 'a']\n", {"a"}), "(nothing)");
  EXPECT_EQ(made("use = 1\n", {}), "(nothing)");
}

}  // namespace settings_edit_test
