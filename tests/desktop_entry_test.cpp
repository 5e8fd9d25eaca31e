// SPDX-License-Identifier: MIT
// The desktop entries: hopopen is offered for the schemes that it has viewers for, and the
// names of entries that are no longer offered start it, too.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>

#include "texts.h"
#include "toml.h"

namespace desktop_entry_test {

namespace {

using Entry = std::map<std::string, std::string>;
using Schemes = std::set<std::string>;

Entry readEntry(const std::string& name) {
  Entry result;
  for (const std::string& line : linesOf(readFile(std::string(DESKTOP_ENTRIES) + '/' + name))) {
    const std::size_t mark = line.find('=');
    if (line[0] != '#' && mark != std::string::npos) {
      EXPECT_TRUE(result.emplace(line.substr(0, mark), line.substr(mark + 1)).second) << line;
    }
  }
  EXPECT_FALSE(result.empty()) << name;
  return result;
}

Schemes offered(const Entry& entry) {
  const std::string prefix = "x-scheme-handler/";
  Schemes result;
  for (const std::string& type : split(entry.at("MimeType"), ';')) {
    EXPECT_TRUE(type.starts_with(prefix)) << type;
    result.insert(type.substr(prefix.size()));
  }
  return result;
}

Schemes shipped() {
  Schemes result;
  for (const auto& file : std::filesystem::directory_iterator(VIEWERS)) {
    const toml::parse_result viewer = toml::parse_file(file.path().string());
    EXPECT_TRUE(viewer) << file.path();
    for (const toml::node& scheme : *viewer.table()["schemes"].as_array()) {
      result.insert(*scheme.value<std::string>());
    }
  }
  return result;
}

TEST(DesktopEntry, OffersTheSchemesOfTheShippedViewers) {
  const Schemes all{"rdp", "spice", "spice+tls", "ssh", "telnet", "vnc"};
  EXPECT_EQ(all, offered(readEntry("hopopen.desktop")));
  EXPECT_EQ(all, shipped());
}

TEST(DesktopEntry, PassesALinkAsTheOneArgumentAfterTheOptions) {
  const Entry entry = readEntry("hopopen.desktop");
  EXPECT_EQ(std::string(HOPOPEN_COMMAND) + " -- %u", entry.at("Exec"));
  EXPECT_EQ(HOPOPEN_COMMAND, entry.at("TryExec"));
}

TEST(DesktopEntry, KeepsItsEarlierNamesWithoutOfferingThem) {
  const Entry now = readEntry("hopopen.desktop");
  for (const char* const name : {"hoplaunch-vnc.desktop", "hoplaunch-ssh.desktop"}) {
    const Entry before = readEntry(name);
    EXPECT_EQ(0U, before.count("MimeType")) << name;
    EXPECT_EQ(0U, before.count("Hidden")) << name;
    EXPECT_EQ("true", before.at("NoDisplay")) << name;
    EXPECT_EQ(now.at("Exec"), before.at("Exec")) << name;
    EXPECT_EQ(now.at("TryExec"), before.at("TryExec")) << name;
  }
}

}  // namespace

}  // namespace desktop_entry_test
