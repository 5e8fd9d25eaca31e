// SPDX-License-Identifier: MIT
// Several texts in one sentence.
#pragma once

#include <string>
#include <vector>

namespace hopopen {

/// The texts with ", " between them, and `last` before the last one.
///
///     enumeration({"a", "b", "c"})   // a, b and c
std::string enumeration(const std::vector<std::string>& texts, const char* last = " and ");

}  // namespace hopopen
