// SPDX-License-Identifier: MIT
// Texts and files of texts, for tests.
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

/// What is in a file; empty when there is none.
inline std::string readFile(const std::filesystem::path& name) {
  std::ifstream in(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline void writeFile(const std::filesystem::path& name, const std::string& text) {
  std::ofstream out(name, std::ios::binary);
  out << text;
  ASSERT_TRUE(out.flush().good()) << name;
}

/// The same, and who may do what with it.
inline void writeFile(const std::filesystem::path& name, const std::string& text, mode_t mode) {
  writeFile(name, text);
  ASSERT_EQ(0, chmod(name.c_str(), mode)) << name;
}

/// The pieces of a text in which each is followed by `end`; after the last it may be missing.
inline std::vector<std::string> split(const std::string& text, char end) {
  std::vector<std::string> result;
  std::size_t start = 0;
  while (start < text.size()) {
    const std::size_t found = std::min(text.find(end, start), text.size());
    result.push_back(text.substr(start, found - start));
    start = found + 1;
  }
  return result;
}

/// The lines of a text, without their ends.
inline std::vector<std::string> linesOf(const std::string& text) {
  return split(text, '\n');
}

/// The text so many times.
inline std::string repeated(std::size_t count, std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < count; i++) {
    result += text;
  }
  return result;
}

inline bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

/// How often `part` is in `text`.
inline std::size_t countOf(std::string_view text, std::string_view part) {
  std::size_t result = 0;
  for (std::size_t at = text.find(part); at != std::string_view::npos; at = text.find(part, at)) {
    ++result;
    at += part.size();
  }
  return result;
}
