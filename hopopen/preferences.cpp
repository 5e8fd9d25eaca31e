#include "preferences.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <utility>

#include "file.h"
#include "trusted.h"

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
      return wanted{entry->second, i == 0 && hasUser ? chooser::USER : chooser::ADMINISTRATOR};
    }
  }
  return {};
}

bool preferences::trust(const host& machine) const {
  return std::any_of(files.begin(), files.end(), [&](const settings& file) {
    return std::any_of(file.trust.begin(), file.trust.end(),
                       [&](const trustedHost& one) { return one.covers(machine); });
  });
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
