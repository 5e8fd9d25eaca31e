// SPDX-License-Identifier: MIT
// The table of docs/viewers.md says of each shipped viewer what its definition says.  (This
// test is one of hopopen's, as it reads definitions.)

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "toml.h"

namespace viewers_document_test {

namespace {

using Cells = std::vector<std::string>;

std::string trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(' ');
  return first == std::string::npos ? ""
                                    : text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

// The rows of the table, by the name for --use.
std::map<std::string, Cells> rows() {
  std::map<std::string, Cells> result;
  std::ifstream file(SOURCES "/docs/viewers.md");
  for (std::string line; std::getline(file, line);) {
    if (!line.starts_with("| [")) {
      continue;
    }
    Cells cells;
    std::istringstream text(line.substr(1));
    for (std::string cell; std::getline(text, cell, '|');) {
      cells.push_back(trimmed(cell));
    }
    EXPECT_EQ(7U, cells.size()) << line;
    EXPECT_TRUE(result.emplace(cells.at(1), cells).second) << line;
  }
  return result;
}

// The texts of a list with something before and after each, and ", " between them.
std::string listed(const toml::node* list, const std::string& mark) {
  std::string result;
  if (list != nullptr) {
    for (const toml::node& one : *list->as_array()) {
      result += (result.empty() ? "" : ", ") + mark + one.value_or(std::string()) + mark;
    }
  }
  return result;
}

std::map<std::string, Cells> versions() {
  std::map<std::string, Cells> result;
  std::ifstream file(SOURCES "/docs/viewer_versions.txt");
  for (std::string line; std::getline(file, line);) {
    std::istringstream words(line);
    std::string name;
    std::string twelve;
    std::string thirteen;
    if (!line.starts_with("#") && words >> name >> twelve >> thirteen) {
      result[name] = {twelve, thirteen};
    }
  }
  return result;
}

TEST(ViewersDocument, HasARowForEachDefinition) {
  const auto told = rows();
  const auto known = versions();
  std::size_t shipped = 0;
  for (const auto& file : std::filesystem::directory_iterator(VIEWERS)) {
    const std::string name = file.path().stem();
    SCOPED_TRACE(name);
    const toml::parse_result parsed = toml::parse_file(file.path().string());
    ASSERT_TRUE(parsed);
    const toml::table& viewer = parsed.table();
    const auto row = told.find("`" + name + "`");
    ASSERT_NE(told.end(), row);
    ASSERT_EQ(1U, known.count(name));
    const Cells& cells = row->second;
    EXPECT_TRUE(cells[0].starts_with("[" + viewer["name"].value_or(std::string()) + "](#"))
        << cells[0];
    EXPECT_EQ(listed(viewer.get("schemes"), "`"), cells[2]);
    EXPECT_EQ(std::to_string(viewer["rank"].value_or(50)), cells[3]);
    EXPECT_EQ(known.at(name), (Cells{cells[4], cells[5]}));
    const std::string unguarded = listed(viewer.get("unguarded"), "");
    EXPECT_EQ(unguarded.empty() ? "nothing" : unguarded, cells[6]);
    shipped++;
  }
  EXPECT_EQ(shipped, told.size());
  EXPECT_EQ(shipped, known.size());
}

TEST(ViewersDocument, HasASectionForEachLink) {
  std::ifstream file(SOURCES "/docs/viewers.md");
  std::vector<std::string> anchors;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("## ")) {
      std::string anchor = line.substr(3);
      std::transform(anchor.begin(), anchor.end(), anchor.begin(), [](char c) {
        return c == ' ' ? '-' : static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
      });
      anchors.push_back(anchor);
    }
  }
  for (const auto& [name, cells] : rows()) {
    const std::size_t mark = cells[0].find("](#");
    const std::string anchor = cells[0].substr(mark + 3, cells[0].size() - mark - 4);
    EXPECT_EQ(1, std::count(anchors.begin(), anchors.end(), anchor)) << cells[0];
  }
}

}  // namespace

}  // namespace viewers_document_test
