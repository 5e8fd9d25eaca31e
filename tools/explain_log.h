// SPDX-License-Identifier: MIT
// What would happen to a log, without opening it or making it.
#pragma once

#include <string>

/// Why nothing, or not every line, would be written to the log at `path`: that it cannot be
/// opened or made, or that it may take no more for a while, as a pipe does.  Empty when all
/// is well, and for an empty path, which asks for no log.
///
/// Goes by what is at the path: links are followed, and what Linux refuses in folders
/// that everybody may write to is refused.  Not seen: a full disk, a limit on the size of
/// files, and what only the driver of a device knows.
std::string logFault(const std::string& path);
