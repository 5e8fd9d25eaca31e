// SPDX-License-Identifier: MIT
// Which folder may depend on which, by what is included and by what is linked.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "texts.h"

namespace folders_test {

namespace {

namespace fs = std::filesystem;

// The folders in their order: each depends only on those below it.  A header of include/
// belongs to the folder that implements it.
const std::map<std::string, std::set<std::string>> FOUNDATIONS = {
    {"hopopen", {"brimcore", "directory", "tools", "utilities"}},
    {"tools", {"brimcore", "directory", "utilities"}},
    {"brimcore", {"directory", "utilities"}},
    {"directory", {"utilities"}},
    {"utilities", {}},
};

// The unit that may depend on more by design.  docs/architecture.md has the same table.
struct exemption {
  const char* unit;
  const char* folder;
};
constexpr exemption EXEMPTIONS[] = {
    {"utilities/uri", "brimcore"},  // viewers and their options are items
};

// The units that all depend on each other, by what is linked.  docs/architecture.md says why.
constexpr const char* REPORTS_CIRCLE =
    "`utilities/asserts` `utilities/bytearray` `utilities/datetime` `utilities/datetime_unx` "
    "`utilities/dummy_threading` `utilities/events` `utilities/events_unx` `utilities/handlers` "
    "`utilities/processesTD_unx` `utilities/semaphore_unx` `utilities/threading` ";
constexpr const char* CONFIGURATION_CIRCLE =
    "`brimcore/configDB` `brimcore/configRef` `brimcore/items` `brimcore/language` "
    "`brimcore/language_init` ";

// Headers of include/ whose names no source has, and the units that implement them.
const std::map<std::string, std::string> IMPLEMENTED_BY = {
    {"assertion.h", "utilities/asserts"},
    {"countedMap.h", "utilities/refcount"},
    {"lasting.h", "utilities/lasting"},
    {"pointers.h", "utilities/refcount"},
};

const fs::path TOP = SOURCES;

// A folder of the product and one of its units, "utilities/uri" for what uri.h declares.
std::string unitOf(const fs::path& file) {
  const std::string folder = file.begin()->string();
  if (folder != "include") {
    return folder + "/" + file.stem().string();
  }
  const auto found = IMPLEMENTED_BY.find(file.filename().string());
  if (found != IMPLEMENTED_BY.end()) {
    return found->second;
  }
  const std::string stem = file.stem().string();
  for (const char* const home : {"utilities", "brimcore", "directory"}) {
    if (fs::exists(TOP / home / (stem + ".cpp"))) return std::string(home) + "/" + stem;
  }
  if (fs::exists(TOP / "utilities/unix" / (stem + "_unx.cpp"))) return "utilities/" + stem;
  return "nowhere/" + stem;
}

std::string folderOf(const std::string& unit) {
  return unit.substr(0, unit.find('/'));
}

// A dependence of a unit, and what shows it.
struct dependence {
  std::string unit;
  std::string on;
  std::string shownBy;
};

bool allowed(const dependence& d) {
  const std::string from = folderOf(d.unit);
  const std::string to = folderOf(d.on);
  const auto foundation = FOUNDATIONS.find(from);
  return from == to || (foundation != FOUNDATIONS.end() && foundation->second.contains(to));
}

bool exempted(const dependence& d) {
  for (const exemption& e : EXEMPTIONS) {
    if (d.unit == e.unit && folderOf(d.on) == e.folder) return true;
  }
  return false;
}

// The file that an #include "NAME" in `file` means, relative to the top folder.
fs::path included(const fs::path& file, const std::string& name) {
  const fs::path beside = (file.parent_path() / name).lexically_normal();
  const fs::path shared = fs::path("tools") / name;  // launch_log.h, which programs share
  return fs::exists(TOP / beside)   ? beside
         : fs::exists(TOP / shared) ? shared
                                    : fs::path("include") / name;
}

std::vector<fs::path> productFiles() {
  std::vector<fs::path> files;
  for (const char* const folder :
       {"include", "tools", "hopopen", "brimcore", "directory", "utilities"}) {
    for (const auto& entry : fs::recursive_directory_iterator(TOP / folder)) {
      const fs::path path = entry.path();
      if (path.extension() == ".h" || path.extension() == ".cpp") {
        files.push_back(path.lexically_relative(TOP));
      }
    }
  }
  return files;
}

// Every #include "...", with the file that has it and the file that it means.
std::vector<std::pair<fs::path, fs::path>> inclusions() {
  const std::string directive = "#include \"";
  std::vector<std::pair<fs::path, fs::path>> result;
  for (const fs::path& file : productFiles()) {
    for (const std::string& line : linesOf(readFile(TOP / file))) {
      if (line.starts_with(directive)) {
        const std::size_t length = line.find('"', directive.size()) - directive.size();
        result.emplace_back(file, included(file, line.substr(directive.size(), length)));
      }
    }
  }
  return result;
}

std::vector<dependence> byIncludes() {
  std::vector<dependence> result;
  for (const auto& [file, header] : inclusions()) {
    result.push_back(
        {unitOf(file), unitOf(header), file.string() + " includes " + header.string()});
  }
  return result;
}

// A symbol in one of the library's objects, as `nm` lists it.
struct symbol {
  std::string unit;
  std::string name;
  char type;

  bool defined() const { return std::string("TDBRWVu").find(type) != std::string::npos; }
  bool undefined() const { return type == 'U' || type == 'w' || type == 'v'; }
};

std::vector<symbol> symbols() {
  std::vector<symbol> result;
  std::FILE* const pipe = popen(NM " -A --format=posix " LIBRARY_OBJECTS, "r");
  if (pipe == nullptr) return result;
  std::array<char, 65536> line;
  while (std::fgets(line.data(), line.size(), pipe) != nullptr) {
    // FOLDER/.../LIBRARY.dir/SOURCE.o: NAME TYPE ..., where the folder may have blanks
    const std::string text = line.data();
    const std::string object = text.substr(0, text.rfind(": "));
    std::istringstream fields(text.substr(object.size() + 2));
    symbol found{};
    fields >> found.name >> found.type;
    const std::size_t source = object.rfind(".dir/") + std::string(".dir/").size();
    found.unit = unitOf(fs::path(object.substr(source)).lexically_normal().replace_extension());
    result.push_back(found);
  }
  pclose(pipe);
  return result;
}

// A symbol that several objects define is a template or inline: each has its own.
std::vector<dependence> bySymbols() {
  const std::vector<symbol> all = symbols();
  std::map<std::string, std::set<std::string>> definers;
  for (const symbol& s : all) {
    if (s.defined()) definers[s.name].insert(s.unit);
  }
  std::vector<dependence> result;
  for (const symbol& s : all) {
    const auto found = definers.find(s.name);
    if (s.undefined() && found != definers.end() && found->second.size() == 1) {
      result.push_back({s.unit, *found->second.begin(), s.unit + " needs " + s.name});
    }
  }
  return result;
}

void expectAllowed(const std::vector<dependence>& dependences) {
  EXPECT_GT(dependences.size(), 50U) << "too few to be all";
  for (const dependence& d : dependences) {
    EXPECT_TRUE(FOUNDATIONS.contains(folderOf(d.unit))) << d.unit << " is in no known folder";
    EXPECT_TRUE(allowed(d) || exempted(d)) << d.shownBy << ", of " << d.on;
  }
}

TEST(Folders, IncludeOnlyWhatTheyStandOn) {
  expectAllowed(byIncludes());
}

TEST(Folders, LinkOnlyToWhatTheyStandOn) {
  if (TOGETHER) GTEST_SKIP() << "the sources were compiled together";
  expectAllowed(bySymbols());
}

TEST(Folders, ReachEachOtherThroughTheInterfaceOnly) {
  for (const auto& [file, header] : inclusions()) {
    const std::string from = file.begin()->string();
    const std::string to = header.begin()->string();
    // The library's folders also share headers that utilities/ hides from programs.
    const bool internal =
        from != "tools" && from != "hopopen" && from != "include" && to == "utilities";
    // The front door shares the launcher's log and its care of signals.
    const bool shared =
        from == "hopopen" && (header == "tools/launch_log.h" || header == "tools/output_signals.h");
    // Only one place knows what a digit is.
    const bool ascii = header == "utilities/ascii.h" && from != "include";
    EXPECT_TRUE(to == from || to == "include" || internal || shared || ascii)
        << file << " includes the private " << header;
  }
}

TEST(Folders, LetOnlyTheFrontDoorUseTheFrontDoor) {
  std::size_t own = 0;
  for (const auto& [file, header] : inclusions()) {
    if (*header.begin() == "hopopen") {
      EXPECT_EQ(file.begin()->string(), "hopopen") << file << " includes " << header;
      own++;
    }
  }
  EXPECT_GT(own, 50U) << "too few to be all";
}

TEST(Folders, HaveNoExemptionThatNothingNeeds) {
  const std::vector<dependence> included = byIncludes();
  const std::vector<dependence> linked = bySymbols();
  for (const exemption& e : EXEMPTIONS) {
    const auto needs = [&e](const dependence& d) {
      return d.unit == e.unit && folderOf(d.on) == e.folder;
    };
    EXPECT_TRUE(std::any_of(included.begin(), included.end(), needs) ||
                std::any_of(linked.begin(), linked.end(), needs))
        << e.unit << " needs nothing of " << e.folder;
  }
}

// Every unit that a unit reaches, step by step.
std::map<std::string, std::set<std::string>> reachable(const std::vector<dependence>& all) {
  std::map<std::string, std::set<std::string>> result;
  for (const dependence& d : all) {
    // Sanitizers use type information, also in files that do not use it themselves.
    const bool isTypeInformation = d.shownBy.find(" needs _ZTI") != std::string::npos;
    if (d.unit != d.on && !isTypeInformation) result[d.unit].insert(d.on);
  }
  for (bool grown = true; grown;) {
    grown = false;
    for (auto& [unit, reached] : result) {
      const std::set<std::string> before = reached;
      for (const std::string& on : before) {
        const auto further = result.find(on);
        if (further != result.end()) reached.insert(further->second.begin(), further->second.end());
      }
      grown = grown || reached.size() > before.size();
    }
  }
  return result;
}

// Sets of units that all reach each other, each on a line of its own.
std::set<std::string> circles(const std::vector<dependence>& all) {
  const std::map<std::string, std::set<std::string>> reached = reachable(all);
  std::set<std::string> result;
  for (const auto& [unit, on] : reached) {
    std::string circle;
    for (const std::string& other : on) {
      const auto back = reached.find(other);
      if (back != reached.end() && back->second.contains(unit)) circle += "`" + other + "` ";
    }
    if (!circle.empty()) result.insert(circle);
  }
  return result;
}

TEST(Folders, HaveNoCirclesOfUnitsButTheTwoThatAreDescribed) {
  if (TOGETHER) GTEST_SKIP() << "the sources were compiled together";
  EXPECT_EQ((std::set<std::string>{CONFIGURATION_CIRCLE, REPORTS_CIRCLE}), circles(bySymbols()));
}

TEST(Folders, AreDescribedWithTheirExemptions) {
  for (const exemption& e : EXEMPTIONS) {
    const std::string row = std::string("| `") + e.unit + "` | `" + e.folder + "/` |";
    EXPECT_NE(readFile(TOP / "docs/architecture.md").find(row), std::string::npos)
        << "missing: " << row;
  }
}

TEST(Folders, AreDescribedWithTheirCircles) {
  for (const char* const circle : {CONFIGURATION_CIRCLE, REPORTS_CIRCLE}) {
    const std::string row = std::string("| ") + circle + "|";
    EXPECT_NE(readFile(TOP / "docs/architecture.md").find(row), std::string::npos)
        << "missing: " << row;
  }
}

}  // namespace

}  // namespace folders_test
