// SPDX-License-Identifier: MIT
// The launch itself: writes the log, and becomes the viewer.
#pragma once

#include <string>
#include <vector>

#include "assoclist.h"

/// Becomes the viewer for the URI `args[0]`, steered by the options "log",
/// "program", "style" and "portArg".  Returns only when that failed, then -1.
int processAug(const std::vector<std::string>& args, const assocList& params);
