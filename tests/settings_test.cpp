// SPDX-License-Identifier: MIT
// What hopopen reads in a settings file, and what it complains about.

#include "settings.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace settings_test {

namespace {

using hopopen::faults;
using hopopen::readSettings;
using hopopen::settings;

using choices = std::map<std::string, std::string>;

// The faults of a text, a line for each.
std::string faultsOf(const std::string& text) {
  faults found;
  readSettings(text, "f", found);
  std::string result;
  for (const auto& fault : found) {
    result += fault.lineOfText() + "\n";
  }
  return result;
}

settings read(const std::string& text) {
  faults found;
  settings result = readSettings(text, "f", found);
  EXPECT_TRUE(found.empty()) << found.front().lineOfText();
  return result;
}

std::vector<std::string> hostsOf(const std::string& text) {
  std::vector<std::string> result;
  for (const auto& host : read(text).trust) {
    result.push_back(host.text());
  }
  return result;
}

using texts = std::vector<std::string>;

}  // namespace

TEST(Settings, MayBeEmpty) {
  EXPECT_EQ(read("").file, "f");
  EXPECT_EQ(read("").use, choices());
  EXPECT_TRUE(read("").trust.empty());
  EXPECT_TRUE(read("# nothing\n").use.empty());
  EXPECT_TRUE(read("[use]\n[trust]\n").use.empty());
  EXPECT_TRUE(read("[trust]\nhosts = []\n").trust.empty());
}

TEST(Settings, NameAViewerForAScheme) {
  EXPECT_EQ(read("[use]\nvnc = \"tigervnc\"\nssh = 'putty'\n").use,
            (choices{{"ssh", "putty"}, {"vnc", "tigervnc"}}));
  EXPECT_EQ(read("use.vnc = '''a'''\nuse . 'x+y.z-1' = \"\\u0062\"").use,
            (choices{{"vnc", "a"}, {"x+y.z-1", "b"}}));
  EXPECT_EQ(read("use = { vnc = \"a\" }").use, (choices{{"vnc", "a"}}));
}

TEST(Settings, LeaveItToOthersWhetherAViewerExists) {
  EXPECT_EQ(read("[use]\nvnc = \"\"\nssh = \"\\u0000\\n/\"\n").use,
            (choices{{"ssh", std::string("\0\n/", 3)}, {"vnc", ""}}));
}

TEST(Settings, NameHosts) {
  EXPECT_EQ(
      hostsOf("[trust]\nhosts = [\"Build.Example.\", '.lab.example', '[FE80::1]', '10.0.0.1']\n"),
      (texts{"build.example", ".lab.example", "[FE80::1]", "10.0.0.1"}));
  EXPECT_EQ(hostsOf("trust.hosts = [\n  '''a''', # one\n  \"b\",\n]"), (texts{"a", "b"}));
  EXPECT_EQ(hostsOf("trust = {hosts = ['[fe80::1%25eth0]']}"), (texts{"[fe80::1%25eth0]"}));
}

TEST(Settings, MayHaveHostsTwice) {
  EXPECT_EQ(hostsOf("trust.hosts = ['a', 'A']"), (texts{"a", "a"}));
}

TEST(Settings, MayHaveAByteOrderMarkAndAnyLineEnds) {
  EXPECT_EQ(read("\xEF\xBB\xBF[use]\r\nvnc = 'a'\r\n").use, (choices{{"vnc", "a"}}));
}

TEST(Settings, MayHaveKeysThatMeanNothing) {
  EXPECT_EQ(faultsOf("used = 1\n[trust]\nhost = 1\nnames = ['+']\n[trust.more]\nhosts = 1\n"
                     "[[other]]\nuse = 1\n[Use]\nVnc = 1\n[Trust]\nhosts = 1\n"),
            "");
}

TEST(Settings, MustBeTOML) {
  EXPECT_EQ(faultsOf("[use]\nvnc = tigervnc\n"),
            "f:2:8: Error while parsing boolean: expected 'true', saw 'ti'\n");
  EXPECT_EQ(faultsOf("[use]\nvnc = 'a\n"),
            "f:2:9: Error while parsing literal string: control characters other than TAB "
            "(U+0009) are explicitly prohibited\n");
  EXPECT_EQ(faultsOf("[use]\n[use]\n"),
            "f:2:1: Error while parsing table header: cannot redefine existing table 'use'\n");
}

TEST(Settings, MustBeUTF8) {
  EXPECT_EQ(faultsOf("# \xFF\n"), "f:1:2: Encountered invalid utf-8 sequence\n");
  EXPECT_EQ(faultsOf(std::string("a = 1\n\0", 7)),
            "f:2:1: Error while parsing root table: expected keys, tables, whitespace or "
            "comments, saw '\\u0000'\n");
}

TEST(Settings, AreComplainedAboutInPrintableWords) {
  EXPECT_EQ(faultsOf("\xC3\xA9 = 1\n"),
            "f:1:1: Error while parsing root table: expected keys, tables, whitespace or "
            "comments, saw '\\xC3\\xA9'\n");
  EXPECT_EQ(faultsOf("[use]\n\"\\u00E9\\n\" = 'a'\n"),
            "f:2:1: \"\\xC3\\xA9\\x0A\" is not a scheme in lower case\n");
}

TEST(Settings, MustHaveTables) {
  EXPECT_EQ(faultsOf("use = 'a'\ntrust = []\n"),
            "f:1:7: \"use\" must be a table\nf:2:9: \"trust\" must be a table\n");
  EXPECT_EQ(faultsOf("[[use]]\n"), "f:1:1: \"use\" must be a table\n");
  EXPECT_EQ(faultsOf("[[trust]]\nhosts = []\n"), "f:1:1: \"trust\" must be a table\n");
}

TEST(Settings, MustHaveSchemesInLowerCase) {
  EXPECT_EQ(faultsOf("[use]\nVnc = 'a'\n"), "f:2:1: \"Vnc\" is not a scheme in lower case\n");
  EXPECT_EQ(faultsOf("[use]\nvnC = 'a'\n"), "f:2:1: \"vnC\" is not a scheme in lower case\n");
  EXPECT_EQ(faultsOf("[use]\n1a = 'a'\n"), "f:2:1: \"1a\" is not a scheme in lower case\n");
  EXPECT_EQ(faultsOf("[use]\na_b = 'a'\n"), "f:2:1: \"a_b\" is not a scheme in lower case\n");
  EXPECT_EQ(faultsOf("[use]\n'' = 'a'\n"), "f:2:1: \"\" is not a scheme in lower case\n");
  EXPECT_EQ(faultsOf("use.'+a' = 'a'\n"), "f:1:5: \"+a\" is not a scheme in lower case\n");
  EXPECT_EQ(faultsOf("[use]\n'a:' = 'a'\n"), "f:2:1: \"a:\" is not a scheme in lower case\n");
  EXPECT_EQ(faultsOf("[use]\n'a+-.9z' = 'a'\n"), "");
}

TEST(Settings, MustNameViewersByTexts) {
  EXPECT_EQ(faultsOf("[use]\nvnc = 1\n"), "f:2:7: the viewer of \"vnc\" must be a text\n");
  EXPECT_EQ(faultsOf("[use]\nvnc = ['a']\n"), "f:2:7: the viewer of \"vnc\" must be a text\n");
  EXPECT_EQ(faultsOf("[use.vnc]\nname = 'a'\n"), "f:1:1: the viewer of \"vnc\" must be a text\n");
}

TEST(Settings, MustHaveAListOfHosts) {
  EXPECT_EQ(faultsOf("[trust]\nhosts = 'a'\n"), "f:2:9: \"hosts\" must be a list of texts\n");
  EXPECT_EQ(faultsOf("[trust.hosts]\n"), "f:1:1: \"hosts\" must be a list of texts\n");
  EXPECT_EQ(faultsOf("[trust]\nhosts = ['a', 1, ['b'],\n true]\n"),
            "f:2:15: \"hosts\" must be a list of texts\n"
            "f:2:18: \"hosts\" must be a list of texts\n"
            "f:3:2: \"hosts\" must be a list of texts\n");
}

TEST(Settings, MustHaveHostsAsLinksHaveThem) {
  for (const std::string bad :
       {"", ".", "..a", "a..b", "-a", "127.1", "1.2.3.4.", ".1.2.3.4", "::1", ".[::1]", "[::1",
        "[::1%eth0]", "a b", "a+b", "a:5900", "*.lab.example"}) {
    EXPECT_EQ(faultsOf("trust.hosts = ['" + bad + "']"), "f:1:16: \"" + bad + "\" is not a host\n");
  }
}

TEST(Settings, CutABadHostShortWhereItIsTold) {
  EXPECT_EQ(faultsOf("trust.hosts = ['" + std::string(121, '+') + "']"),
            "f:1:16: \"" + std::string(120, '+') + "...\" is not a host\n");
}

TEST(Settings, CountColumnsInCharacters) {
  EXPECT_EQ(faultsOf("trust = {x = '\xC3\xA9\xC3\xA9', hosts = 1}\n"),
            "f:1:28: \"hosts\" must be a list of texts\n");
}

TEST(Settings, TellAllFaultsInTheOrderOfTheText) {
  EXPECT_EQ(faultsOf("[trust]\nhosts = ['+', 1]\n[use]\nz = 1\nB = 'x'\nA = 2\n"),
            "f:2:10: \"+\" is not a host\n"
            "f:2:15: \"hosts\" must be a list of texts\n"
            "f:4:5: the viewer of \"z\" must be a text\n"
            "f:5:1: \"B\" is not a scheme in lower case\n"
            "f:6:1: \"A\" is not a scheme in lower case\n"
            "f:6:5: the viewer of \"A\" must be a text\n");
}

TEST(Settings, AddTheirFaultsToThoseOfOthers) {
  faults found = {{"other", 9, 9, "bad"}};
  readSettings("use = 1", "f", found);
  ASSERT_EQ(found.size(), 2U);
  EXPECT_EQ(found[0].lineOfText(), "other:9:9: bad");
  EXPECT_EQ(found[1].lineOfText(), "f:1:7: \"use\" must be a table");
}

}  // namespace settings_test
