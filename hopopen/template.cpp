// SPDX-License-Identifier: MIT
#include "template.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace hopopen {

namespace {

constexpr std::array<std::pair<std::string_view, placeholder>, 10> NAMES = {{
    {"user", placeholder::USER},
    {"password", placeholder::PASSWORD},
    {"host", placeholder::HOST},
    {"bracketed", placeholder::BRACKETED},
    {"port", placeholder::PORT},
    {"tlsport", placeholder::TLS_PORT},
    {"display", placeholder::DISPLAY},
    {"link", placeholder::LINK},
    {"value", placeholder::VALUE},
    {"socket", placeholder::SOCKET},
}};

std::optional<placeholder> named(std::string_view name) {
  for (const auto& [known, what] : NAMES) {
    if (known == name) {
      return what;
    }
  }
  return {};
}

void append(textTemplate& into, char c) {
  if (into.empty() || !std::holds_alternative<std::string>(into.back())) {
    into.emplace_back(std::string());
  }
  std::get<std::string>(into.back()) += c;
}

}  // namespace

std::optional<textTemplate> readTemplate(std::string_view text) {
  textTemplate result;
  for (std::size_t i = 0; i < text.size(); i++) {
    const char c = text[i];
    if (c != '{' && c != '}') {
      append(result, c);
    } else if (i + 1 < text.size() && text[i + 1] == c) {
      append(result, c);
      i++;
    } else {
      const std::size_t end = text.find('}', i);
      const auto what = c == '{' && end != std::string_view::npos
                            ? named(text.substr(i + 1, end - i - 1))
                            : std::nullopt;
      if (!what) {
        return {};
      }
      result.emplace_back(*what);
      i = end;
    }
  }
  return result;
}

bool uses(const textTemplate& text, placeholder what) {
  return std::any_of(text.begin(), text.end(), [what](const auto& part) {
    return std::holds_alternative<placeholder>(part) && std::get<placeholder>(part) == what;
  });
}

}  // namespace hopopen
