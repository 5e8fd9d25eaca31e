// SPDX-License-Identifier: MIT
#include "definitions.h"

#include <algorithm>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "characters.h"
#include "definition_reader.h"
#include "file.h"
#include "paths.h"
#include "shipped.h"
#include "stamp.h"

namespace hopopen {

namespace {

constexpr std::string_view ENDING = ".toml";

bool isName(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(),
                                      [](char c) { return isLower(c) || isDigit(c) || c == '-'; });
}

enum class extent : unsigned char { OUTLINE, WHOLE };

// Reads a definition; nothing if it hides its viewer, or has a fault.
std::optional<definition> readOne(const std::string& name, const std::string& path, extent needed,
                                  faults& found) {
  const fileText file = readFile(path);
  std::optional<definition> result;
  if (!file.found || !file.error.empty()) {
    found.push_back({path, 1, 1, file.error.empty() ? "there is no file" : file.error});
  } else if (!file.text.empty()) {
    if (needed == extent::OUTLINE) {
      result = shippedOutline(name, file.text);
    }
    if (!result) {
      result = readDefinition(name, file.text, path, found);
    }
  }
  if (result) {
    result->file = path;
    result->identity = file.identity;
  }
  return result;
}

// Reads as little of a definition as it takes to choose its viewer.
std::optional<definition> readOutlineOf(const std::string& name, const std::string& path,
                                        const catalog& outlines, faults& found) {
  const auto identity = outlines.empty() ? std::nullopt : stampOf(path);
  auto result = identity ? outlines.find(path, *identity) : std::nullopt;
  return result ? std::move(result) : readOne(name, path, extent::OUTLINE, found);
}

enum class thoroughness : unsigned char { OUTLINES, DEFINITIONS, FAULTS_OF_ALL };

definitions readAll(const std::vector<std::string>& folders, thoroughness what,
                    const catalog& outlines) {
  definitions result;
  std::set<std::string> taken;
  std::set<std::string> visited;
  for (const std::string& folder : folders) {
    if (!visited.insert(folder).second) {
      continue;
    }
    std::string error;
    const std::vector<std::string> files = namesIn(folder, error);
    if (!error.empty()) {
      result.found.push_back({folder, 1, 1, error});
    }
    for (const std::string& file : files) {
      const std::string path = within(folder, file);
      const std::string name = file.substr(0, file.size() - std::min(file.size(), ENDING.size()));
      if (!isName(name) || !file.ends_with(ENDING)) {
        result.ignored.push_back(path);
        continue;
      }
      const bool wins = taken.insert(name).second;
      if (!wins && what != thoroughness::FAULTS_OF_ALL) {
        continue;
      }
      auto viewer = what == thoroughness::OUTLINES
                        ? readOutlineOf(name, path, outlines, result.found)
                        : readOne(name, path, extent::WHOLE, result.found);
      if (viewer && wins) {
        result.viewers.push_back(std::move(*viewer));
      }
    }
  }
  std::sort(result.viewers.begin(), result.viewers.end(),
            [](const definition& a, const definition& b) { return a.name < b.name; });
  return result;
}

}  // namespace

const definition* definitions::named(const std::string& name) const {
  for (const definition& one : viewers) {
    if (one.name == name) {
      return &one;
    }
  }
  return nullptr;
}

bool definitions::open(const std::string& scheme) const {
  return std::any_of(viewers.begin(), viewers.end(),
                     [&](const definition& one) { return one.opens(scheme); });
}

definitions readDefinitions(const std::vector<std::string>& folders) {
  return readAll(folders, thoroughness::DEFINITIONS, {});
}

definitions readOutlines(const std::vector<std::string>& folders, const catalog& outlines) {
  return readAll(folders, thoroughness::OUTLINES, outlines);
}

void readWhole(definitions& known, const std::vector<std::string>& names) {
  std::erase_if(known.viewers, [&](definition& viewer) {
    if (viewer.whole || std::find(names.begin(), names.end(), viewer.name) == names.end()) {
      return false;
    }
    auto read = readOne(viewer.name, viewer.file, extent::WHOLE, known.found);
    if (read) {
      viewer = std::move(*read);
    }
    return !read;
  });
}

definitions readAllDefinitions(const std::vector<std::string>& folders) {
  return readAll(folders, thoroughness::FAULTS_OF_ALL, {});
}

}  // namespace hopopen
