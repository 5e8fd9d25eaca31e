// SPDX-License-Identifier: MIT
// Reading JSON that other programs or people wrote.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "json.h"

namespace hopopen {

/// Keeps its members sorted, so that a long text takes no long time.
using jsonData = nlohmann::json;

/// The value of a text.  As Chromium does with its policies, comments and a comma after the
/// last element are overlooked.  Nothing when it is no JSON all the same.
std::optional<jsonData> readJson(const std::string& text);

/// The member of that path, such as {"policies", "WebsiteFilter"}; null when there is none.
const jsonData* memberOf(const jsonData& value, const std::vector<std::string>& path);

/// The texts in the list that the path leads to.  Empty when there is none.
std::vector<std::string> textsOf(const jsonData& value, const std::vector<std::string>& path);

}  // namespace hopopen
