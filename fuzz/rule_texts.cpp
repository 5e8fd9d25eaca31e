// SPDX-License-Identifier: MIT
#include "rule_texts.h"

#include <algorithm>

std::string lowered(std::string_view text) {
  std::string result(text);
  for (char& c : result) {
    if (c >= 'A' && c <= 'Z') {
      c = static_cast<char>(c + 32);
    }
  }
  return result;
}

bool escapeAt(std::string_view text, std::size_t i) {
  return text[i] == '%' && i + 2 < text.size() && only(text.substr(i + 1, 2), HEX);
}

std::string decoded(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); i++) {
    if (escapeAt(text, i)) {
      const std::string digits = lowered(text.substr(i + 1, 2));
      result += static_cast<char>(LOWER_HEX.find(digits[0]) * 16 + LOWER_HEX.find(digits[1]));
      i += 2;
    } else {
      result += text[i];
    }
  }
  return result;
}

bool hasControl(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F;
  });
}

std::vector<stretch> split(std::string_view text, stretch part, char separator) {
  std::vector<stretch> result;
  for (std::size_t begin = part.begin; begin <= part.end;) {
    const std::size_t end = std::min(text.find(separator, begin), part.end);
    result.push_back({begin, end});
    begin = end + 1;
  }
  return result;
}

std::string_view cut(std::string_view text, stretch part) {
  return text.substr(part.begin, part.end - part.begin);
}

// The first of the bytes within a part, or its end.
std::size_t find(std::string_view text, stretch part, std::string_view bytes) {
  const std::size_t found = cut(text, part).find_first_of(bytes);
  return found == npos ? part.end : part.begin + found;
}

bool readDigits(std::string_view digits, std::optional<unsigned int>& port) {
  if (digits.empty()) {
    return true;
  }
  if (!only(digits, DIGITS) || digits[0] == '0' || digits.size() > 5) {
    return false;
  }
  port = static_cast<unsigned int>(std::stoul(std::string(digits)));
  return *port <= 65535;
}
