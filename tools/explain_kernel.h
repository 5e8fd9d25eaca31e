// SPDX-License-Identifier: MIT
// What the kernel would say to an execution, without executing.
#pragma once

#include <string>
#include <vector>

/// The error number that `execve` would set for this file and vector, with the
/// environment and the limits of this process; 0 when it would not return.  Follows Linux:
/// scripts to their interpreters, programs to their loaders, and what both take of the
/// room for arguments.
///
/// ENOEXEC for a file that is no program for the kernel.  A file that this
/// process may execute but not read counts as a program.  Not seen: a file that somebody
/// writes to (ETXTBSY), and formats that binfmt_misc adds.  Opens files for reading only.
int executionError(const std::string& file, const std::vector<std::string>& arguments);
