// SPDX-License-Identifier: MIT
#include "key_file.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "conversion.h"

namespace hopopen {

namespace {

constexpr std::string_view BLANKS = " \t\r";

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(BLANKS);
  if (first == std::string_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(BLANKS) - first + 1);
}

}  // namespace

keyFile::keyFile(std::string_view text) {
  constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
  if (text.starts_with(byteOrderMark)) {
    text.remove_prefix(byteOrderMark.size());
  }
  std::map<std::string, std::string>* group = nullptr;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = trimmed(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    const std::size_t equals = line.find('=');
    if (line.size() > 2 && line.front() == '[' && line.back() == ']') {
      const std::string name(line.substr(1, line.size() - 2));
      if (!m_values.contains(name)) {
        m_groups.push_back(name);
      }
      group = &m_values[name];
    } else if (group != nullptr && equals != std::string_view::npos && line.front() != '#') {
      (*group)[std::string(trimmed(line.substr(0, equals)))] = trimmed(line.substr(equals + 1));
    }
  }
}

std::string keyFile::value(const std::string& group, const std::string& key) const {
  const auto keys = m_values.find(group);
  if (keys == m_values.end()) {
    return {};
  }
  const auto entry = keys->second.find(key);
  return entry == keys->second.end() ? "" : entry->second;
}

std::vector<std::string> keyFile::list(const std::string& group, const std::string& key) const {
  std::vector<std::string> result;
  for (const std::string& element : stringToVector(value(group, key), ';')) {
    if (const std::string_view name = trimmed(element); !name.empty()) {
      result.emplace_back(name);
    }
  }
  return result;
}

}  // namespace hopopen
