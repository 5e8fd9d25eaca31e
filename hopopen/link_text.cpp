// SPDX-License-Identifier: MIT
#include "link_text.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>

#include "characters.h"
#include "piece.h"
#include "rdp_pairs.h"
#include "refusal.h"

namespace hopopen {

namespace {

constexpr std::size_t LONGEST_LINK = 8192;

verdict checkLength(std::string_view text) {
  if (text.empty()) {
    return syntaxFault(0, "The link is empty. Copy it again.");
  }
  if (text.size() > LONGEST_LINK) {
    return syntaxFault(LONGEST_LINK,
                       "The link is longer than 8192 characters. Ask for a shorter one.");
  }
  return {};
}

verdict checkBytes(std::string_view text) {
  bool inFragment = false;
  for (std::size_t i = 0; i < text.size(); i++) {
    if (!isOfURI(text[i])) {
      return syntaxFault(i, "The link has a character that links cannot have. Copy it again.");
    }
    if (text[i] == '%') {
      for (std::size_t digit = i + 1; digit <= i + 2; digit++) {
        if (digit >= text.size() || !isHexDigit(text[digit])) {
          return syntaxFault(
              std::min(digit, text.size()),
              "A \"%\" in the link is not followed by two hexadecimal digits. Check the "
              "link.");
        }
      }
    }
    if (text[i] == '#') {
      if (inFragment) {
        return syntaxFault(i, "The link has a second \"#\". Check the link.");
      }
      inFragment = true;
    }
  }
  return {};
}

// Where a host in brackets may begin, and where it ends with its port.
struct hostRoom {
  std::size_t begin;
  std::size_t end;
};

hostRoom roomForHost(std::string_view text, std::size_t open) {
  if (isMadeOfPairs(text)) {
    const auto end = addressEnd(text, open);
    return end ? hostRoom{open, *end} : hostRoom{text.size(), text.size()};
  }
  const piece authority = authorityOf(text);
  const std::size_t at = authority.text.rfind('@');
  return {authority.start + (at == std::string_view::npos ? 0 : at + 1), authority.end()};
}

// Brackets are for an IPv6 address, right where the host begins.
verdict checkBrackets(std::string_view text) {
  constexpr const char* MISPLACED =
      "The link has a bracket that is not around an IPv6 address. Check the link.";
  const std::size_t open = text.find_first_of("[]");
  if (open == std::string_view::npos) {
    return {};
  }
  const hostRoom room = roomForHost(text, open);
  if (text[open] != '[' || open != room.begin || open >= room.end) {
    return syntaxFault(open, MISPLACED);
  }
  const std::size_t close = std::min(text.find_first_of("[]", open + 1), text.size());
  if (close >= room.end) {
    return syntaxFault(room.end, R"(The link has a "[" without its "]". Check the link.)");
  }
  if (text[close] == '[') {
    return syntaxFault(close, MISPLACED);
  }
  const std::size_t next = close + 1;
  if (next < room.end && text[next] != ':') {
    return syntaxFault(next, "Only a port may follow the \"]\" of an address. Check the link.");
  }
  const std::size_t more = text.find_first_of("[]", next);
  return more == std::string_view::npos ? verdict() : syntaxFault(more, MISPLACED);
}

}  // namespace

verdict checkText(std::string_view text) {
  for (const auto& check : {checkLength, checkBytes, checkBrackets}) {
    if (auto fault = check(text)) {
      return fault;
    }
  }
  return {};
}

piece authorityOf(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos || text.substr(colon, 3) != "://") {
    return {text.substr(text.size()), text.size()};
  }
  return piece{text, 0}.part(colon + 3).takeUntil("/?#");
}

}  // namespace hopopen
