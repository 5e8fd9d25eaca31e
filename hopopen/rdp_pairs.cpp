// SPDX-License-Identifier: MIT
#include "rdp_pairs.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "characters.h"
#include "percent.h"
#include "piece.h"

namespace hopopen {

namespace {

constexpr std::string_view MARK = "rdp://";

bool namesAddress(std::string_view name) {
  const std::string key = pairKey(decode(name));
  return sameLetters(key, "full address") || sameLetters(key, "alternate full address");
}

}  // namespace

bool isMadeOfPairs(std::string_view link) {
  if (!sameLetters(link.substr(0, MARK.size()), MARK)) {
    return false;
  }
  const std::size_t first = link.find_first_of("=/?#@:[", MARK.size());
  return first != std::string_view::npos && link[first] == '=';
}

piece pairsOf(std::string_view link) {
  const piece all = piece{link, 0}.part(MARK.size()).takeUntil("#");
  return all.part(0, all.text.size() - (all.text.ends_with('/') ? 1 : 0));
}

std::optional<writtenPair> divide(piece pair) {
  const std::size_t sign = pair.text.find_first_of("=:");
  if (sign == std::string_view::npos) {
    return {};
  }
  return writtenPair{pair.part(0, sign), pair.part(sign + 1)};
}

std::string pairKey(std::string_view name) {
  std::string result(name);
  std::replace_if(
      result.begin(), result.end(), [](char c) { return c == '_' || c == '+'; }, ' ');
  return result;
}

std::optional<std::size_t> addressEnd(std::string_view link, std::size_t open) {
  piece rest = pairsOf(link);
  while (!rest.text.empty()) {
    const piece pair = rest.takeUntil("&");
    const auto parts = divide(pair);
    if (parts && open >= parts->value.start && open < pair.end() &&
        decode(link.substr(parts->value.start, open - parts->value.start)) == "s:" &&
        namesAddress(parts->name.text)) {
      return pair.end();
    }
  }
  return {};
}

}  // namespace hopopen
