// SPDX-License-Identifier: MIT
// What hopopen's check makes of a desktop entry.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "desktop_entry.h"

namespace hopopen::link_entry_test {
namespace {

std::string entry(const std::string& lines) {
  return "[Desktop Entry]\nType=Application\nName=N\n" + lines;
}

TEST(LinkEntry, HasWhatTheEntryOfThePackageSays) {
  const desktopEntry read = readDesktopEntry(
      entry("Exec=/usr/bin/hopopen -- %u\nTryExec=/usr/bin/hopopen\n"
            "MimeType=x-scheme-handler/vnc;text/plain;x-scheme-handler/ssh;\nNoDisplay=true\n"));
  EXPECT_EQ("", read.fault);
  EXPECT_FALSE(read.hidden);
  EXPECT_EQ("/usr/bin/hopopen", read.tryExec);
  EXPECT_EQ((std::vector<std::string>{"/usr/bin/hopopen", "--", "%u"}), read.command);
  EXPECT_EQ((std::vector<std::string>{"vnc", "ssh"}), read.schemes);
  EXPECT_TRUE(read.startsHopopen());
}

TEST(LinkEntry, IsNotValidWithoutWhatADesktopNeeds) {
  const struct {
    std::string text;
    const char* fault;
  } cases[] = {
      {"", "it does not begin with [Desktop Entry]"},
      {"[Other]\n" + entry("Exec=a %u\n"), "it does not begin with [Desktop Entry]"},
      {"[Desktop Entry]\nName=N\nExec=a %u\n", "its Type is not Application"},
      {"[Desktop Entry]\nType=Link\nName=N\nExec=a %u\n", "its Type is not Application"},
      {"[Desktop Entry]\nType=Application\nExec=a %u\n", "it has no Name"},
      {entry(""), "it has no Exec"},
      {entry("Exec=  \n"), "it has no Exec"},
      {entry("Exec=a \"%u\n"), "a quotation in its Exec has no end"},
      {entry("Exec=a --\n"), "its Exec has no %u, so no link reaches the program"},
      {entry("Exec=a %f\n"), "its Exec has no %u, so no link reaches the program"},
      {entry("Exec=a %u\n"), ""},
      {entry("Exec=a %U\n"), ""},
  };
  for (const auto& one : cases) {
    EXPECT_EQ(one.fault, readDesktopEntry(one.text).fault) << one.text;
  }
}

TEST(LinkEntry, IsHiddenByTrueAlone) {
  EXPECT_TRUE(readDesktopEntry(entry("Hidden=true\n")).hidden);
  EXPECT_FALSE(readDesktopEntry(entry("Hidden=false\n")).hidden);
  EXPECT_FALSE(readDesktopEntry(entry("NoDisplay=true\n")).hidden);
}

TEST(LinkEntry, HasTheWordsOfExecWithoutTheirQuotes) {
  EXPECT_EQ((std::vector<std::string>{"/a b/c", "", "\"$\\", "x y", "%u"}),
            readDesktopEntry(entry(R"(Exec="/a b/c" ""  "\\"\\$\\\\" x" "y %u)"
                                   "\n"))
                .command);
}

TEST(LinkEntry, StartsHopopenWhereverTheCommandNamesIt) {
  for (const char* const command :
       {"hopopen %u", "/opt/hopopen %u", "env A=B hopopen -- %u", "\"/a b/hopopen\" %u"}) {
    EXPECT_TRUE(readDesktopEntry(entry(std::string("Exec=") + command)).startsHopopen()) << command;
  }
  for (const char* const command : {"hopopen2 %u", "/hopopen/other %u", "hoplaunch %u"}) {
    EXPECT_FALSE(readDesktopEntry(entry(std::string("Exec=") + command)).startsHopopen())
        << command;
  }
}

}  // namespace
}  // namespace hopopen::link_entry_test
