// SPDX-License-Identifier: MIT
#include "toml_text.h"

#include <algorithm>

#include "characters.h"

namespace hopopen {

namespace {

// The end of a key in quotes or without that begins at `at`.
std::size_t keyEnd(const std::string& text, std::size_t at) {
  const char quote = at < text.size() ? text[at] : ']';
  if (quote != '"' && quote != '\'') {
    while (at < text.size() && (isWord(text[at]) || text[at] == '-')) {
      at++;
    }
    return at;
  }
  for (at++; at < text.size() && text[at] != quote; at++) {
    if (quote == '"' && text[at] == '\\') {
      at++;
    }
  }
  return std::min(at + 1, text.size());
}

// How many keys the header at that place has: two for "[host.example]" and "[[host.example]]".
std::size_t keysOfHeader(const std::string& text, std::size_t header) {
  std::size_t count = 0;
  std::size_t at = text[header + 1] == '[' ? header + 1 : header;
  do {
    at = skipBlanks(text, keyEnd(text, skipBlanks(text, at + 1)));
    count++;
  } while (at < text.size() && text[at] == '.');
  return count;
}

}  // namespace

const toml::table* tomlText::table(std::string_view name) const {
  return m_parsed.table().get_as<toml::table>(name);
}

const toml::array* tomlText::list(std::string_view ofTable, std::string_view name) const {
  const toml::table* const found = table(ofTable);
  return found == nullptr ? nullptr : found->get_as<toml::array>(name);
}

region tomlText::regionOf(const toml::node& value) {
  const std::size_t begin = offset(value.source().begin);
  return {begin, offset(value.source().end)};
}

std::size_t tomlText::offset(const toml::source_position& where) {
  if (where < m_position) {
    m_position = {1, 1};
    m_offset = textStart(m_text);
  }
  const auto isRestOfCharacter = [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
  };
  while (m_position < where && m_offset < m_text.size()) {
    const bool lineBreak = m_text[m_offset++] == '\n';
    while (m_offset < m_text.size() && isRestOfCharacter(m_text[m_offset])) {
      m_offset++;
    }
    m_position = lineBreak ? toml::source_position{m_position.line + 1, 1}
                           : toml::source_position{m_position.line, m_position.column + 1};
  }
  return m_offset;
}

shape tomlText::shapeOf(const toml::table* table, std::size_t keys) {
  if (table == nullptr) {
    return shape::NONE;
  }
  if (table->is_inline()) {
    return shape::INLINE;
  }
  const std::size_t begin = offset(table->source().begin);
  if (m_text[begin] != '[') {
    return shape::DOTTED;
  }
  // "[trust.more]" makes "trust", too, but leaves room for its header.
  return keysOfHeader(m_text, begin) == keys ? shape::HEADER : shape::NONE;
}

std::optional<std::size_t> commaAfter(const std::string& text, std::size_t at) {
  // Only blanks, line ends and comments are between them.
  while (at < text.size()) {
    const char c = text[at];
    if (c == ',') {
      return at;
    }
    if (c == '#') {
      at = nextLine(text, at);
    } else if (c == ' ' || c == '\t' || c == '\r' || c == '\n') {
      at++;
    } else {
      break;
    }
  }
  return {};
}

std::string quotedText(std::string_view text) {
  std::string result = "\"";
  for (const char c : text) {
    if (isControl(c)) {
      const auto byte = static_cast<unsigned char>(c);
      result += "\\u00";
      result += HEX_DIGITS[byte / 16];
      result += HEX_DIGITS[byte % 16];
    } else {
      result += c == '"' || c == '\\' ? "\\" : "";
      result += c;
    }
  }
  return result + '"';
}

std::string keyText(std::string_view key) {
  const bool bare = !key.empty() && std::all_of(key.begin(), key.end(),
                                                [](char c) { return isWord(c) || c == '-'; });
  return bare ? std::string(key) : quotedText(key);
}

std::string quotedAs(std::string_view old, std::string_view text) {
  const bool single =
      old.starts_with('\'') && !old.starts_with("'''") &&
      std::all_of(text.begin(), text.end(), [](char c) { return isPrintable(c) && c != '\''; });
  return single ? '\'' + std::string(text) + '\'' : quotedText(text);
}

}  // namespace hopopen
