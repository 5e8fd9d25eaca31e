// SPDX-License-Identifier: MIT
// What the launcher does not check, and passes on or shows as it is.  README.md, the manual
// page and SECURITY.md say so, and programs rely on it.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "launcher_runner.h"

namespace launcher_limits_test {

namespace {

using launcher::Outcome;
using launcher::Strings;
using launcher::Workshop;

// The viewer's arguments after its name and "--autoreconnect=0".
Strings given(const Strings& arguments) {
  Workshop shop;
  const Outcome outcome = shop.run({.arguments = arguments});
  if (!outcome.viewer) {
    return {"no viewer"};
  }
  const Strings& all = outcome.viewer->arguments;
  return {all.begin() + 2, all.end()};
}

TEST(TheLauncher, HandsOnPortsOver65535) {
  EXPECT_EQ(given({"vnc://h:65535/"}), Strings{"h:65535"});
  EXPECT_EQ(given({"vnc://h:65536/"}), Strings{"h:65536"});
  EXPECT_EQ(given({"vnc://h:99999999999999999999/"}), Strings{"h:99999999999999999999"});
}

TEST(TheLauncher, HandsOnAnEmptyPort) {
  EXPECT_EQ(given({"vnc://h:/"}), Strings{"h:"});
}

TEST(TheLauncher, LetsAKeyIdWrap) {
  EXPECT_EQ(given({"vnc://h/4294967295,QUJD"}), (Strings{"-ticket=414243", "h"}));
  EXPECT_EQ(given({"vnc://h/4294967296,QUJD"}), (Strings{"-ticket=414243", "h"}));
  EXPECT_EQ(given({"vnc://h/99999999999999999999,QUJD"}), (Strings{"-ticket=414243", "h"}));
}

TEST(TheLauncher, CutsAnAddressForPortArgInsideItsBrackets) {
  EXPECT_EQ(given({"-portArg=port", "vnc://[::1]/"}), (Strings{"-port=1]", "[:"}));
  EXPECT_EQ(given({"-portArg=port", "vnc://[::1]:5900/"}), (Strings{"-port=5900", "[::1]"}));
}

TEST(TheLauncher, LogsTheBytesOfTheURIAsTheyAre) {
  Workshop shop;
  const Outcome outcome =
      shop.run({.arguments = {"-log=log", "vnc://h/?a=1\nexecutable: \x1b[1m\xff"}});
  EXPECT_EQ(Workshop::withoutStamp(shop.log(), outcome),
            "TIME: URI = vnc://h/?a=1\nexecutable: \x1b[1m\xff\n"
            "executable: vncviewer\n\t\"vncviewer\"\n\t\"--autoreconnect=0\"\n"
            "\t\"-a=1\\nexecutable: \\033[1m\\377\"\n\t\"h\"\n");
}

TEST(TheLauncher, LogsTheBytesOfTheProgramAsTheyAre) {
  Workshop shop;
  const Outcome outcome = shop.run({.arguments = {"-log=log", "-program=v\nw\x1b", "vnc://h/"}});
  EXPECT_NE(shop.log().find("\nexecutable: v\nw\x1b\n"), std::string::npos) << shop.log();
  EXPECT_FALSE(outcome.viewer);
}

TEST(TheLauncher, LogsTheSchemeAsItIs) {
  Workshop shop;
  const Outcome outcome = shop.run({.arguments = {"-log=log", "Z.Qx://h/"}});
  EXPECT_EQ(Workshop::withoutStamp(shop.log(), outcome),
            "TIME: URI = Z.Qx://h/\nno executable for scheme Z.Qx\n");
}

TEST(TheLauncher, ShowsTheBytesOfAKeywordWithoutAValueAsTheyAre) {
  Workshop shop;
  const Outcome outcome = shop.run({.arguments = {"-a\nb\x1b\xff"}});
  EXPECT_EQ(outcome.err, "Keyword -a\nb\x1b\xff has no value\n");
}

}  // namespace

}  // namespace launcher_limits_test
