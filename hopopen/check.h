// SPDX-License-Identifier: MIT
// The check of all that a click on a link goes through, in the order of the click, and of all
// definitions and settings.  It changes nothing, and needs no network.
#pragma once

#include <string>

#include "base_folders.h"
#include "fault.h"
#include "finding.h"
#include "folders.h"

namespace hopopen {

/// What a check found.
struct checkResult {
  findings checks;
  faults found;  ///< those of definitions and settings, which are among `checks`, too
};

/// Checks everything.  Every definition and every settings file is read, those that do not
/// count included.
checkResult checkAll(const folders& where, variableReader get);

/// For programs: one line with a JSON object in pure ASCII.
std::string checksAsJSON(const checkResult& told);

}  // namespace hopopen
