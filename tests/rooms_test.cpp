// SPDX-License-Identifier: MIT
// The files of tools/ and hopopen/: each holds the code that its name says, and none is part
// of a circle, by what is included and by what is linked.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "texts.h"

namespace rooms_test {

namespace {

namespace fs = std::filesystem;

const fs::path TOP = SOURCES;
const std::array<std::string, 2> FOLDERS = {"tools", "hopopen"};

// Sources without a header: each is the entry of a program.
const std::set<std::string> ENTRIES = {"hopopen/main", "tools/demo_viewer", "tools/hopexplain",
                                       "tools/main"};

// From a unit, such as "tools/plan", to those that it depends on.
using graph = std::map<std::string, std::set<std::string>>;

std::string unitOf(const fs::path& file) {
  return fs::path(file).lexically_normal().replace_extension().string();
}

// The names in #include "NAME", in their order.
std::vector<std::string> includesOf(const fs::path& file) {
  const std::string directive = "#include \"";
  std::vector<std::string> result;
  for (const std::string& line : linesOf(readFile(TOP / file))) {
    if (line.starts_with(directive)) {
      const std::size_t length = line.find('"', directive.size()) - directive.size();
      result.push_back(line.substr(directive.size(), length));
    }
  }
  return result;
}

std::vector<fs::path> filesOf(const std::string& folder) {
  std::vector<fs::path> result;
  for (const auto& entry : fs::directory_iterator(TOP / folder)) {
    const fs::path path = entry.path().lexically_relative(TOP);
    if (path.extension() == ".h" || path.extension() == ".cpp") {
      result.push_back(path);
    }
  }
  return result;
}

// The includes among the units of both folders.
graph byIncludes() {
  graph result;
  for (const std::string& folder : FOLDERS) {
    for (const fs::path& file : filesOf(folder)) {
      std::set<std::string>& on = result[unitOf(file)];
      for (const std::string& name : includesOf(file)) {
        for (const std::string& home : {folder, FOLDERS[0]}) {
          if (fs::exists(TOP / home / name)) {
            on.insert(unitOf(fs::path(home) / name));
            break;
          }
        }
      }
      on.erase(unitOf(file));
    }
  }
  return result;
}

// The symbols that the objects of both folders need of each other.  A symbol that several
// objects define is a template or inline: each has its own.
graph bySymbols() {
  std::map<std::string, std::set<std::string>> definers;
  std::map<std::string, std::set<std::string>> needed;
  std::FILE* const pipe = popen(NM " -A --format=posix " OBJECTS, "r");
  std::array<char, 65536> line = {};
  while (pipe != nullptr && std::fgets(line.data(), line.size(), pipe) != nullptr) {
    // FOLDER/.../TARGET.dir/SOURCE.cpp.o: NAME TYPE ..., where the folder may have blanks
    const std::string text = line.data();
    const std::string object = text.substr(0, text.rfind(": "));
    std::istringstream fields(text.substr(object.size() + 2));
    std::string name;
    char type = ' ';
    fields >> name >> type;
    const std::size_t source = object.rfind(".dir/") + std::string(".dir/").size();
    const std::string unit = unitOf(unitOf(object.substr(source)));
    if (std::string("TDBRWVu").find(type) != std::string::npos) {
      definers[name].insert(unit);
    } else {
      needed[unit].insert(name);
    }
  }
  if (pipe != nullptr) {
    pclose(pipe);
  }
  graph result;
  for (const auto& [unit, names] : needed) {
    for (const std::string& name : names) {
      const auto found = definers.find(name);
      if (found != definers.end() && found->second.size() == 1) {
        result[unit].insert(*found->second.begin());
      }
    }
    result[unit].erase(unit);
  }
  return result;
}

// All that a unit depends on, directly or not; without itself, unless it is in a circle.
std::set<std::string> reachedFrom(const std::string& unit, const graph& all) {
  std::set<std::string> result;
  std::vector<std::string> open = {unit};
  while (!open.empty()) {
    const auto found = all.find(open.back());
    open.pop_back();
    if (found != all.end()) {
      for (const std::string& next : found->second) {
        if (result.insert(next).second) {
          open.push_back(next);
        }
      }
    }
  }
  return result;
}

void expectNoCircle(const graph& all) {
  std::size_t arrows = 0;
  for (const auto& [unit, on] : all) {
    EXPECT_FALSE(reachedFrom(unit, all).contains(unit)) << unit << " depends on itself";
    arrows += on.size();
  }
  EXPECT_GT(arrows, 15U) << "too few to be all";
}

TEST(Rooms, HaveNoCirclesOfIncludes) {
  expectNoCircle(byIncludes());
}

TEST(Rooms, HaveNoCirclesOfCalls) {
  if (TOGETHER) GTEST_SKIP() << "the sources were compiled together";
  expectNoCircle(bySymbols());
}

TEST(Rooms, HaveAHeaderForEachSourceAndIncludeItFirst) {
  for (const std::string& folder : FOLDERS) {
    for (const fs::path& file : filesOf(folder)) {
      if (file.extension() != ".cpp" || ENTRIES.contains(unitOf(file))) {
        continue;
      }
      const std::string own = file.stem().string() + ".h";
      EXPECT_TRUE(fs::exists(TOP / folder / own)) << file << " has no header";
      const std::vector<std::string> included = includesOf(file);
      EXPECT_EQ(included.empty() ? "" : included.front(), own) << file;
    }
  }
}

// So a function is defined in the file whose header declares it.
TEST(Rooms, AreReachedThroughTheHeadersOfTheirName) {
  if (TOGETHER) GTEST_SKIP() << "the sources were compiled together";
  const graph included = byIncludes();
  for (const auto& [unit, on] : bySymbols()) {
    const std::set<std::string> headers = reachedFrom(unit, included);
    for (const std::string& other : on) {
      EXPECT_TRUE(headers.contains(other))
          << unit << " calls " << other << " and has no header of it";
    }
  }
}

TEST(Rooms, LetToolsKnowNothingOfTheFrontDoor) {
  if (TOGETHER) GTEST_SKIP() << "the sources were compiled together";
  for (const graph& all : {byIncludes(), bySymbols()}) {
    for (const auto& [unit, on] : all) {
      for (const std::string& other : on) {
        EXPECT_FALSE(unit.starts_with("tools/") && other.starts_with("hopopen/"))
            << unit << " depends on " << other;
      }
    }
  }
}

// A source that needs a handle to a shared object, or a pointer, does not compile reports and
// stack traces for its assertions.
TEST(Headers, BringTheAssertionAlone) {
  EXPECT_TRUE(includesOf("include/assertion.h").empty());
  std::vector<std::string> open = {"pointers.h", "refcount.h", "countedMap.h"};
  std::set<std::string> reached;
  while (!open.empty()) {
    const std::string name = open.back();
    open.pop_back();
    if (reached.insert(name).second) {
      const std::vector<std::string> more = includesOf(fs::path("include") / name);
      open.insert(open.end(), more.begin(), more.end());
    }
  }
  EXPECT_TRUE(reached.contains("assertion.h"));
  for (const char* const heavy : {"asserts.h", "events.h", "stack.h"}) {
    EXPECT_FALSE(reached.contains(heavy)) << heavy;
  }
}

}  // namespace

}  // namespace rooms_test
