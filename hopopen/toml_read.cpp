// SPDX-License-Identifier: MIT
#include "toml_read.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>

#include "text_lines.h"

namespace hopopen {

namespace {

// The end of a text in quotes that begins at `at`, as TOML has it; of one without an end, some
// place after it.
std::size_t endOfQuotes(std::string_view text, std::size_t at) {
  const char quote = text[at];
  const bool escapes = quote == '"';
  const bool many = text.substr(at, 3) == std::string_view(escapes ? R"(""")" : "'''");
  const std::string_view close = text.substr(at, many ? 3 : 1);
  for (at += close.size(); at < text.size(); at++) {
    if (escapes && text[at] == '\\') {
      at++;
    } else if (text.substr(at, close.size()) == close) {
      at += close.size();
      // Two more may belong to a text over many lines.
      for (int i = 0; many && i < 2 && at < text.size() && text[at] == quote; i++) {
        at++;
      }
      return at;
    } else if (!many && text[at] == '\n') {
      return at;
    }
  }
  return text.size();
}

// Where the first key with too many parts has one too many.
std::optional<std::size_t> tooManyParts(std::string_view text) {
  std::size_t parts = 1;
  for (std::size_t at = 0; at < text.size();) {
    const char c = text[at];
    if (c == '"' || c == '\'') {
      at = endOfQuotes(text, at);
      continue;
    }
    if (c == '.' && ++parts > MOST_PARTS) {
      return at;
    }
    if (std::string_view("=,[]{}\n#").find(c) != std::string_view::npos) {
      parts = 1;
    }
    at = c == '#' ? std::min(text.find('\n', at), text.size()) : at + 1;
  }
  return {};
}

toml::source_position positionOf(const std::string& text, std::size_t at) {
  const std::string_view before = std::string_view(text).substr(0, at);
  const std::string_view line = before.substr(lineStart(text, at));
  const auto lines = std::count(before.begin(), before.end(), '\n');
  const auto characters = std::count_if(line.begin(), line.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
  });
  return {static_cast<toml::source_index>(lines + 1),
          static_cast<toml::source_index>(characters + 1)};
}

}  // namespace

toml::parse_result readToml(const std::string& text) {
  if (const auto at = tooManyParts(text)) {
    return toml::parse_result(toml::parse_error(
        "a key has more than " + std::to_string(MOST_PARTS) + " parts", positionOf(text, *at)));
  }
  return toml::parse(text);
}

}  // namespace hopopen
