// SPDX-License-Identifier: MIT
// A folder for one test.
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

/// A new folder, in which the process works until the object is gone, and the folder with it.
class workingFolder {
 public:
  explicit workingFolder(mode_t mode = 0755) {
    std::string pattern = std::filesystem::temp_directory_path() / "hoplaunch-test-XXXXXX";
    EXPECT_NE(nullptr, mkdtemp(pattern.data()));
    m_path = pattern;
    std::filesystem::current_path(m_path);
    EXPECT_EQ(0, chmod(".", mode));
  }
  workingFolder(const workingFolder&) = delete;
  workingFolder& operator=(const workingFolder&) = delete;
  ~workingFolder() {
    std::filesystem::current_path("/");
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(m_path, ignored)) {
      if (entry.symlink_status().type() == std::filesystem::file_type::directory) {
        chmod(entry.path().c_str(), 0755);  // which the test may have closed
      }
    }
    std::filesystem::remove_all(m_path, ignored);
  }

 private:
  std::filesystem::path m_path;
};
