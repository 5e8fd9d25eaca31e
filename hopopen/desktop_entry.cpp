// SPDX-License-Identifier: MIT
#include "desktop_entry.h"

#include <algorithm>
#include <cstddef>
#include <optional>

#include "key_file.h"

namespace hopopen {

namespace {

constexpr const char* GROUP = "Desktop Entry";
constexpr std::string_view SCHEME = "x-scheme-handler/";

// The escapes that every text of an entry may have.
std::string unescaped(std::string_view text) {
  constexpr std::string_view letters = "sntr\\";
  constexpr std::string_view meanings = " \n\t\r\\";
  std::string result;
  for (std::size_t i = 0; i < text.size(); i++) {
    const std::size_t at =
        text[i] == '\\' && i + 1 < text.size() ? letters.find(text[i + 1]) : std::string_view::npos;
    if (at == std::string_view::npos) {
      result += text[i];
    } else {
      result += meanings[at];
      i++;
    }
  }
  return result;
}

// The words of a command; nothing when a quotation has no end.
std::optional<std::vector<std::string>> words(std::string_view command) {
  std::vector<std::string> result;
  bool inWord = false;
  bool inQuotes = false;
  for (std::size_t i = 0; i < command.size(); i++) {
    const char c = command[i];
    if (!inQuotes && (c == ' ' || c == '\t' || c == '\n')) {
      inWord = false;
      continue;
    }
    if (!inWord) {
      result.emplace_back();
      inWord = true;
    }
    if (c == '"') {
      inQuotes = !inQuotes;
    } else if (inQuotes && c == '\\' && i + 1 < command.size()) {
      result.back() += command[++i];
    } else {
      result.back() += c;
    }
  }
  return inQuotes ? std::nullopt : std::optional(result);
}

bool takesLink(const std::vector<std::string>& command) {
  return std::any_of(command.begin(), command.end(), [](const std::string& word) {
    return word.find("%u") != std::string::npos || word.find("%U") != std::string::npos;
  });
}

std::string faultOf(const keyFile& keys, const std::optional<std::vector<std::string>>& command) {
  if (keys.groups().empty() || keys.groups().front() != GROUP) {
    return "it does not begin with [Desktop Entry]";
  }
  if (keys.value(GROUP, "Type") != "Application") {
    return "its Type is not Application";
  }
  if (keys.value(GROUP, "Name").empty()) {
    return "it has no Name";
  }
  if (!command) {
    return "a quotation in its Exec has no end";
  }
  if (command->empty()) {
    return "it has no Exec";
  }
  return takesLink(*command) ? "" : "its Exec has no %u, so no link reaches the program";
}

}  // namespace

bool desktopEntry::startsHopopen() const {
  return std::any_of(command.begin(), command.end(), [](const std::string& word) {
    return word.substr(word.rfind('/') + 1) == "hopopen";
  });
}

desktopEntry readDesktopEntry(std::string_view text) {
  const keyFile keys(text);
  const auto command = words(unescaped(keys.value(GROUP, "Exec")));
  desktopEntry result;
  result.fault = faultOf(keys, command);
  result.hidden = keys.value(GROUP, "Hidden") == "true";
  result.tryExec = unescaped(keys.value(GROUP, "TryExec"));
  result.command = command.value_or(std::vector<std::string>());
  for (const std::string& type : keys.list(GROUP, "MimeType")) {
    if (type.starts_with(SCHEME)) {
      result.schemes.push_back(type.substr(SCHEME.size()));
    }
  }
  return result;
}

}  // namespace hopopen
