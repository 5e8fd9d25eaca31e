// SPDX-License-Identifier: MIT
// The base folders of a user and a system, by the XDG Base Directory rules (version 0.8).
#pragma once

#include <string>
#include <vector>

namespace hopopen {

/// Reads an environment variable: `std::getenv`, or what a test puts in its place.  Null
/// when the variable is not set.
using variableReader = char* (*)(const char* name);

/// The variable's value; empty when it is not set.
std::string valueOf(variableReader get, const char* name);

/// A folder of the user: the variable's, or `usual` below HOME, or empty when there is none.
/// Paths that are not absolute do not count.
///
///     userFolder(get, "XDG_CONFIG_HOME", "/.config")
std::string userFolder(variableReader get, const char* name, const char* usual);

/// Folders of the system: the absolute paths of the variable, or of `usual` when it is empty.
std::vector<std::string> systemFolders(variableReader get, const char* name, const char* usual);

}  // namespace hopopen
