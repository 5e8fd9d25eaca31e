// SPDX-License-Identifier: MIT
// Saying something to whoever called hopopen.
#pragma once

#include <string>

#include "fault.h"
#include "launch_log.h"
#include "options.h"
#include "programs.h"
#include "refusal.h"

namespace hopopen {

/// Writes what was asked for to standard output, and returns the exit status: `status`, or
/// another one when the text could not be written.
int say(const std::string& text, int status);

/// Names the first fault of each file on standard error, unless `quiet`.
void tellFaults(const faults& found, bool quiet);

/// Says why nothing is started, wherever somebody may read it, and returns the exit status.
int refuse(const refusal& why, const options& asked, const programFinder& programs,
           const launchLog& log);

}  // namespace hopopen
