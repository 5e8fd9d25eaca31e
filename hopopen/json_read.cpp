// SPDX-License-Identifier: MIT
#include "json_read.h"

#include <cstddef>
#include <string_view>
#include <utility>

namespace hopopen {

namespace {

// Whether a bracket closes something, after blanks at most.
bool closes(std::string_view text) {
  const std::size_t next = text.find_first_not_of(" \t\r\n");
  return next != std::string_view::npos && (text[next] == ']' || text[next] == '}');
}

// The text without each comma that only blanks part from a closing bracket.
std::string withoutLastCommas(std::string_view text) {
  std::string result;
  bool inText = false;
  for (std::size_t i = 0; i < text.size(); i++) {
    const char c = text[i];
    if (inText && c == '\\' && i + 1 < text.size()) {
      result += c;
      result += text[++i];
      continue;
    }
    inText = inText != (c == '"');
    if (inText || c != ',' || !closes(text.substr(i + 1))) {
      result += c;
    }
  }
  return result;
}

std::optional<jsonData> parsed(const std::string& text) {
  jsonData value = jsonData::parse(text, nullptr, false, true);
  return value.is_discarded() ? std::nullopt : std::optional(std::move(value));
}

}  // namespace

std::optional<jsonData> readJson(const std::string& text) {
  auto value = parsed(text);
  return value ? std::move(value) : parsed(withoutLastCommas(text));
}

const jsonData* memberOf(const jsonData& value, const std::vector<std::string>& path) {
  const jsonData* at = &value;
  for (const std::string& name : path) {
    const auto member = at->find(name);  // its end, too, for what is no object
    if (member == at->end()) {
      return nullptr;
    }
    at = &*member;
  }
  return at;
}

std::vector<std::string> textsOf(const jsonData& value, const std::vector<std::string>& path) {
  std::vector<std::string> result;
  const jsonData* const list = memberOf(value, path);
  if (list != nullptr && list->is_array()) {
    for (const jsonData& element : *list) {
      if (element.is_string()) {
        result.push_back(element.get<std::string>());
      }
    }
  }
  return result;
}

}  // namespace hopopen
