// SPDX-License-Identifier: MIT
#include "piece.h"

#include "percent.h"

namespace hopopen {

piece piece::takeUntil(std::string_view ends) {
  const std::size_t stop = text.find_first_of(ends);
  const piece taken = part(0, stop);
  *this = stop == std::string_view::npos ? part(text.size()) : part(stop + 1);
  return taken;
}

std::size_t origin(const piece& encoded, std::size_t index) {
  std::string_view rest = encoded.text;
  for (std::size_t i = 0; i < index && !rest.empty(); i++) {
    rest.remove_prefix(encodedWidth(rest));
  }
  return encoded.end() - rest.size();
}

}  // namespace hopopen
