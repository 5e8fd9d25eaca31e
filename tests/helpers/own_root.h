// SPDX-License-Identifier: MIT
// A root folder of one's own, for programs that look at absolute places such as
// /etc/chromium: a process that enters it finds nothing there but what a test has put there.
#pragma once

#include <string>
#include <vector>

/// The status of a process that may not have a root of its own.
constexpr int NO_ROOT_OF_ITS_OWN = 99;

/// Makes `folder` the root of this process, which is about to execute a program.  The folders
/// of the system that a program needs to start, and those that hold the paths of `kept`, are
/// the same as outside.  Ends the process with NO_ROOT_OF_ITS_OWN where that is not allowed.
void enterRoot(const std::string& folder, const std::vector<std::string>& kept);
