// SPDX-License-Identifier: MIT
// JSON in pure ASCII (RFC 8259), one line.
#pragma once

#include <nlohmann/json.hpp>  // IWYU pragma: export
#include <string>
#include <string_view>
#include <vector>

namespace hopopen {

/// Keeps its members in their order.
using json = nlohmann::ordered_json;

/// The text for a JSON value: each byte that is not UTF-8 becomes U+FFFD.
json jsonText(std::string_view text);

/// The texts as an array.
json jsonTexts(const std::vector<std::string>& texts);

/// The value as a line with its line feed; what is not ASCII is \u escapes.
std::string jsonLine(const json& value);

}  // namespace hopopen
