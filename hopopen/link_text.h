// SPDX-License-Identifier: MIT
// The text of a link, before anything in it is read: its length, its bytes and its brackets.
#pragma once

#include <string_view>

#include "piece.h"
#include "refusal.h"

namespace hopopen {

/// Checks what has to hold for links of all schemes.
verdict checkText(std::string_view text);

/// Where the authority is, if the text has one: after the first colon and two slashes.
piece authorityOf(std::string_view text);

}  // namespace hopopen
