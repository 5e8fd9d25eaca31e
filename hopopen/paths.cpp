// SPDX-License-Identifier: MIT
#include "paths.h"

#include <cstddef>
#include <utility>

#include "conversion.h"

namespace hopopen {

std::vector<std::string> absolutePaths(const std::string& list) {
  std::vector<std::string> result;
  for (std::string& path : stringToVector(list, ':')) {
    if (path.starts_with('/')) {
      result.push_back(std::move(path));
    }
  }
  return result;
}

std::string within(const std::string& folder, const std::string& name) {
  std::string result = folder;
  result += '/';
  result += name;
  return result;
}

std::string folderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) {
    return ".";
  }
  return slash == 0 ? "/" : path.substr(0, slash);
}

}  // namespace hopopen
