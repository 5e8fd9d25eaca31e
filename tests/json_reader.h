// A strict reader of JSON (RFC 8259) as hopexplain writes it: whatever it does not
// expect is an exception.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// A value.  The text is that of a string, in bytes, or the word itself of a number, of
/// true, of false and of null.
struct Json {
  char kind = '?';  // '{', '[', '"', or 'w' for a word
  std::string text;
  std::vector<std::pair<std::string, Json>> members = {};
  std::vector<Json> elements = {};

  const Json& operator[](std::string_view key) const {
    for (const auto& [name, value] : members) {
      if (name == key) {
        return value;
      }
    }
    throw std::runtime_error("no member " + std::string(key));
  }
  /// The texts of an array's elements.
  std::vector<std::string> texts() const {
    std::vector<std::string> result;
    for (const Json& element : elements) {
      result.push_back(element.text);
    }
    return result;
  }
};

class JsonReader {
 public:
  /// Reads a whole text.
  static Json read(const std::string& text) {
    JsonReader reader(text);
    Json result = reader.value();
    reader.blanks();
    reader.require(reader.m_at == text.size());
    return result;
  }

 private:
  explicit JsonReader(const std::string& text) : m_text(text) {}

  void require(bool condition) const {
    if (!condition) {
      throw std::runtime_error("bad JSON at " + std::to_string(m_at) + " of " + m_text);
    }
  }
  char peek() const { return m_at < m_text.size() ? m_text[m_at] : '\0'; }
  char next() {
    require(m_at < m_text.size());
    return m_text[m_at++];
  }
  void expect(char c) { require(next() == c); }
  void blanks() { m_at = std::min(m_text.find_first_not_of(" \t\r\n", m_at), m_text.size()); }

  Json value() {
    blanks();
    switch (peek()) {
      case '{':
        return list('{', '}');
      case '[':
        return list('[', ']');
      case '"':
        return {.kind = '"', .text = string()};
      default:
        return {.kind = 'w', .text = word()};
    }
  }

  Json list(char open, char close) {
    Json result{.kind = open, .text = {}};
    expect(open);
    blanks();
    for (bool more = peek() != close; more; more = peek() == ',' && next() == ',') {
      if (open == '[') {
        result.elements.push_back(value());
      } else {
        blanks();
        std::string key = string();
        blanks();
        expect(':');
        result.members.emplace_back(std::move(key), value());
      }
      blanks();
    }
    expect(close);
    return result;
  }

  std::string word() {
    const std::size_t end = m_text.find_first_not_of("0123456789aeflnrstu", m_at);
    std::string result = m_text.substr(m_at, end - m_at);
    m_at += result.size();
    const bool number = result.find_first_not_of("0123456789") == std::string::npos &&
                        !result.empty() && (result == "0" || result[0] != '0');
    require(number || result == "true" || result == "false" || result == "null");
    return result;
  }

  std::string string() {
    std::string result;
    expect('"');
    for (char c = next(); c != '"'; c = next()) {
      require(static_cast<unsigned char>(c) >= 0x20);
      if (c == '\\') {
        result += escaped();
      } else if (static_cast<unsigned char>(c) >= 0x80) {
        result += utf8(c);
      } else {
        result += c;
      }
    }
    return result;
  }

  // Bytes that are not UTF-8 stand as U+DC80 to U+DCFF; everything else beyond ASCII
  // stands as itself.
  char escaped() {
    const char c = next();
    if (c == '"' || c == '\\') {
      return c;
    }
    require(c == 'u');
    const std::string digits{next(), next(), next(), next()};
    require(digits.find_first_not_of("0123456789ABCDEFabcdef") == std::string::npos);
    const unsigned long unit = std::stoul(digits, nullptr, 16);
    require(unit < 0x80 || (unit >= 0xDC80 && unit <= 0xDCFF));
    return static_cast<char>(unit & 0xFF);
  }

  // The well-formed sequences of RFC 3629, by the range of their second byte.
  std::string utf8(char lead) {
    const auto first = static_cast<unsigned char>(lead);
    require(first >= 0xC2 && first <= 0xF4);
    const int more = first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
    std::string result(1, lead);
    for (int i = 0; i < more; i++) {
      const char c = next();
      const auto byte = static_cast<unsigned char>(c);
      const bool second = i == 0;
      const unsigned char lowest = second && first == 0xE0   ? 0xA0
                                   : second && first == 0xF0 ? 0x90
                                                             : 0x80;
      const unsigned char highest = second && first == 0xED   ? 0x9F
                                    : second && first == 0xF4 ? 0x8F
                                                              : 0xBF;
      require(byte >= lowest && byte <= highest);
      result += c;
    }
    return result;
  }

  const std::string& m_text;
  std::size_t m_at = 0;
};
