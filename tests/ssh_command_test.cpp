// SPDX-License-Identifier: MIT
// What ssh is given to make a tunnel.

#include "ssh_command.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tunnel.h"

namespace hopopen::ssh_command_test {
namespace {

using words = std::vector<std::string>;

// As texts of link have them.
gateway gate(const std::string& text) {
  return readGateway(text).value();
}

endpoint place(const std::string& text, std::uint16_t port) {
  endpoint result{{}, port};
  EXPECT_FALSE(readHost({text, 0}, result.machine));
  return result;
}

// Without what every tunnel has.
words own(const words& all) {
  EXPECT_LE(30U, all.size());
  return {all.begin() + 30, all.end()};
}

TEST(SshCommand, SaysFirstWhatMustHoldForEveryTunnel) {
  EXPECT_EQ((words{"ssh",     "-f",
                   "-o",      "ExitOnForwardFailure=yes",
                   "-o",      "ClearAllForwardings=no",
                   "-o",      "StreamLocalBindMask=0177",
                   "-o",      "StreamLocalBindUnlink=no",
                   "-o",      "ForwardAgent=no",
                   "-o",      "ForwardX11=no",
                   "-o",      "GSSAPIDelegateCredentials=no",
                   "-o",      "PermitLocalCommand=no",
                   "-o",      "RemoteCommand=none",
                   "-o",      "SessionType=default",
                   "-o",      "RequestTTY=no",
                   "-o",      "Tunnel=no",
                   "-o",      "ControlMaster=no",
                   "-o",      "ControlPath=none",
                   "-L",      "/run/s:host.example:5900",
                   "--",      "gate.example",
                   "sleep 20"}),
            sshCommand(gate("gate.example"), place("host.example", 5900), "/run/s"));
}

TEST(SshCommand, HasUserAndPortOfTheGatewayIfItSaysWhich) {
  EXPECT_EQ((words{"-L", "/s:h:1", "-p", "2222", "-l", "kim", "--", "gate", "sleep 20"}),
            own(sshCommand(gate("kim@gate:2222"), place("h", 1), "/s")));
  EXPECT_EQ((words{"-L", "/s:h:1", "-l", "dom\\kim@x", "--", "gate", "sleep 20"}),
            own(sshCommand(gate("dom%5Ckim%40x@gate"), place("h", 1), "/s")));
}

TEST(SshCommand, HasAddressesAsSshReadsThem) {
  EXPECT_EQ((words{"-L", "/s:[::1]:65535", "--", "fe80::1%eth0", "sleep 20"}),
            own(sshCommand(gate("[fe80::1%25eth0]"), place("[::1]", 65535), "/s")));
  EXPECT_EQ((words{"-L", "/s:[fe80::2%eth1]:1", "--", "192.0.2.1", "sleep 20"}),
            own(sshCommand(gate("192.0.2.1"), place("[fe80::2%25eth1]", 1), "/s")));
}

TEST(LoginCommand, IsWhatPeopleTypeToLogIn) {
  EXPECT_EQ("ssh gate", loginCommand(gate("gate")));
  EXPECT_EQ("ssh -p 2222 kim@gate.example", loginCommand(gate("kim@gate.example:2222")));
  EXPECT_EQ("ssh fe80::1%eth0", loginCommand(gate("[fe80::1%25eth0]")));
}

TEST(PlainPath, HasNothingThatSshReadsOtherwise) {
  for (const char* const good : {"/", "/run/user/1000/hopopen-aB3xyz/socket", "/a_b.c+d@e,f=g-h"}) {
    EXPECT_TRUE(isPlainPath(good)) << good;
  }
  for (const char* const bad : {"", "run", "/a:b", "/a%b", "/${HOME}", "/a$", "/a\\b", "/a b",
                                "/a~b", "/a\nb", "/\xC3\xA4", "/[a]", "/a*", "/a\"b"}) {
    EXPECT_FALSE(isPlainPath(bad)) << bad;
  }
}

TEST(LastLine, IsTheLastThatSaysSomething) {
  EXPECT_EQ("", lastLine(""));
  EXPECT_EQ("", lastLine("\r\n \n\t"));
  EXPECT_EQ("a", lastLine("a"));
  EXPECT_EQ("b c", lastLine("a\r\nb c\r\n\r\n"));
  EXPECT_EQ("b", lastLine("a\rb"));
  EXPECT_EQ(" b", lastLine("a\n b \n \n"));
}

}  // namespace
}  // namespace hopopen::ssh_command_test
