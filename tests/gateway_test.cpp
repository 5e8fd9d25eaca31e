// SPDX-License-Identifier: MIT
// How the name of a gateway is read.

#include "gateway.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace gateway_test {

namespace {

using hopopen::gateway;
using hopopen::readGateway;

// "user host port", with "-" for what is absent, or "bad".
std::string read(const std::string& text) {
  const std::optional<gateway> result = readGateway(text);
  return result ? result->user.value_or("-") + ' ' + result->machine.bracketed() + ' ' +
                      (result->port ? std::to_string(*result->port) : "-")
                : "bad";
}

std::string repeated(std::size_t count) {
  return std::string(count, 'a');
}

}  // namespace

TEST(Gateway, IsAHostWithOrWithoutAUserAndAPort) {
  EXPECT_EQ(read("gate.example"), "- gate.example -");
  EXPECT_EQ(read("me@gate.example"), "me gate.example -");
  EXPECT_EQ(read("gate.example:2222"), "- gate.example 2222");
  EXPECT_EQ(read("me@gate.example:2222"), "me gate.example 2222");
}

TEST(Gateway, MayLeaveUserAndPortEmpty) {
  EXPECT_EQ(read("@gate:"), "- gate -");
}

TEST(Gateway, HasTheHostOfALink) {
  EXPECT_EQ(read("GATE.Example."), "- gate.example -");
  EXPECT_EQ(read("%67ate"), "- gate -");
  EXPECT_EQ(read("10.0.0.1:22"), "- 10.0.0.1 22");
  EXPECT_EQ(read("[fe80::1%25eth0]:22"), "- [fe80::1%eth0] 22");
  EXPECT_EQ(read("me@[::1]"), "me [::1] -");
  for (const char* bad :
       {"",        "@",       ":22",    "me@",        "me@:22", "-gate",      "me@-gate",
        "ga te",   "gate/",   "gate,",  "ssh://gate", "127.1",  "1.2.3.4.",   "0x7f.1",
        "fe80::1", "[::1]x",  "[::1",   "::1]",       "[g]",    "[::1%eth0]", "gate%",
        "gate%2",  "gate%00", "gate\n", "gate,gate2"}) {
    EXPECT_EQ(read(bad), "bad") << bad;
  }
}

TEST(Gateway, HasTheUserOfALink) {
  EXPECT_EQ(read("_0.@gate"), "_0. gate -");
  EXPECT_EQ(read("LAB\\me@gate"), "LAB\\me gate -");
  EXPECT_EQ(read("LAB%5Cme@gate"), "LAB\\me gate -");
  EXPECT_EQ(read("me%40lab@gate"), "me@lab gate -");
  EXPECT_EQ(read(repeated(64) + "@gate"), repeated(64) + " gate -");
  for (const char* bad : {"-me@gate", "-oProxyCommand=x@gate", "me@lab@gate", "me:secret@gate",
                          "me:@gate", "me;x=y@gate", "m e@gate", "%2Dme@gate", "me%2@gate",
                          "me%2540lab@gate", "me%00@gate", "me%0A@gate", "\xC3\xA9@gate"}) {
    EXPECT_EQ(read(bad), "bad") << bad;
  }
  EXPECT_EQ(read(repeated(65) + "@gate"), "bad");
}

TEST(Gateway, HasThePortOfALink) {
  EXPECT_EQ(read("gate:1"), "- gate 1");
  EXPECT_EQ(read("gate:65535"), "- gate 65535");
  for (const char* bad : {"gate:0", "gate:65536", "gate:022", "gate:+1", "gate:-1", "gate: 1",
                          "gate:22:", "gate:22 ", "gate:ssh", "gate:%31", "gate:4294967318"}) {
    EXPECT_EQ(read(bad), "bad") << bad;
  }
}

TEST(Gateway, IsWrittenAsItIsRead) {
  EXPECT_EQ(readGateway("me%40lab@GATE.:2222")->text(), "me@lab@gate:2222");
  EXPECT_EQ(readGateway("[fe80::1%25eth0]:22")->text(), "[fe80::1%eth0]:22");
  EXPECT_EQ(readGateway("gate")->text(), "gate");
}

TEST(Gateway, IsComparedByWhatItMeans) {
  EXPECT_EQ(readGateway("me@GATE.:22"), readGateway("me@gate:22"));
  EXPECT_EQ(readGateway("[::1]"), readGateway("[0:0::1]"));
  EXPECT_FALSE(readGateway("me@gate") == readGateway("Me@gate"));
  EXPECT_FALSE(readGateway("me@gate") == readGateway("gate"));
  EXPECT_FALSE(readGateway("gate") == readGateway("gate:22"));
  EXPECT_FALSE(readGateway("gate") == readGateway("gate.example"));
}

}  // namespace gateway_test
