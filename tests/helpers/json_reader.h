// SPDX-License-Identifier: MIT
// A strict reader of JSON (RFC 8259) as hopexplain writes it, in pure ASCII.  It throws
// when it meets something that it does not expect.
#pragma once

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/// A value.  The text is the content of a string, in bytes, or the word itself of a number,
/// of true, of false and of null.
struct Json {
  char kind = '?';  // '{', '[', '"', or 'w' for a word
  std::string text;
  std::vector<std::string> names = {};  // of an object's members
  std::vector<Json> elements = {};      // of an array, or the values of those members

  const Json& operator[](std::string_view key) const {
    for (std::size_t i = 0; i < names.size(); i++) {
      if (names[i] == key) {
        return elements[i];
      }
    }
    throw std::runtime_error("no member " + std::string(key));
  }
  /// The bytes that a text writes as two lower-case hexadecimal digits each.
  std::string binary() const {
    const std::string digits = "0123456789abcdef";
    std::string result;
    for (std::size_t i = 0; i < text.size(); i += 2) {
      const std::size_t high = digits.find(text[i]);
      const std::size_t low = digits.find(text.at(i + 1));
      if (kind != '"' || high > 15 || low > 15) {
        throw std::runtime_error("no bytes: " + text);
      }
      result += static_cast<char>(high * 16 + low);
    }
    return result;
  }
  /// The same of an array's elements.
  std::vector<std::string> bytes() const {
    std::vector<std::string> result;
    for (const Json& element : elements) {
      result.push_back(element.binary());
    }
    return result;
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
      if (open == '{') {
        blanks();
        result.names.push_back(string());
        blanks();
        expect(':');
      }
      result.elements.push_back(value());
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
      require(c >= 0x20 && c <= 0x7e);
      result += c == '\\' ? escaped() : std::string(1, c);
    }
    return result;
  }

  std::string escaped() {
    const char c = next();
    if (c == '"' || c == '\\') {
      return std::string(1, c);
    }
    require(c == 'u');
    const unsigned long first = unit();
    require(first < 0xDC00 || first > 0xDFFF);
    if (first < 0xD800 || first > 0xDBFF) {
      return utf8(first);
    }
    expect('\\');
    expect('u');
    const unsigned long second = unit();
    require(second >= 0xDC00 && second <= 0xDFFF);
    return utf8(0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00));
  }

  unsigned long unit() {
    const std::string digits{next(), next(), next(), next()};
    require(digits.find_first_not_of("0123456789ABCDEFabcdef") == std::string::npos);
    return std::stoul(digits, nullptr, 16);
  }

  static std::string utf8(unsigned long character) {
    const auto byte = [](unsigned long value) { return static_cast<char>(value); };
    const auto more = [&](int shift) { return byte(0x80 | ((character >> shift) & 0x3F)); };
    if (character < 0x80) {
      return {byte(character)};
    }
    if (character < 0x800) {
      return {byte(0xC0 | (character >> 6)), more(0)};
    }
    if (character < 0x10000) {
      return {byte(0xE0 | (character >> 12)), more(6), more(0)};
    }
    return {byte(0xF0 | (character >> 18)), more(12), more(6), more(0)};
  }

  const std::string& m_text;
  std::size_t m_at = 0;
};
