// SPDX-License-Identifier: MIT
// Hosts, as links and settings name them.

#include "host.h"

#include <gtest/gtest.h>

#include <string>

#include "texts.h"
#include "trusted.h"

namespace hopopen::host_test {
namespace {

// The host in the form that is passed on, or the offset of the fault.
std::string read(const std::string& text) {
  host machine;
  const auto fault = readHost({text, 0}, machine);
  return fault ? "fault at " + std::to_string(fault->position) : machine.bracketed();
}

TEST(Host, IsANameInLowerCaseWithoutItsLastDot) {
  EXPECT_EQ("localhost", read("localhost"));
  EXPECT_EQ("host.example.org", read("Host.EXAMPLE.org."));
  EXPECT_EQ("_a-b.c_d", read("_a-b.c_d"));
  EXPECT_EQ("a--b", read("a--b"));
  EXPECT_EQ("a", read("a"));
}

TEST(Host, IsDecodedOnce) {
  EXPECT_EQ("host", read("%48o%73t"));
  EXPECT_EQ("fault at 1", read("h%2541"));
  EXPECT_EQ("fault at 0", read("%5B::1%5D"));
  EXPECT_EQ("fault at 1", read("h%00"));
}

TEST(Host, PointsAtTheCharacterThatNamesCannotHave) {
  EXPECT_EQ("fault at 3", read("a.b+c"));
  EXPECT_EQ("fault at 1", read("a,b"));
  EXPECT_EQ("fault at 0", read("-a"));
  EXPECT_EQ("fault at 1", read("a-"));
  EXPECT_EQ("fault at 1", read("a-.b"));
  EXPECT_EQ("fault at 2", read("a.-b"));
  EXPECT_EQ("fault at 6", read("ho%73t%20x"));
  EXPECT_EQ("fault at 1", read("a%C3%A9"));
}

TEST(Host, HasNoEmptyPart) {
  EXPECT_EQ("fault at 0", read(""));
  EXPECT_EQ("fault at 0", read("."));
  EXPECT_EQ("fault at 0", read(".a"));
  EXPECT_EQ("fault at 2", read("a..b"));
  EXPECT_EQ("fault at 2", read("a.."));
}

TEST(Host, HasPartsOfAtMost63Characters) {
  EXPECT_EQ(repeated(63, "a") + ".b", read(repeated(63, "a") + ".b"));
  EXPECT_EQ("fault at 63", read(repeated(64, "a") + ".b"));
  EXPECT_EQ("fault at 65", read("x." + repeated(64, "a")));
}

TEST(Host, HasAtMost253Characters) {
  const std::string longest = repeated(126, "a.") + "b";
  ASSERT_EQ(253U, longest.size());
  EXPECT_EQ(longest, read(longest));
  EXPECT_EQ(longest, read(longest + "."));
  EXPECT_EQ("fault at 253", read(longest + "c"));
}

TEST(Host, IsAnIPv4AddressWhereItsLastPartIsANumber) {
  EXPECT_EQ("127.0.0.1", read("127.0.0.1"));
  EXPECT_EQ("0.0.0.0", read("0.0.0.0"));
  EXPECT_EQ("255.255.255.255", read("255.255.255.255"));
  EXPECT_EQ("1.2.3.4", read("1.2.3.%34"));
  for (const char* const bad : {"127.1", "2130706433", "0x7f.1", "1.2.3.4.", "256.0.0.1", "1.2.3",
                                "1.2.3.4.5", "01.2.3.4", "1.2.3.04", "host.5", "host.0x",
                                "host.0XaF", "0x", "1.2.3.0x4", "host.0x.", "host.5.", "0"}) {
    EXPECT_EQ("fault at 0", read(bad)) << bad;
  }
  EXPECT_EQ("0x.host", read("0x.host"));
  EXPECT_EQ("host.0xg", read("host.0xg"));
  EXPECT_EQ("host.5a", read("host.5a"));
  EXPECT_EQ("1.2.3.4a", read("1.2.3.4a"));
}

TEST(Host, IsAnIPv6AddressInBracketsAsTheLinkHasIt) {
  EXPECT_EQ("[::1]", read("[::1]"));
  EXPECT_EQ("[2001:DB8::A]", read("[2001:DB8::A]"));
  EXPECT_EQ("[::ffff:1.2.3.4]", read("[::ffff:1.2.3.4]"));
  for (const char* const bad : {"[]", "[1.2.3.4]", "[v1.a]", "[::1::]", "[:::]", "[12345::]",
                                "[host]", "[::ffff:01.2.3.4]"}) {
    EXPECT_EQ("fault at 1", read(bad)) << bad;
  }
}

TEST(Host, MayHaveAZone) {
  EXPECT_EQ("[fe80::1%eth0]", read("[fe80::1%25eth0]"));
  EXPECT_EQ("[fe80::1%Aa_.-]", read("[fe80::1%25Aa_.-]"));
  EXPECT_EQ("[fe80::1%123456789012345]", read("[fe80::1%25123456789012345]"));
  EXPECT_EQ("fault at 26", read("[fe80::1%251234567890123456]"));
  EXPECT_EQ("fault at 11", read("[fe80::1%25]"));
  EXPECT_EQ("fault at 13", read("[fe80::1%25ab~]"));
  EXPECT_EQ("fault at 11", read("[fe80::1%25%41]"));
  EXPECT_EQ("fault at 8", read("[fe80::1%41]"));
}

TEST(Host, IsWrittenInThreeWays) {
  host machine;
  ASSERT_FALSE(readHost({"[fe80::A%25eth0]", 0}, machine));
  EXPECT_EQ("fe80::A%eth0", machine.plain());
  EXPECT_EQ("[fe80::A%eth0]", machine.bracketed());
  EXPECT_EQ("[fe80::A%25eth0]", machine.inLink());
  ASSERT_FALSE(readHost({"[::1]", 0}, machine));
  EXPECT_EQ("::1", machine.plain());
  EXPECT_EQ("[::1]", machine.inLink());
  ASSERT_FALSE(readHost({"Host", 0}, machine));
  EXPECT_EQ("host", machine.plain());
  EXPECT_EQ("host", machine.bracketed());
  EXPECT_EQ("host", machine.inLink());
}

// --- Trust -------------------------------------------------------------------

bool trusts(const std::string& entry, const std::string& other) {
  host machine;
  const auto read = readTrusted(entry);
  return read && !readHost({other, 0}, machine) && read->covers(machine);
}

TEST(Trusted, IsAHostOrAllBelowADomain) {
  EXPECT_TRUE(trusts("Build.Example", "build.example."));
  EXPECT_FALSE(trusts("build.example", "a.build.example"));
  EXPECT_TRUE(trusts(".lab.example", "a.lab.example"));
  EXPECT_TRUE(trusts(".lab.example", "a.b.LAB.example"));
  EXPECT_FALSE(trusts(".lab.example", "lab.example"));
  EXPECT_FALSE(trusts(".lab.example", "slab.example"));
  EXPECT_FALSE(trusts(".lab.example", "xlab.example"));
}

TEST(Trusted, ComparesIPv6AddressesByValueAndZone) {
  EXPECT_TRUE(trusts("[::1]", "[0:0::0:1]"));
  EXPECT_TRUE(trusts("[FE80::1%25eth0]", "[fe80::1%25eth0]"));
  EXPECT_FALSE(trusts("[fe80::1]", "[fe80::1%25eth0]"));
  EXPECT_FALSE(trusts("[fe80::1%25eth0]", "[fe80::1%25eth1]"));
  EXPECT_FALSE(trusts("[::1]", "[::2]"));
  EXPECT_FALSE(trusts("1.2.3.4", "[::ffff:1.2.3.4]"));
  EXPECT_TRUE(trusts("1.2.3.4", "1.2.3.4"));
}

TEST(Trusted, IsNothingElse) {
  for (const char* const bad : {"", ".", "..", "a b", "::1", ".[::1]", ".1.2.3.4", "*.example",
                                "a:5900", "vnc://a", "a/", "a@b"}) {
    EXPECT_FALSE(readTrusted(bad)) << bad;
  }
}

TEST(Trusted, IsKeptAsHostsArePassedOn) {
  EXPECT_EQ(".lab.example", readTrusted(".Lab.Example.")->text());
  EXPECT_EQ("[::1]", readTrusted("[::1]")->text());
  EXPECT_EQ("[fe80::1%25eth0]", readTrusted("[fe80::1%25eth0]")->text());
  EXPECT_EQ("1.2.3.4", readTrusted("1.2.3.4")->text());
}

}  // namespace
}  // namespace hopopen::host_test
