// SPDX-License-Identifier: MIT
// What hopopen says to programs about a link that it was asked to open.
#pragma once

#include <string>

#include "decide.h"

namespace hopopen {

/// One line with a JSON object (RFC 8259) in pure ASCII.
std::string asJSON(const opening& told);

}  // namespace hopopen
