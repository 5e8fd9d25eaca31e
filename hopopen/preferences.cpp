// SPDX-License-Identifier: MIT
#include "preferences.h"

#include <cstddef>
#include <map>
#include <utility>

#include "file.h"

namespace hopopen {

namespace {

void readOne(const std::string& path, bool ofUser, preferences& into) {
  const fileText file = readFile(path);
  if (!file.error.empty()) {
    into.found.push_back({path, 1, 1, file.error});
  } else if (file.found) {
    into.files.push_back(readSettings(file.text, path, into.found));
    into.hasUser = into.hasUser || ofUser;
  }
}

}  // namespace

std::optional<wanted> preferences::viewerFor(const std::string& scheme) const {
  for (std::size_t i = 0; i < files.size(); i++) {
    const auto entry = files[i].use.find(scheme);
    if (entry != files[i].use.end()) {
      return wanted{entry->second, isUsers(i) ? chooser::USER : chooser::ADMINISTRATOR};
    }
  }
  return {};
}

preferences readPreferences(const folders& where) {
  preferences result;
  if (!where.userSettings.empty()) {
    readOne(where.userSettings, true, result);
  }
  for (const std::string& path : where.otherSettings) {
    readOne(path, false, result);
  }
  return result;
}

}  // namespace hopopen
