// SPDX-License-Identifier: MIT
// What hopopen says to people about a link that it was asked to open.
#pragma once

#include <string>

#include "decide.h"

namespace hopopen {

/// A line for each fact.
std::string asText(const opening& told);

}  // namespace hopopen
