// SPDX-License-Identifier: MIT
// The rules of the scheme rdp: beside the usual form of links it has an older one, which is
// made of typed pairs (rdp_pairs.h).
#pragma once

#include "scheme_rules.h"

namespace hopopen {

extern const schemeRules RDP;

}  // namespace hopopen
