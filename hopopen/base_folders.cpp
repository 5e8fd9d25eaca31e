// SPDX-License-Identifier: MIT
#include "base_folders.h"

#include "paths.h"

namespace hopopen {

std::string valueOf(variableReader get, const char* name) {
  const char* const value = get(name);
  return value == nullptr ? "" : value;
}

std::string userFolder(variableReader get, const char* name, const char* usual) {
  std::string given = valueOf(get, name);
  if (given.starts_with('/')) {
    return given;
  }
  const std::string home = valueOf(get, "HOME");
  return home.starts_with('/') ? home + usual : "";
}

std::vector<std::string> systemFolders(variableReader get, const char* name, const char* usual) {
  const std::string given = valueOf(get, name);
  return absolutePaths(given.empty() ? usual : given);
}

}  // namespace hopopen
