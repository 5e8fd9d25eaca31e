#include "piece.h"

#include "characters.h"
#include "conversion.h"

namespace hopopen {

namespace {

// How many bytes of the text stand for its first decoded one.
std::size_t width(std::string_view text) {
  return text.size() > 2 && text[0] == '%' && isHex(text[1]) && isHex(text[2]) ? 3 : 1;
}

int digit(char c) {
  return hexDigit(static_cast<signed char>(c));
}

}  // namespace

piece piece::takeUntil(std::string_view ends) {
  const std::size_t stop = text.find_first_of(ends);
  const piece taken = part(0, stop);
  *this = stop == std::string_view::npos ? part(text.size()) : part(stop + 1);
  return taken;
}

std::string decode(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const std::size_t used = width(text);
    result += used == 1 ? text[0] : static_cast<char>(digit(text[1]) * 16 + digit(text[2]));
    text.remove_prefix(used);
  }
  return result;
}

std::size_t origin(const piece& encoded, std::size_t index) {
  std::string_view rest = encoded.text;
  for (std::size_t i = 0; i < index && !rest.empty(); i++) {
    rest.remove_prefix(width(rest));
  }
  return encoded.end() - rest.size();
}

}  // namespace hopopen
