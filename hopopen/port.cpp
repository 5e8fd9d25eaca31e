// SPDX-License-Identifier: MIT
#include "port.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include "characters.h"
#include "piece.h"
#include "refusal.h"

namespace hopopen {

namespace {

constexpr std::uint32_t HIGHEST_PORT = 65535;

}  // namespace

verdict readPort(const piece& text, std::optional<std::uint16_t>& into) {
  std::uint32_t port = 0;
  if (text.text.empty()) {
    return {};
  }
  for (std::size_t i = 0; i < text.text.size(); i++) {
    if (!isDigit(text.text[i])) {
      return refusal{code::PORT, BAD_PORT, text.start + i};
    }
    port = std::min(port * 10 + static_cast<std::uint32_t>(text.text[i] - '0'), HIGHEST_PORT + 1);
  }
  if (text.text.front() == '0' || port > HIGHEST_PORT) {
    return refusal{code::PORT, BAD_PORT, text.start};
  }
  into = static_cast<std::uint16_t>(port);
  return {};
}

}  // namespace hopopen
