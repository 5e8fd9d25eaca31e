// SPDX-License-Identifier: MIT
// The configuration items and trace flags that the tests expect the library to register.
// Add a new one of the library here, to docs/items.tsv, and in the source that defines it.
// startup_driver_test.cpp has those of the launcher.
#pragma once

#include <strings.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace registered {

struct item {
  const char* name;
  std::vector<std::string> values;    // to begin with
  std::vector<std::string> defaults;  // none for an array
};

// In the order of the database: by name, without regard to letter case.
inline std::vector<item> items() {
  return {{"defaultLanguage", {"English"}, {"English"}},
          {"LogDateFormat", {"[%f %i %d %H:%M:%S %Y] "}, {"[%f %i %d %H:%M:%S %Y] "}},
          {"LogTimeZone", {"localtime"}, {"localtime"}},
          {"MaxShortName", {"16"}, {"16"}},
          {"PROGRAMS", {"VNC=vncviewer", "SSH=putty"}, {}},
          {"URI_SCHEME", {"VNC"}, {"VNC"}},
          {"VNC_OPTIONS", {"-autoreconnect=0"}, {}}};
}

inline std::vector<std::string> flags() {
  return {"configDB", "refcount", "reportStack", "reportThread"};
}

// The names of the items and of a program's own ones.
inline std::vector<std::string> itemNames(std::vector<std::string> others = {}) {
  for (const item& each : items()) others.emplace_back(each.name);
  std::sort(others.begin(), others.end(), [](const std::string& one, const std::string& other) {
    return strcasecmp(one.c_str(), other.c_str()) < 0;
  });
  return others;
}

// The flags and a program's own ones, each with its level, which is 0.
inline std::vector<std::pair<std::string, int>> flagsOff(std::vector<std::string> others = {}) {
  for (const std::string& name : flags()) others.push_back(name);
  std::sort(others.begin(), others.end());
  std::vector<std::pair<std::string, int>> result;
  for (const std::string& name : others) result.emplace_back(name, 0);
  return result;
}

}  // namespace registered
