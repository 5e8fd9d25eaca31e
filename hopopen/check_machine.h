// SPDX-License-Identifier: MIT
// The check of what hopopen itself needs for a link: a viewer and what that runs in, and a
// way to say what is wrong.
#pragma once

#include <string>
#include <vector>

#include "base_folders.h"
#include "choose.h"
#include "finding.h"
#include "programs.h"

namespace hopopen {

/// A screen to show a viewer on.
finding checkDisplay(variableReader get);

/// The viewer that opens links of the scheme, which some definition must name.
finding checkViewer(const candidates& among, const std::string& scheme);

/// A terminal, where a viewer for one of the schemes needs one.
finding checkTerminal(const candidates& among, const std::vector<std::string>& schemes,
                      const programFinder& programs);

/// A program that shows messages, where there is a desktop.
finding checkNotifier(variableReader get, const programFinder& programs);

/// What hoplaunch needs, which has its place beside hopopen.
finding checkSemaphores();

}  // namespace hopopen
