// SPDX-License-Identifier: MIT
// The rules that schemes have of their own: the pairs of rdp links, and the ports of spice links.
// Written anew, as link_rules.h is.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "link_rules.h"

/// True for an rdp link that is made of typed pairs.
bool isPairsByRules(std::string_view text);

/// Whether the brackets of such a link, if there are any, are around its address.
bool pairBracketsFit(std::string_view text);

/// Holds such a link against the rules for pairs.
std::optional<ruling> readPairsByRules(std::string_view text, ruledLink& into);

/// Decides which port a spice link means.  `port` is where that of the authority is.
std::optional<ruling> readSpiceByRules(std::string_view text, stretch port, ruledLink& into);

/// The values of such a link that nobody may see.
std::vector<stretch> secretPairs(std::string_view text);

/// The name of a pair as it is compared, and its value as viewers are given it.
std::string keyByRules(const ruledParameter& one);
std::string meantByRules(const ruledParameter& one);

/// True for a number of rdp pairs that a viewer may be told.
bool isNumberToPassByRules(const ruledParameter& one, bool trusted);
