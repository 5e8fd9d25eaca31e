// SPDX-License-Identifier: MIT
// The list of viewers.
#pragma once

#include <string>

#include "choose.h"

namespace hopopen {

/// For people: what each viewer opens, its program, what it lets through, and who chose it.
std::string listAsText(const candidates& all);

/// For programs: one line with a JSON object in pure ASCII.
std::string listAsJSON(const candidates& all);

}  // namespace hopopen
