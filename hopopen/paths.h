// SPDX-License-Identifier: MIT
// Paths of files and folders, as texts: nothing is looked at.
#pragma once

#include <string>
#include <vector>

namespace hopopen {

/// The absolute paths of a list with colons, such as PATH.  Empty and relative entries are
/// left out: what they mean depends on where a program was started.
std::vector<std::string> absolutePaths(const std::string& list);

/// The path of what has that name in a folder.
std::string within(const std::string& folder, const std::string& name);

/// The folder that a path is in.
std::string folderOf(const std::string& path);

}  // namespace hopopen
