// SPDX-License-Identifier: MIT
#include "catalog_file.h"

#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <vector>

#include "definition.h"
#include "file.h"
#include "stamp.h"

namespace hopopen {

namespace {

// A file that was changed just now may be changed again without another time.
constexpr std::int64_t SETTLED = 2'000'000'000;  // nanoseconds

std::int64_t now() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(
             std::chrono::system_clock::now().time_since_epoch())
      .count();
}

}  // namespace

catalog readCatalog(const std::string& path) {
  return path.empty() ? catalog() : catalog(readFile(path).text);
}

void keepCatalog(const std::string& path, const definitions& known) {
  std::vector<definition> settled;
  for (const definition& viewer : known.viewers) {
    if (viewer.identity.changed < now() - SETTLED) {
      settled.push_back(viewer);
    }
  }
  const std::string text = catalog(settled).text();
  if (path.empty() || readFile(path).text == text) {
    return;
  }
  std::error_code ignored;
  std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ignored);
  const std::string made = path + '.' + std::to_string(getpid());
  std::ofstream file(made, std::ios::binary | std::ios::trunc);
  file << text;
  file.close();
  if (!file || std::rename(made.c_str(), path.c_str()) != 0) {
    std::remove(made.c_str());
  }
}

}  // namespace hopopen
