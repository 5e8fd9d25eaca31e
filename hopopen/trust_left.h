// SPDX-License-Identifier: MIT
// What keeps a host trusted, or distrusted, after the user has changed the settings.
#pragma once

#include <string>
#include <vector>

#include "preferences.h"
#include "trusted.h"

namespace hopopen {

/// About hosts that are to be trusted no more: a line for each entry of each file that still
/// trusts one.
std::string stillTrusted(const std::vector<trustedHost>& hosts, const preferences& wishes);

/// About hosts that are to be trusted: a line for each that a table distrusts all the same, and
/// what to do.
std::string stillDistrusted(const std::vector<trustedHost>& hosts, const preferences& wishes);

}  // namespace hopopen
