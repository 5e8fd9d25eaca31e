// SPDX-License-Identifier: MIT
// Changing the text of a settings file that people may have written by hand.
//
// The reader of TOML says where each value is in the text; what is to change is replaced
// there, and every other byte stays: comments, blank lines, line ends, tables that mean
// nothing to this program, the order and the quotes.  All forms that TOML has are kept as
// they are: a table below its header, dotted keys, inline tables, lists over many lines.
#pragma once

#include <optional>
#include <string>

#include "settings_change.h"

namespace hopopen {

/// The text of a settings file after a change; the same text when there is nothing to
/// change.
///
///     edited("# mine\n", {.use = {{"vnc", "krdc"}}})   // # mine\n\n[use]\nvnc = "krdc"\n
///
/// Nothing when the result would not say what it should, or anything else would be lost: the
/// result is read again and compared before it is given out.  The reason is a text with a
/// fault, a scheme or viewer that a settings file cannot have, or any mistake here.
std::optional<std::string> edited(const std::string& text, const change& what);

}  // namespace hopopen
