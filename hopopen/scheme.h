// SPDX-License-Identifier: MIT
// The schemes, and the rules that each has of its own, for each in one place: those of rdp and
// spice in files of theirs, the shorter ones in scheme.cpp.
#pragma once

#include <string_view>

#include "meaning.h"
#include "parameters.h"
#include "scheme_rules.h"

namespace hopopen {

/// The rules of a scheme.
const schemeRules& rulesOf(std::string_view scheme);

/// What a parameter means in a link of that scheme.
meaning meaningIn(const schemeRules& rules, const parameter& one);

/// True when the value is a number within the limits of that parameter.
/// REQUIRES: the parameter means a number.
bool isWithinLimits(const schemeRules& rules, const parameter& one, bool trusted);

/// True for the parameters for which a definition may have arguments.
bool isConfigurable(std::string_view name);

}  // namespace hopopen
