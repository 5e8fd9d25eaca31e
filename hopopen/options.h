// SPDX-License-Identifier: MIT
// The command line of hopopen.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace hopopen {

/// What hopopen is asked for; exactly one of these.
enum class wish : std::uint8_t { OPEN, LIST, CHECK, USE, FORGET, TRUST, DISTRUST };

struct options {
  wish what = wish::OPEN;
  std::string link;                   ///< to open
  std::vector<std::string> words;     ///< of USE, FORGET, TRUST and DISTRUST
  std::optional<std::string> host;    ///< that USE and FORGET are for, unless for all
  std::optional<std::string> viewer;  ///< for this launch
  std::string log;                    ///< the path of the log; empty for none
  bool dryRun = false;
  bool quiet = false;
  bool json = false;
};

/// What to do instead: print a text and end.
struct ending {
  std::string output;  ///< for standard output
  std::string error;   ///< for standard error
  int status;
};

/// Reads the command line, the program's name first.  An ending when there is nothing else to
/// do: help was asked for, or the command line is wrong.
std::optional<ending> readOptions(int count, const char* const* arguments, options& into);

}  // namespace hopopen
