// SPDX-License-Identifier: MIT
// The command line that hoplaunch and hopexplain share:
//
//     [-KEY=VALUE | -KEY VALUE]... URI
#pragma once

#include <string>
#include <vector>

#include "assoclist.h"

/// The number of positional arguments that the tools need: 1.
int minimumArguments();

/// Writes the usage line to standard error.  `command` is shown as it is.
void help(const char* command);

/// Splits the command line, the command itself left out, into positional arguments
/// and keyword options.  Of an option that is given twice the last value counts.
/// False, with a message, for a keyword without a value.
bool split(int count, char** args, std::vector<std::string>& arguments, assocList& parameters);
