// SPDX-License-Identifier: MIT
// The launcher's trace of its configuration database, line by line.

#include <gtest/gtest.h>

#include <regex>
#include <string>

#include "launcher_runner.h"

namespace launcher_trace_test {

namespace {

using launcher::Outcome;
using launcher::Strings;
using launcher::Workshop;

// Checks the block of a publication and the line of the version that it replaced.
void expectOnePublication(const std::string& text) {
  ASSERT_TRUE(text.ends_with("\n"));
  const Strings lines = split(text, '\n');
  ASSERT_GE(lines.size(), 6U);
  std::smatch addresses;
  ASSERT_TRUE(
      std::regex_match(lines[0], addresses,
                       std::regex("-1 countedMap<configItem> (0x[1-9a-f][0-9a-f]*) supercedes "
                                  "(0x[1-9a-f][0-9a-f]*)")))
      << lines[0];
  EXPECT_NE(addresses[1], addresses[2]);
  EXPECT_EQ("Stack trace:", lines[1]);
  std::size_t end = 2;
  bool named = false;
  for (; end < lines.size() && lines[end] != "End of stack trace"; ++end) {
    EXPECT_TRUE(std::regex_match(lines[end], std::regex(".*\\[0x[0-9a-f]+\\]"))) << lines[end];
    named = named || lines[end].find("reference::setCanonical(") != std::string::npos;
  }
  EXPECT_GE(end - 2, 1U) << "no frame";
  EXPECT_LE(end - 2, 100U) << "too many frames";
  EXPECT_TRUE(named) << "no frame names the function that publishes";
  ASSERT_EQ(end + 3, lines.size());
  EXPECT_EQ("End of stack trace", lines[end]);
  EXPECT_EQ("", lines[end + 1]);
  EXPECT_EQ("-1 destroying  " + addresses[2].str() + " parent = 0x0", lines[end + 2]);
}

TEST(LauncherTrace, ShowsOnePublicationAndOneDestruction) {
  const Strings cases[] = {
      {"-refcount=1", "vnc://h/"},
      {"vnc://h/", "-refcount", "0"},
      {"vnc://h/", "-refcount="},
      {"-refcount=1", "-VNC_OPTIONS=-autoreconnect=0", "-zzz=1", "-URI_SCHEME=SSH", "vnc://h/"},
      {"-refcount=1", "-configDB=1", "-reportStack=1", "-hoplaunch=1", "vnc://h/"},
  };
  for (const Strings& arguments : cases) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    Strings logged = arguments;
    logged.emplace_back("-log=log");
    Workshop shop;
    const Outcome outcome = shop.run({.arguments = logged});
    EXPECT_EQ(42, outcome.status);
    EXPECT_EQ("", outcome.out);
    SCOPED_TRACE(outcome.err);
    expectOnePublication(outcome.err);
    ASSERT_TRUE(outcome.viewer);
    EXPECT_EQ((Strings{"vncviewer", "--autoreconnect=0", "h"}), outcome.viewer->arguments);
    EXPECT_EQ(
        "TIME: URI = vnc://h/\n"
        "executable: vncviewer\n"
        "\t\"vncviewer\"\n"
        "\t\"--autoreconnect=0\"\n"
        "\t\"h\"\n",
        Workshop::withoutStamp(shop.log(), outcome));
  }
}

TEST(LauncherTrace, IsOffWithoutItsFlag) {
  Workshop shop;
  const Outcome outcome = shop.run({.arguments = {"vnc://h/", "-URI_SCHEME=SSH"}});
  EXPECT_EQ(42, outcome.status);
  EXPECT_EQ("", outcome.err);
}

}  // namespace

}  // namespace launcher_trace_test
