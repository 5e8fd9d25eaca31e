// SPDX-License-Identifier: MIT
#include "text_lines.h"

#include <algorithm>
#include <string_view>

#include "characters.h"

namespace hopopen {

std::size_t textStart(const std::string& text) {
  constexpr std::string_view mark = "\xEF\xBB\xBF";
  return text.starts_with(mark) ? mark.size() : 0;
}

std::size_t lineStart(const std::string& text, std::size_t at) {
  const std::size_t before = at == 0 ? std::string::npos : text.rfind('\n', at - 1);
  return before == std::string::npos ? textStart(text) : before + 1;
}

std::size_t lineEnd(const std::string& text, std::size_t at) {
  const std::size_t end = std::min(text.find('\n', at), text.size());
  return end < text.size() && end > at && text[end - 1] == '\r' ? end - 1 : end;
}

std::size_t nextLine(const std::string& text, std::size_t at) {
  const std::size_t end = text.find('\n', at);
  return end == std::string::npos ? text.size() : end + 1;
}

std::size_t skipBlanks(const std::string& text, std::size_t at) {
  while (at < text.size() && isBlank(text[at])) {
    at++;
  }
  return at;
}

std::string indentation(const std::string& text, std::size_t at) {
  const std::size_t start = lineStart(text, at);
  return text.substr(start, skipBlanks(text, start) - start);
}

std::string lineBreak(const std::string& text) {
  const std::size_t end = text.find('\n');
  return end != std::string::npos && end > 0 && text[end - 1] == '\r' ? "\r\n" : "\n";
}

}  // namespace hopopen
