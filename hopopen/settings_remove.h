// SPDX-License-Identifier: MIT
// Taking something out of the text of a settings file.
#pragma once

#include <string>

#include "settings_change.h"
#include "toml_text.h"

namespace hopopen {

/// The text without the schemes that are to be forgotten.
/// REQUIRES: the text is TOML.
std::string forget(tomlText& source, const change& what);

/// The text without the hosts that are to be distrusted.
/// REQUIRES: the text is TOML.
std::string distrust(tomlText& source, const change& what);

}  // namespace hopopen
