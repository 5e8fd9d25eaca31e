// SPDX-License-Identifier: MIT
// Who opens links of a scheme for Firefox, as a handler in its own form says: in handlers.json
// of a profile, and in the policy Handlers, which has the same form except for its actions.
#pragma once

#include <optional>
#include <string>

#include "json_read.h"

namespace hopopen {

/// Where the handler takes the links if not to the desktop or to hopopen, as people read it:
/// "other-program", "https://site.example/?%s" or "a file".  Nothing when it asks the user,
/// or leaves the links to the desktop.
std::optional<std::string> otherHandler(const jsonData& handler);

}  // namespace hopopen
