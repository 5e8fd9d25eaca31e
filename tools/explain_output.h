// SPDX-License-Identifier: MIT
// What hopexplain writes, and whether that worked.
#pragma once

#include <string>

/// How hopexplain ends.
enum explainStatus : int {
  LAUNCHES = 0,
  LAUNCHES_NOT = 1,
  OUTPUT_LOST = 2,
  WRONG_COMMAND_LINE = 255
};

/// Writes the text to standard output and returns `status`.  Where that fails it says so
/// on standard error and returns OUTPUT_LOST.
/// REQUIRES: SIGPIPE and SIGXFSZ do not end the process.
int printed(const std::string& text, int status);
