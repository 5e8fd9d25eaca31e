// SPDX-License-Identifier: MIT
#include "catalog.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <set>

#include "outline.h"

namespace hopopen {

namespace {

constexpr std::string_view HEAD = "hopopen catalog 3\n";

template <class Number>
void append(Number number, std::string& to) {
  char digits[24];
  const auto written = std::to_chars(digits, digits + sizeof digits, number);
  to.append(digits, written.ptr);
}

// What begins the line of a file, and of no other state of it.
std::string keyOf(const std::string& path, const stamp& identity) {
  std::string result;
  result.reserve(path.size() + 100);
  result += path;
  for (const std::uint64_t number : {identity.device, identity.inode, identity.size}) {
    result += BETWEEN_FIELDS;
    append(number, result);
  }
  for (const std::int64_t time : {identity.modified, identity.changed}) {
    result += BETWEEN_FIELDS;
    append(time, result);
  }
  result += BETWEEN_FIELDS;
  return result;
}

std::string lineOf(const definition& viewer) {
  return keyOf(viewer.file, viewer.identity) + outlineText(viewer) + '\n';
}

}  // namespace

catalog::catalog(std::string_view text) {
  if (!text.starts_with(HEAD)) {
    return;
  }
  m_text = text.substr(HEAD.size());
  std::string_view before;
  for (std::size_t start = 0, end; (end = m_text.find('\n', start)) != std::string::npos;
       start = end + 1) {
    if (line(start) < before) {
      m_lines.clear();
      return;
    }
    m_lines.push_back(start);
    before = line(start);
  }
}

catalog::catalog(const std::vector<definition>& viewers) {
  std::set<std::string> lines;
  for (const definition& viewer : viewers) {
    if (viewer.file.find_first_of("\t\n") == std::string::npos) {
      lines.insert(lineOf(viewer));
    }
  }
  for (const std::string& one : lines) {
    m_lines.push_back(m_text.size());
    m_text += one;
  }
}

std::string_view catalog::line(std::size_t start) const {
  return std::string_view(m_text).substr(start, m_text.find('\n', start) - start);
}

std::optional<definition> catalog::find(const std::string& path, const stamp& identity) const {
  const std::string key = keyOf(path, identity);
  const auto start = std::lower_bound(
      m_lines.begin(), m_lines.end(), key,
      [this](std::size_t one, const std::string& other) { return line(one) < other; });
  if (start == m_lines.end() || !line(*start).starts_with(key)) {
    return {};
  }
  auto result = readOutline(line(*start).substr(key.size()));
  if (result) {
    result->file = path;
    result->identity = identity;
  }
  return result;
}

std::string catalog::text() const {
  return std::string(HEAD) + m_text;
}

}  // namespace hopopen
