// SPDX-License-Identifier: MIT
// What a policies.json of Firefox forbids: WebsiteFilter, Handlers, and Preferences
// (https://mozilla.github.io/policy-templates/).
#pragma once

#include <optional>
#include <string>

#include "json_read.h"

namespace hopopen {

/// How the policies keep links of the scheme from the desktop, as people read it; nothing
/// when they do not:
///
/// - WebsiteFilter blocks "<all_urls>" or all of the scheme, and makes no exception for it;
/// - Handlers gives the scheme to another program than hopopen, or to a web site;
/// - Preferences switches the scheme off.
std::optional<std::string> firefoxForbids(const jsonData& policies, const std::string& scheme);

}  // namespace hopopen
