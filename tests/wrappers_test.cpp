// SPDX-License-Identifier: MIT
// The wrappers that are installed as examples, and the one that SECURITY.md shows.  Only
// the address of a link gets through.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "launcher_runner.h"

namespace wrappers_test {

namespace {

using launcher::Outcome;
using launcher::Strings;
using launcher::Workshop;

const std::string wrappers[] = {"ssh-in-terminal", "vnc-in-remmina", "vnc-address-only"};

Outcome run(Workshop& shop, const std::string& wrapper, const Strings& arguments) {
  for (const char* const program : {"x-terminal-emulator", "remmina", "ssh"}) {
    const auto link = shop.work() / "bin" / program;
    if (!std::filesystem::is_symlink(link)) {
      std::filesystem::create_symlink(RECORDING_VIEWER, link);
    }
  }
  const std::string path = std::string(WRAPPERS) + "/" + wrapper;
  return shop.run({.arguments = arguments, .command = wrapper, .binary = path.c_str()});
}

// The program that a wrapper starts for an address, and its arguments.
Strings started(const std::string& wrapper, const std::string& address) {
  Workshop shop;
  const Outcome outcome = run(shop, wrapper, {"-via=x", address});
  EXPECT_EQ("", outcome.err);
  if (!outcome.viewer) {
    ADD_FAILURE() << wrapper << " starts nothing for " << address;
    return {};
  }
  EXPECT_EQ(42, outcome.status);
  return outcome.viewer->arguments;
}

TEST(Wrapper, StartsTheProgramWithAnAddress) {
  const struct {
    std::string host;
    std::string port;
    std::string plain;  // the host without brackets
  } cases[] = {
      {"h", "", "h"},
      {"host.example.org", "5901", "host.example.org"},
      {"127.0.0.1", "1", "127.0.0.1"},
      {"a_b-c", "65535", "a_b-c"},
      {"[::1]", "", "::1"},
      {"[::1]", "5901", "::1"},
      {"[fe80::1:2]", "10000", "fe80::1:2"},
      {"[1:2:3:4:5:6:7:8]", "", "1:2:3:4:5:6:7:8"},
      {"[1:2:3:4:5:6:7::]", "22", "1:2:3:4:5:6:7::"},
      {"[::]", "", "::"},
      {"[::ffff:192.0.2.255]", "22", "::ffff:192.0.2.255"},
      {"file.remmina", "", "file.remmina"},
  };
  for (const auto& one : cases) {
    const std::string address = one.host + (one.port.empty() ? "" : ":" + one.port);
    SCOPED_TRACE(address);
    EXPECT_EQ((Strings{"vncviewer", "-ReconnectOnError=0", "-Shared", address}),
              started("vnc-address-only", address));
    // The question mark keeps Remmina from looking for a file of that name.
    EXPECT_EQ((Strings{"remmina", "--connect=vnc://" + address + "?"}),
              started("vnc-in-remmina", address));
    for (const std::string user : {"", "me@", "_me.my-self@"}) {
      Strings expected{"x-terminal-emulator", "-e", "ssh"};
      if (!one.port.empty()) {
        expected.insert(expected.end(), {"-p", one.port});
      }
      expected.insert(expected.end(), {"--", user + one.plain});
      EXPECT_EQ(expected, started("ssh-in-terminal", user + address));
    }
  }
}

const Strings hostile = {
    "",
    "-h",
    "-oProxyCommand=x",
    "-via=x;[::1]",
    "-x[::1]",
    ".h",
    "_h",
    "h:",
    "h:0",
    "h:00",
    "h:022",
    "h:65536",
    "h:99999",
    "h:100000",
    "h:18446744073709551617",
    "h:-1",
    "h:+1",
    "h:x",
    "h:1x",
    "h:1:2",
    "h: 1",
    "h::1",
    "::1",
    "[]",
    "[::1",
    "::1]",
    "[::1]:",
    "[::1]:0",
    "[::1]:65536",
    "[::1]x",
    "x[::1]",
    "[[::1]]",
    "[::1]:[::1]",
    "[h]",
    "[1.2.3.4]",
    "[:]",
    "[:::]",
    "[1::2::3]",
    "[12345::]",
    "[g::1]",
    "[1:2:3:4:5:6:7]",
    "[1:2:3:4:5:6:7:8:9]",
    "[1:2:3:4::5:6:7:8]",
    "[1:2:3:4:5:6:7:]",
    "[::1.2.3]",
    "[::1.2.3.256]",
    "[::1.2.3.04]",
    "[1.2.3.4::]",
    "[fe80::1%eth0]",
    "h/x",
    "h?x",
    "h#x",
    "h%41",
    "h x",
    "h\tx",
    "h\n",
    "h\nx",
    "h;touch pwned",
    "$(touch pwned)",
    "`touch pwned`",
    "h&touch pwned",
    "h|x",
    "h'x",
    "h\"x",
    "h\\x",
    "*",
    "~",
    "h\xc3\xa9",
    "\xc3\xa9",
    "h\xff",
    "@h",
    "a:b@h",
    "a@b@h",
    "a@-h",
    "-a@h",
    "a b@h",
    "a@",
    "me@:22",
};

void expectRefusal(const Outcome& outcome, const Workshop& shop) {
  EXPECT_FALSE(outcome.viewer.has_value());
  EXPECT_EQ(1, outcome.status);
  EXPECT_EQ("", outcome.out);
  EXPECT_EQ(1, std::count(outcome.err.begin(), outcome.err.end(), '\n')) << outcome.err;
  EXPECT_EQ(Strings(), shop.files());
}

TEST(Wrapper, RefusesAllElseInOneLine) {
  for (const std::string& wrapper : wrappers) {
    Workshop shop;
    SCOPED_TRACE(wrapper);
    expectRefusal(run(shop, wrapper, {}), shop);
    for (const std::string& address : hostile) {
      SCOPED_TRACE(testing::PrintToString(address));
      expectRefusal(run(shop, wrapper, {address}), shop);
    }
  }
}

TEST(Wrapper, TakesAUserForSshOnly) {
  Workshop shop;
  expectRefusal(run(shop, "vnc-in-remmina", {"me@h"}), shop);
  expectRefusal(run(shop, "vnc-address-only", {"me@h"}), shop);
}

TEST(Wrapper, LeavesTheLocaleOfTheProgramAlone) {
  Workshop shop;
  Strings environment = shop.environment();
  environment.push_back("LC_ALL=C.UTF-8");
  const std::string path = std::string(WRAPPERS) + "/vnc-address-only";
  const auto told = [&](const std::string& address) {
    return shop.run({.arguments = {address}, .environment = environment, .binary = path.c_str()});
  };
  const Outcome outcome = told("h");
  ASSERT_TRUE(outcome.viewer.has_value());
  EXPECT_EQ(1, std::count(outcome.viewer->environment.begin(), outcome.viewer->environment.end(),
                          "LC_ALL=C.UTF-8"));
  // A host may not have other letters of that locale.
  expectRefusal(told("h\xc3\xa9"), shop);
}

}  // namespace

}  // namespace wrappers_test
