// SPDX-License-Identifier: MIT
#include "percent.h"

#include "characters.h"

namespace hopopen {

std::string decode(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const std::size_t used = encodedWidth(text);
    result += used == 1 ? text[0] : static_cast<char>(hexValue(text[1]) * 16 + hexValue(text[2]));
    text.remove_prefix(used);
  }
  return result;
}

std::size_t encodedWidth(std::string_view text) {
  return text.size() > 2 && text[0] == '%' && isHexDigit(text[1]) && isHexDigit(text[2]) ? 3 : 1;
}

std::string percentEncoded(std::string_view text) {
  std::string result;
  for (const char c : text) {
    if (isUnreserved(c)) {
      result += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      result += {'%', HEX_DIGITS[byte / 16], HEX_DIGITS[byte % 16]};
    }
  }
  return result;
}

}  // namespace hopopen
