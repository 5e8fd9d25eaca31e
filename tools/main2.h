// SPDX-License-Identifier: MIT
// The launcher after its command line has been split.
#pragma once

#include <string>
#include <vector>

#include "assoclist.h"

/// Applies the options that name configuration items or trace flags, and launches with the
/// rest.  `args` holds at least the URI; keys of `params` are compared ignoring case.
/// Returns only when nothing was launched, then -1.
int process(const std::vector<std::string>& args, const assocList& params);
