// SPDX-License-Identifier: MIT
// What a profile of a browser remembers about links: that they are blocked, or that another
// program has them.
#pragma once

#include <optional>
#include <string>

#include "json_read.h"

namespace hopopen {

/// How the file Preferences of a profile of Chromium keeps links of the scheme from the
/// desktop, as people read it; nothing when it does not.
std::optional<std::string> chromiumKeeps(const jsonData& preferences, const std::string& scheme);

/// The same of the file handlers.json of a profile of Firefox.
std::optional<std::string> firefoxKeeps(const jsonData& handlers, const std::string& scheme);

/// The same of the file prefs.js or user.js of a profile of Firefox.
std::optional<std::string> firefoxSwitchesOff(const std::string& preferences,
                                              const std::string& scheme);

}  // namespace hopopen
