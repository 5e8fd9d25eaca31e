// SPDX-License-Identifier: MIT
#include "catalog.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <set>
#include <system_error>
#include <utility>

namespace hopopen {

namespace {

constexpr std::string_view HEAD = "hopopen catalog 3\n";
constexpr char BETWEEN_FIELDS = '\t';
constexpr char BETWEEN_TEXTS = '\x1f';  // no text of a definition has a control character

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

std::string joined(const std::vector<std::string>& texts) {
  std::string result;
  for (const std::string& text : texts) {
    if (!result.empty()) {
      result += BETWEEN_TEXTS;
    }
    result += text;
  }
  return result;
}

std::string lineOf(const definition& viewer) {
  std::string result = keyOf(viewer.file, viewer.identity);
  for (const std::string& field :
       {viewer.name, viewer.title, joined(viewer.schemes), joined(viewer.programs),
        joined(viewer.unguarded), std::string(viewer.terminal ? "terminal" : ""),
        std::string(viewer.inVariables ? "variables" : "")}) {
    result += field + BETWEEN_FIELDS;
  }
  append(viewer.rank, result);
  return result + '\n';
}

// Takes the text up to the next `end` off the front; all of it if there is none.
std::string_view taken(std::string_view& from, char end) {
  const std::string_view result = from.substr(0, from.find(end));
  from.remove_prefix(std::min(from.size(), result.size() + 1));
  return result;
}

std::vector<std::string> parted(std::string_view texts) {
  std::vector<std::string> result;
  while (!texts.empty()) {
    result.emplace_back(taken(texts, BETWEEN_TEXTS));
  }
  return result;
}

std::optional<definition> readOutline(std::string_view line) {
  std::optional<definition> result(std::in_place);
  result->name = taken(line, BETWEEN_FIELDS);
  result->title = taken(line, BETWEEN_FIELDS);
  result->schemes = parted(taken(line, BETWEEN_FIELDS));
  result->programs = parted(taken(line, BETWEEN_FIELDS));
  result->unguarded = parted(taken(line, BETWEEN_FIELDS));
  result->terminal = !taken(line, BETWEEN_FIELDS).empty();
  result->inVariables = !taken(line, BETWEEN_FIELDS).empty();
  const char* const end = line.data() + line.size();
  const auto [stop, error] = std::from_chars(line.data(), end, result->rank);
  if (error != std::errc() || stop != end) {
    result.reset();
  }
  return result;
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
    result->whole = false;
  }
  return result;
}

std::string catalog::text() const {
  return std::string(HEAD) + m_text;
}

}  // namespace hopopen
