// SPDX-License-Identifier: MIT
// What hopopen reads in the tables that a settings file has for hosts.

#include <gtest/gtest.h>

#include <string>

#include "settings.h"

namespace settings_hosts_test {

namespace {

// The faults of a text, a line for each.
std::string faultsOf(const std::string& text) {
  hopopen::faults found;
  hopopen::readSettings(text, "f", found);
  std::string result;
  for (const auto& fault : found) {
    result += fault.lineOfText() + "\n";
  }
  return result;
}

// What the tables say, a line for each.
std::string read(const std::string& text) {
  hopopen::faults found;
  const hopopen::settings all = hopopen::readSettings(text, "f", found);
  EXPECT_TRUE(found.empty()) << found.front().lineOfText();
  std::string result;
  for (const auto& table : all.hosts) {
    result += table.where.text() + ':';
    for (const auto& [scheme, viewer] : table.use) {
      result.append(" ").append(scheme).append("=").append(viewer);
    }
    result += table.user ? " user=" + *table.user : "";
    result += table.trust ? (*table.trust ? " trust" : " distrust") : "";
    result += table.through ? " through=" + table.through->text() : "";
    result += '\n';
  }
  return result;
}

constexpr const char* USER = "\"user\" must be a user name that links may have\n";
constexpr const char* TRUST = "\"trust\" must be true or false\n";
constexpr const char* THROUGH = "\"through\" must be a gateway, as in \"user@gateway:port\"\n";

}  // namespace

TEST(HostTables, SayWhatHoldsForAHost) {
  EXPECT_EQ(read("[host.\"build.example\"]\nuse = {vnc = \"remmina\", ssh = 'putty'}\n"
                 "user = \"build\"\ntrust = true\nthrough = \"me@gate.example:2222\"\n"
                 "[host.\".lab.example\"]\ntrust = false\n"),
            "build.example: ssh=putty vnc=remmina user=build trust through=me@gate.example:2222\n"
            ".lab.example: distrust\n");
}

TEST(HostTables, MayBeOfAnyFormThatTomlHas) {
  EXPECT_EQ(read("host.\"b.example\".user = 'x'\nhost.a.use.vnc = 'v'\n"),
            "b.example: user=x\na: vnc=v\n");
  EXPECT_EQ(read("host = {a = {user = 'x', use.vnc = 'v'}}"), "a: vnc=v user=x\n");
  EXPECT_EQ(read("[host]\na = {trust = true}\n'.b'.user = 'x'\n"), "a: trust\n.b: user=x\n");
  EXPECT_EQ(read("[host.a.use]\nvnc = 'v'\n[host.a]\nuser = 'x'\n"), "a: vnc=v user=x\n");
  EXPECT_EQ(read("[host]\n[host.a]\n"), "a:\n");
}

TEST(HostTables, AreForHostsAsListsHaveThem) {
  EXPECT_EQ(read("[host.'Build.Example.']\n[host.'[FE80::1%25eth0]']\n[host.'10.0.0.1']\n"),
            "build.example:\n[FE80::1%25eth0]:\n10.0.0.1:\n");
  EXPECT_EQ(faultsOf("[host.'a b']\n[host.'']\n[host.'.']\n[host.'..a']\n[host.'.10.0.0.1']\n"
                     "[host.'fe80::1']\n[host.'127.1']\n[host.'*.a']\n[host.'a:1']\n"),
            "f:1:7: \"a b\" is not a host\nf:2:7: \"\" is not a host\nf:3:7: \".\" is not a host\n"
            "f:4:7: \"..a\" is not a host\nf:5:7: \".10.0.0.1\" is not a host\n"
            "f:6:7: \"fe80::1\" is not a host\nf:7:7: \"127.1\" is not a host\n"
            "f:8:7: \"*.a\" is not a host\nf:9:7: \"a:1\" is not a host\n");
}

TEST(HostTables, AreOneForEachHost) {
  EXPECT_EQ(faultsOf("[host.B]\n[host.a]\n[host.b]\n"),
            "f:3:7: there is another table for the host \"b\"\n");
  EXPECT_EQ(faultsOf("[host.'b.']\n[host.b]\n"),
            "f:2:7: there is another table for the host \"b\"\n");
  EXPECT_EQ(faultsOf("[host.'[::1]']\n[host.'[0::1]']\n[host.'[0:0::1]']\n"),
            "f:2:7: there is another table for the host \"[0::1]\"\n"
            "f:3:7: there is another table for the host \"[0:0::1]\"\n");
  EXPECT_EQ(faultsOf("host = {'.B' = {}, '.b' = {}}"),
            "f:1:20: there is another table for the host \".b\"\n");
  EXPECT_EQ(faultsOf("[host.b]\n[host.'.b']\n[host.'[::1]']\n[host.'[::1%25a]']\n"), "");
}

TEST(HostTables, MustBeTables) {
  EXPECT_EQ(faultsOf("host = 'a'"), "f:1:8: \"host\" must be a table\n");
  EXPECT_EQ(faultsOf("[[host]]\n"), "f:1:1: \"host\" must be a table\n");
  EXPECT_EQ(faultsOf("host.a = true"), "f:1:10: \"a\" must be a table\n");
  EXPECT_EQ(faultsOf("[[host.a]]\n"), "f:1:1: \"a\" must be a table\n");
}

TEST(HostTables, NameViewersForSchemes) {
  EXPECT_EQ(faultsOf("[host.a]\nuse = 'tigervnc'\n"), "f:2:7: \"use\" must be a table\n");
  EXPECT_EQ(faultsOf("[host.a]\nuse = {vnc = 1}\n"),
            "f:2:14: the viewer of \"vnc\" must be a text\n");
  EXPECT_EQ(faultsOf("[host.a]\nuse = {VNC = 'b'}\n"),
            "f:2:8: \"VNC\" is not a scheme in lower case\n");
}

TEST(HostTables, NameUsersThatLinksMayHave) {
  EXPECT_EQ(read("[host.a]\nuser = 'LAB\\me.x@y-1_'\n"), "a: user=LAB\\me.x@y-1_\n");
  EXPECT_EQ(read("[host.a]\nuser = '" + std::string(64, 'u') + "'\n"),
            "a: user=" + std::string(64, 'u') + "\n");
  for (const std::string bad : {"''", "'-l'", "'-oProxyCommand=x'", "'a b'", "'a:b'", "'a%41'",
                                "\"a\\n\"", "'a;b'", "'\xC3\xA9'", "1", "true", "['a']"}) {
    EXPECT_EQ(faultsOf("[host.a]\nuser = " + bad + "\n"), std::string("f:2:8: ") + USER) << bad;
  }
  EXPECT_EQ(faultsOf("[host.a]\nuser = '" + std::string(65, 'u') + "'\n"),
            std::string("f:2:8: ") + USER);
}

TEST(HostTables, TrustOrDistrust) {
  for (const std::string bad : {"'true'", "1", "0", "[]", "{}"}) {
    EXPECT_EQ(faultsOf("[host.a]\ntrust = " + bad + "\n"), std::string("f:2:9: ") + TRUST) << bad;
  }
}

TEST(HostTables, NameGateways) {
  EXPECT_EQ(read("[host.a]\nthrough = 'GATE.'\n"), "a: through=gate\n");
  for (const std::string bad : {"''", "'-gate'", "'me:secret@gate'", "'gate:0'", "'a,b'", "22",
                                "'ssh://gate'", "'a@b@c'", "true", "{}"}) {
    EXPECT_EQ(faultsOf("[host.a]\nthrough = " + bad + "\n"), std::string("f:2:11: ") + THROUGH)
        << bad;
  }
}

TEST(HostTables, MayHaveKeysThatMeanNothing) {
  EXPECT_EQ(read("[host.a]\nUser = 1\nTrust = 1\nvia = 1\n[host.a.more]\nuser = 1\n[Host.a]\n"
                 "user = 1\n"),
            "a:\n");
}

TEST(HostTables, TellAllFaultsInTheOrderOfTheText) {
  EXPECT_EQ(faultsOf("[host.z]\nthrough = 1\nuse.vnc = 1\n[host.b]\ntrust = 1\nuser = 1\n"
                     "[host.'+']\nuser = 1\n"),
            std::string("f:2:11: ") + THROUGH + "f:3:11: the viewer of \"vnc\" must be a text\n" +
                "f:5:9: " + TRUST + "f:6:8: " + USER + "f:7:7: \"+\" is not a host\n");
}

}  // namespace settings_hosts_test
