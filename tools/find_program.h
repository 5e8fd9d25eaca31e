// SPDX-License-Identifier: MIT
// Where `execvp` would find a program, and how it would come to be executed.
#pragma once

#include <string>
#include <vector>

/// The file that `execvp` would execute.
struct foundProgram {
  std::string path;  ///< empty when there is none
  int error = 0;     ///< then why: the error number that `execvp` would set
  /// The shell that executes the file, if the kernel does not accept it as a program; else
  /// empty.
  std::string shell = {};
  /// A folder of PATH is too long, at 4096 bytes, and was skipped on the way.
  bool skipsFolder = false;
  /// The current folder was searched in place of such a folder: it was not the last.
  bool searchesHere = false;
};

/// Searches like `execvp`: on `searchPath`, the value of PATH (null when it is unset),
/// unless `program` has a "/".  `executionError` says whether a file can be executed with
/// these arguments.
/// REQUIRES: there is a first argument, unless `program` is empty.
foundProgram findProgram(const std::string& program, const char* searchPath,
                         const std::vector<std::string>& arguments);
