#include "definitions.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <set>
#include <string_view>
#include <system_error>

#include "characters.h"
#include "file.h"
#include "folders.h"
#include "shown.h"

namespace hopopen {

namespace {

constexpr std::string_view ENDING = ".toml";

bool isName(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(),
                                      [](char c) { return isLower(c) || isDigit(c) || c == '-'; });
}

// Takes what the catalog says of a file, if that is all there is to know.
bool skipped(const std::string& name, const std::string& path, const shortcut& skip,
             definitions& into) {
  const auto identity = stampOf(path);
  const catalogEntry* const entry = identity ? skip.known.find(path, *identity) : nullptr;
  definition stub;
  if (entry != nullptr) {
    stub.name = name;
    stub.title = entry->title;
    stub.schemes = entry->schemes;
  }
  if (entry == nullptr || stub.opens(skip.scheme)) {
    return false;
  }
  into.viewers.push_back(std::move(stub));
  return true;
}

void readOne(const std::string& name, const std::string& path, bool wins, definitions& into) {
  const fileText file = readFile(path);
  if (!file.found || !file.error.empty()) {
    into.found.push_back({path, 1, 1, file.error.empty() ? "there is no file" : file.error});
  } else if (!file.text.empty()) {
    auto read = readDefinition(name, file.text, path, into.found);
    if (read && wins) {
      into.entries.push_back({path, file.identity, read->title, read->schemes});
      into.viewers.push_back(std::move(*read));
    }
  }
}

// The names of the files of a folder, in their order.
std::set<std::string> filesOf(const std::string& folder, definitions& into) {
  std::set<std::string> result;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    result.insert(entry->path().filename().string());
  }
  if (error && error != std::errc::no_such_file_or_directory &&
      error != std::errc::not_a_directory) {
    into.found.push_back({folder, 1, 1, "cannot be read: " + printable(error.message())});
  }
  return result;
}

definitions read(const std::vector<std::string>& folders, const std::optional<shortcut>& skip,
                 bool all) {
  definitions result;
  std::set<std::string> taken;
  std::set<std::string> visited;
  for (const std::string& folder : folders) {
    if (!visited.insert(folder).second) {
      continue;
    }
    for (const std::string& file : filesOf(folder, result)) {
      const std::string path = within(folder, file);
      const std::string name = file.substr(0, file.size() - std::min(file.size(), ENDING.size()));
      if (!isName(name) || !file.ends_with(ENDING)) {
        result.ignored.push_back(path);
        continue;
      }
      const bool wins = taken.insert(name).second;
      if ((wins || all) && !(skip && skipped(name, path, *skip, result))) {
        readOne(name, path, wins, result);
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

definitions readDefinitions(const std::vector<std::string>& folders,
                            const std::optional<shortcut>& skip) {
  return read(folders, skip, false);
}

definitions readAllDefinitions(const std::vector<std::string>& folders) {
  return read(folders, {}, true);
}

}  // namespace hopopen
