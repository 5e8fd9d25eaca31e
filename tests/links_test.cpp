// SPDX-License-Identifier: MIT
// Opens every link of links.txt, without starting anything, and compares what the
// program prints with what the file says.  The definitions, the settings and the programs
// are those of the folder links/.  Those of the machine do not matter.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <map>
#include <ostream>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "json.h"
#include "launcher_runner.h"
#include "links_rows.h"

namespace links_test {

namespace {

using door::Json;
using launcher::Outcome;
using launcher::Strings;
using launcher::Workshop;
using links::Block;
using links::Row;

const std::vector<Block>& blocks() {
  static const std::vector<Block> result = links::readBlocks(SOURCES "/tests/links.txt");
  return result;
}

const std::vector<Row>& rows() {
  static const std::vector<Row> result = [] {
    std::vector<Row> all;
    std::transform(blocks().begin(), blocks().end(), std::back_inserter(all), links::readRow);
    return all;
  }();
  return result;
}

// Without symbolic links, as the program prints it.
std::string folder() {
  static const std::string result = std::filesystem::canonical(SOURCES "/tests/links");
  return result;
}

// "a:b" as absolute names.
std::string folders(const std::string& names) {
  std::string result;
  for (const std::string& name : split(names, ':')) {
    result.append(result.empty() ? "" : ":").append(folder()).append("/").append(name);
  }
  return result;
}

Strings environment(const Row& row, const Workshop& shop) {
  std::map<std::string, std::string> places{{"PATH", "programs:terminal"},
                                            {"XDG_DATA_HOME", "home"},
                                            {"XDG_DATA_DIRS", "data"},
                                            {"XDG_CONFIG_HOME", "settings/trusting"},
                                            {"XDG_CONFIG_DIRS", "nothing"}};
  for (const auto& [name, value] : row.with) {
    places.at(name) = value;
  }
  Strings result{"HOME=" + shop.work().string()};
  for (const auto& [name, value] : places) {
    result.push_back(name + "=" + folders(value));
  }
  for (const char* name : {"ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS"}) {
    if (const char* value = std::getenv(name)) {
      result.push_back(std::string(name) + "=" + value);
    }
  }
  return result;
}

Outcome dryRun(const Row& row, Workshop& shop) {
  Strings arguments{"--dry-run", "--format=json"};
  arguments.insert(arguments.end(), row.options.begin(), row.options.end());
  arguments.insert(arguments.end(), {"--", row.link});
  return shop.run({.arguments = arguments,
                   .command = "hopopen",
                   .environment = environment(row, shop),
                   .binary = HOPOPEN});
}

// A text, a number or null as a word.
std::string word(const Json& value) {
  if (value.is_null()) {
    return "none";
  }
  return value.is_string() ? value.get<std::string>() : value.dump();
}

// What stands for a list without elements, and for one that is not known.
std::string absent(const Json& value) {
  return value.is_null() ? "unknown" : "none";
}

Strings allWords(const Json& value) {
  Strings result;
  for (const Json& element : value) {
    result.push_back(word(element));
  }
  return result.empty() ? Strings{absent(value)} : result;
}

Strings sorted(Strings words) {
  std::sort(words.begin(), words.end());
  return words;
}

using Lines = std::vector<Strings>;

Lines parameters(const Json& value) {
  Lines result;
  for (const Json& each : value) {
    result.push_back({each["name"].get<std::string>(), each["value"].get<std::string>(),
                      each["used"].get<bool>() ? "used" : "dropped"});
  }
  return result.empty() ? Lines{{absent(value)}} : result;
}

Lines variables(const Json& value) {
  Lines result;
  for (const auto& [name, text] : value.items()) {
    result.push_back({name + "=" + text.get<std::string>()});
  }
  return result.empty() ? Lines{{absent(value)}} : result;
}

Strings refusal(const Json& value) {
  if (value.is_null()) {
    return {"none"};
  }
  const Json position = value["position"];
  return {word(value["code"]), position.is_null() ? "-" : position.dump()};
}

// The lines that links.txt would have under `key` for what was printed.
Lines actual(const Json& printed, const std::string& key) {
  if (key == "refused") {
    return {refusal(printed["refusal"])};
  }
  if (key == "trusted") {
    const Json value = printed[key];
    return {{value.is_null() ? "none" : value.get<bool>() ? "yes" : "no"}};
  }
  if (key == "parameter") {
    return parameters(printed["parameters"]);
  }
  if (key == "environment") {
    return variables(printed[key]);
  }
  if (key == "viewer") {
    const Json value = printed[key];
    return {{value.is_null() ? "none" : word(value["name"])}};
  }
  if (key == "dropped" || key == "unset") {
    return {sorted(allWords(printed[key]))};
  }
  if (key == "arguments") {
    return {allWords(printed[key])};
  }
  return {{word(printed[key])}};
}

// The lines that links.txt has under `key`.
Lines expected(const Row& row, const std::string& key) {
  Lines result;
  for (const auto& [name, words] : row.expected) {
    if (name != key) {
      continue;
    }
    result.push_back(key == "dropped" || key == "unset" ? sorted(words) : words);
    for (std::string& each : result.back()) {
      const std::string_view place = "<links>";
      if (each.starts_with(place)) {
        each.replace(0, place.size(), folder());
      }
    }
  }
  if (key == "environment") {
    std::sort(result.begin(), result.end());
  }
  return result.empty() && key == "refused" ? Lines{{"none"}} : result;
}

// Lines as they are in the file, except for escapes.
std::string shown(const std::string& key, const Lines& lines) {
  std::string result;
  for (const Strings& line : lines) {
    result += "  " + key;
    for (const std::string& each : line) {
      const bool plain = !each.empty() && each.find(' ') == std::string::npos;
      result += plain ? " " + each : " \"" + each + "\"";
    }
    result += "\n";
  }
  return result;
}

// The program's exit status.
int status(const Row& row) {
  const Lines lines = expected(row, "refused");
  const std::string& code = lines.at(0).at(0);
  if (code == "none") {
    return 0;
  }
  if (code == "viewer") {
    return 3;
  }
  return code == "choice" || code == "settings" ? 4 : 2;
}

void compare(const Row& row, const Json& printed) {
  std::set<std::string> keys{"refused"};
  for (const auto& [key, words] : row.expected) {
    keys.insert(key);
  }
  keys.erase("hides");
  for (const std::string& key : keys) {
    EXPECT_EQ(shown(key, expected(row, key)), shown(key, actual(printed, key)));
  }
  const bool refused = expected(row, "refused") != Lines{{"none"}};
  EXPECT_EQ(!refused, printed["launch"].get<bool>());
  if (refused && !printed["refusal"].is_null()) {
    EXPECT_NE("", printed["refusal"]["message"].get<std::string>());
  }
}

// The parameter of a test.  A process makes those of all tests, so it has no text of its own.
struct Place {
  const Block* block;
};

std::ostream& operator<<(std::ostream& out, const Place& place) {
  return out << place.block->number;
}

std::vector<Place> places() {
  std::vector<Place> result;
  for (const Block& block : blocks()) {
    result.push_back({&block});
  }
  return result;
}

class Links : public testing::TestWithParam<Place> {};

TEST_P(Links, Row) {
  const Row row = links::readRow(*GetParam().block);
  ASSERT_EQ("", row.broken) << "line " << row.line;
  Workshop shop;
  const Outcome outcome = dryRun(row, shop);
  SCOPED_TRACE("links.txt:" + std::to_string(row.line) + ": " + row.link +
               "\ntold: " + outcome.out);
  EXPECT_EQ(status(row), outcome.status);
  EXPECT_EQ("", outcome.err);
  EXPECT_EQ(Strings(), shop.files());
  ASSERT_TRUE(outcome.out.ends_with("\n")) << "no whole line";
  EXPECT_TRUE(std::all_of(outcome.out.begin(), outcome.out.end() - 1, [](char byte) {
    return byte >= ' ' && byte <= '~';
  })) << "not one line of printable ASCII";
  for (const Strings& secret : expected(row, "hides")) {
    EXPECT_EQ(std::string::npos, outcome.out.find(secret.at(0))) << "a password is shown";
  }
  ASSERT_NO_THROW(compare(row, Json::parse(outcome.out)));
}

INSTANTIATE_TEST_SUITE_P(, Links, testing::ValuesIn(places()),
                         [](const auto& test) { return test.param.block->number; });

TEST(LinksTable, HasARowForEveryCode) {
  std::set<std::string> codes;
  for (const Row& row : rows()) {
    codes.insert(expected(row, "refused").at(0).at(0));
  }
  EXPECT_EQ((std::set<std::string>{"none", "syntax", "scheme", "user", "host", "port", "path",
                                   "settings", "choice", "viewer", "restriction"}),
            codes);
}

TEST(LinksTable, HasManyRows) {
  EXPECT_LE(1000U, rows().size());
}

TEST(LinksTable, HasManyLinksOfPagesAndManuals) {
  EXPECT_LE(40, std::count_if(rows().begin(), rows().end(), [](const Row& row) {
              return row.section == "Links as pages, mails, chats, programs and manuals write them";
            }));
}

TEST(LinksTable, HasManyFoundLinksOfEachFurtherScheme) {
  std::map<std::string, int> found;
  for (const Row& row : rows()) {
    if (row.section == "Links of rdp, spice and telnet as pages, products and manuals write them") {
      ++found[row.link.substr(0, row.link.find_first_of("+:"))];
    }
  }
  EXPECT_LE(20, found["rdp"]);
  EXPECT_LE(15, found["spice"]);
  EXPECT_LE(10, found["telnet"]);
}

TEST(LinksTable, HasNoRowTwice) {
  std::map<std::tuple<std::string, Strings, std::map<std::string, std::string>>, int> seen;
  for (const Row& row : rows()) {
    const auto [before, fresh] = seen.try_emplace({row.link, row.options, row.with}, row.line);
    EXPECT_TRUE(fresh) << "the row of line " << row.line << " is that of line " << before->second;
  }
}

TEST(LinksTable, IsReadAsItsHeadSays) {
  EXPECT_EQ("a\nbxyxyxyc", links::unescaped("a\\x0ab\\{xy*3}c"));
  EXPECT_EQ("", links::unescaped("\\{x*0}"));
  EXPECT_EQ((Strings{"a", "b c", "", "d\"\\"}), links::words("  a \"b c\" \"\"  d\\x22\\x5c"));
  EXPECT_THROW(links::unescaped("a\\nb"), std::runtime_error);
  EXPECT_THROW(links::words("\"a"), std::runtime_error);
}

}  // namespace

}  // namespace links_test
