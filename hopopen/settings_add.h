// SPDX-License-Identifier: MIT
// Adding something to the text of a settings file.
#pragma once

#include <string>

#include "settings_change.h"
#include "toml_text.h"

namespace hopopen {

/// The text with the viewers that are to be used.
/// REQUIRES: the text is TOML.
std::string use(tomlText& source, const change& what);

/// The text with the hosts that are to be trusted in the list, except for those whose tables say
/// whether they are.
/// REQUIRES: the text is TOML.
std::string trust(tomlText& source, const change& what);

}  // namespace hopopen
