// SPDX-License-Identifier: MIT
#include "regexpr.h"

#include <array>
#include <cstring>

const char* text(RegExprError error) {
  static constexpr std::array<const char*, 8> texts = {
      "success",
      "not match",
      "memory allocation problem",
      "bad range",
      "Unclosed round brackets",
      "Unclosed square brackets",
      "Escape character as last in expression",
      "Other RegExpr error",
  };
  const auto index = static_cast<std::size_t>(error);
  return index < texts.size() ? texts[index] : "<bad RegExprError>";
}

std::string RegExpr::matchText(const std::string& text) const {
  const Match found = match(text);
  return text.substr(found.start, found.length);
}

namespace {

void appendEscaped(std::string& expression, char c) {
  if (c != '\0' && std::strchr("!$()+-.?[\\]^{|}", c) != nullptr) {
    expression += '\\';
  }
  expression += c;
}

}  // namespace

std::string RegExpr::wildcard2RE(const std::string& wildcard) {
  std::string result;
  if (wildcard.empty()) {
    return result;
  }
  const std::size_t last = wildcard.size() - 1;
  std::size_t i = 0;
  if (wildcard[0] == '*') {
    i = 1;
  } else {
    result += '^';
  }
  for (; i < last; i++) {
    if (wildcard[i] == '*') {
      result += ".*";
    } else {
      appendEscaped(result, wildcard[i]);
    }
  }
  if (wildcard[last] != '*') {
    appendEscaped(result, wildcard[last]);
    result += '$';
  }
  return result;
}
