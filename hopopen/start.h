// SPDX-License-Identifier: MIT
// Becoming the viewer.
#pragma once

#include <string>
#include <vector>

#include "decide.h"
#include "refusal.h"

namespace hopopen {

/// The environment of the viewer, as "NAME=VALUE" each: what is in `current`, without the
/// variables that the definition takes out, and with those that it sets.  `current` ends
/// with a null pointer.  A terminal is given it as it is: the variables of a viewer in it are
/// changed by the words that the terminal runs.
std::vector<std::string> environmentFor(const opening& decided, const char* const* current);

/// Becomes the viewer.  Returns only when that failed, with the error number.
int become(const opening& decided);

/// The refusal for that error number.
refusal startFailed(const opening& decided, int error);

}  // namespace hopopen
