// SPDX-License-Identifier: MIT
// The outline of a definition as a line of text: enough to choose the viewer.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "definition.h"

namespace hopopen {

/// Between the fields of an outline.
inline constexpr char BETWEEN_FIELDS = '\t';

/// The outline of the definition, without a line feed.
std::string outlineText(const definition& viewer);

/// Reads what outlineText() wrote; nothing if the text is not of that form.  Of which file it
/// is, is for the caller to say.
std::optional<definition> readOutline(std::string_view text);

}  // namespace hopopen
