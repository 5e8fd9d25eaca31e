#include "toml_text.h"

#include <algorithm>

#include "characters.h"

namespace hopopen {

namespace {

// True when the header at that place, "[trust]" or "[trust.more]", has one key.  The first
// one has no quote in it, however it is written.
bool hasOneKey(const std::string& text, std::size_t header) {
  std::size_t at = skipBlanks(text, header + 1);
  const char quote = at < text.size() ? text[at] : ']';
  if (quote == '"' || quote == '\'') {
    at = std::min(text.find(quote, at + 1), text.size() - 1) + 1;
  } else {
    while (at < text.size() && (isWord(text[at]) || text[at] == '-')) {
      at++;
    }
  }
  at = skipBlanks(text, at);
  return at < text.size() && text[at] == ']';
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

shape tomlText::shapeOf(const toml::table* table) {
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
  return hasOneKey(m_text, begin) ? shape::HEADER : shape::NONE;
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
