#include "percent.h"

#include "characters.h"
#include "conversion.h"

namespace hopopen {

namespace {

int digit(char c) {
  return hexDigit(static_cast<signed char>(c));
}

}  // namespace

std::string decode(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const std::size_t used = encodedWidth(text);
    result += used == 1 ? text[0] : static_cast<char>(digit(text[1]) * 16 + digit(text[2]));
    text.remove_prefix(used);
  }
  return result;
}

std::size_t encodedWidth(std::string_view text) {
  return text.size() > 2 && text[0] == '%' && isHex(text[1]) && isHex(text[2]) ? 3 : 1;
}

std::string percentEncoded(std::string_view text) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string result;
  for (const char c : text) {
    if (isUnreserved(c)) {
      result += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      result += {'%', digits[byte / 16], digits[byte % 16]};
    }
  }
  return result;
}

}  // namespace hopopen
