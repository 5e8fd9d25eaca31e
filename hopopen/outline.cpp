// SPDX-License-Identifier: MIT
#include "outline.h"

#include <algorithm>
#include <charconv>
#include <system_error>
#include <utility>
#include <vector>

namespace hopopen {

namespace {

constexpr char BETWEEN_TEXTS = '\x1f';  // no text of a definition has a control character

std::string joined(const std::vector<std::string>& texts) {
  std::string result;
  for (const std::string& text : texts) {
    if (!result.empty()) {
      result += BETWEEN_TEXTS;
    }
    result += text;
  }
  return result;
}

// Takes the text up to the next `end` off the front; all of it if there is none.
std::string_view taken(std::string_view& from, char end) {
  const std::string_view result = from.substr(0, from.find(end));
  from.remove_prefix(std::min(from.size(), result.size() + 1));
  return result;
}

std::vector<std::string> parted(std::string_view texts) {
  std::vector<std::string> result;
  while (!texts.empty()) {
    result.emplace_back(taken(texts, BETWEEN_TEXTS));
  }
  return result;
}

}  // namespace

std::string outlineText(const definition& viewer) {
  std::string result;
  for (const std::string& field :
       {viewer.name, viewer.title, joined(viewer.schemes), joined(viewer.programs),
        joined(viewer.unguarded), std::string(viewer.terminal ? "terminal" : ""),
        std::string(viewer.inVariables ? "variables" : "")}) {
    result += field + BETWEEN_FIELDS;
  }
  return result + std::to_string(viewer.rank);
}

std::optional<definition> readOutline(std::string_view text) {
  std::optional<definition> result(std::in_place);
  result->whole = false;
  result->name = taken(text, BETWEEN_FIELDS);
  result->title = taken(text, BETWEEN_FIELDS);
  result->schemes = parted(taken(text, BETWEEN_FIELDS));
  result->programs = parted(taken(text, BETWEEN_FIELDS));
  result->unguarded = parted(taken(text, BETWEEN_FIELDS));
  result->terminal = !taken(text, BETWEEN_FIELDS).empty();
  result->inVariables = !taken(text, BETWEEN_FIELDS).empty();
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, result->rank);
  if (error != std::errc() || stop != end) {
    result.reset();
  }
  return result;
}

}  // namespace hopopen
