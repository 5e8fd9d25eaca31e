// SPDX-License-Identifier: MIT
// Reads mangled names of functions.  include/stack.h says what it makes of them.
#pragma once

#include <cstddef>
#include <string_view>

#include "ascii.h"

namespace internal {

// Where `long double` has 128 bits, its letter is this one.
#ifdef __LONG_DOUBLE_128__
inline constexpr std::string_view LETTER_G = "long double";
#else
inline constexpr std::string_view LETTER_G = "__float128";
#endif

/// Reads a mangled name from left to right and writes what it understands.  It
/// never reads past its input: every character beyond the end is NUL.
///
/// `Text` is what it writes to, such as a std::string.
template <class Text>
class demangler {
 public:
  explicit demangler(std::string_view mangled) : m_rest(mangled) {}

  Text function() {
    functionName();
    m_out += '(';
    for (bool first = true; !m_rest.empty(); first = false) {
      if (!first) {
        m_out += ", ";
      }
      argument();
    }
    m_out += ')';
    return std::move(m_out);
  }

 private:
  static constexpr int DEEPEST = 100;  // no name may overflow the stack

  char next() const { return m_rest.empty() ? '\0' : m_rest.front(); }

  bool skip(std::string_view expected) {
    if (m_rest.substr(0, expected.size()) != expected) {
      return false;
    }
    m_rest.remove_prefix(expected.size());
    return true;
  }

  bool atLength() const { return isDigit(next()); }

  void functionName() {
    if (next() == 'N') {
      nestedName();
    } else if (atLength()) {
      plainName();
    }
  }

  // A plain name and its template arguments, if any.
  void templatedName() {
    plainName();
    if (next() == 'I') {
      templateArguments();
    }
  }

  // A length and that many characters.
  void plainName() {
    std::size_t length = 0;
    for (; atLength(); m_rest.remove_prefix(1)) {
      length = length * 10 + static_cast<std::size_t>(next() - '0');
      if (length > m_rest.size()) {
        length = m_rest.size();  // cut short: take what there is
      }
    }
    const std::string_view name = m_rest.substr(0, length);
    m_out += name;
    m_rest.remove_prefix(name.size());
  }

  // "N", qualifiers, parts, "E".
  void nestedName() {
    skip("N");
    while (qualifier()) {
    }
    for (bool first = true;; first = false) {
      if (next() == 'I') {
        templateArguments();
        continue;
      }
      if (!atLength() && next() != 'S') {
        break;
      }
      if (!first) {
        m_out += "::";
      }
      if (atLength()) {
        plainName();
      } else if (skip("St")) {
        m_out += "std";
      } else if (!standardString()) {
        break;
      }
    }
    if (!skip("E")) {
      m_out += "???NN???";
      m_rest.remove_prefix(m_rest.empty() ? 0 : 1);
    }
  }

  bool qualifier() {
    if (skip("K")) {
      m_out += "const ";
    } else if (skip("V")) {
      m_out += "volatile ";
    } else if (skip("r")) {
      m_out += "???CV='r'???";
    } else {
      return false;
    }
    return true;
  }

  bool standardString() {
    if (!skip("Ss")) {
      return false;
    }
    m_out += "std::string";
    return true;
  }

  // "I", arguments, "E".
  void templateArguments() {
    if (m_depth == DEEPEST) {
      m_rest = {};
      return;
    }
    m_depth++;
    skip("I");
    m_out += '<';
    for (bool first = true; !m_rest.empty() && !skip("E"); first = false) {
      if (!first) {
        m_out += ", ";
      }
      argument();
    }
    m_out += '>';
    m_depth--;
  }

  // One type.  Always consumes something.
  void argument() {
    const std::string_view whole = m_rest;
    while (skip("P") || skip("R") || qualifier()) {
    }
    const std::string_view marks = whole.substr(0, whole.size() - m_rest.size());
    typeName();
    for (std::size_t i = marks.size(); i-- > 0;) {
      if (marks[i] == 'P' || marks[i] == 'R') {
        m_out += marks[i] == 'P' ? '*' : '&';
      }
    }
  }

  void typeName() {
    if (next() == 'N') {
      nestedName();
    } else if (atLength()) {
      templatedName();
    } else if (skip("St")) {
      m_out += "std::";
      templatedName();
    } else if (next() == 'I') {
      templateArguments();
    } else if (!standardString() && !builtIn() && !m_rest.empty()) {
      m_rest.remove_prefix(1);
    }
  }

  bool builtIn() {
    static constexpr std::string_view letters = "abcdefghijlmnostvwxyz";
    static constexpr std::string_view names[] = {
        "signed char", "bool",
        "char",        "double",
        "long double", "float",
        LETTER_G,      "unsigned char",
        "int",         "unsigned int",
        "long",        "unsigned long",
        "__int128",    "unsigned __int128",
        "short",       "unsigned short",
        "void",        "wchar_t",
        "long long",   "unsigned long long",
        "...",
    };
    const std::size_t index = m_rest.empty() ? letters.npos : letters.find(next());
    if (index == letters.npos) {
      return false;
    }
    m_out += names[index];
    m_rest.remove_prefix(1);
    return true;
  }

  std::string_view m_rest;
  Text m_out;
  int m_depth = 0;
};

}  // namespace internal
