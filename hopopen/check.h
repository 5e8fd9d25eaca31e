// The check of all definitions and settings.
#pragma once

#include <string>
#include <vector>

#include "fault.h"
#include "folders.h"

namespace hopopen {

/// What a check found.
struct findings {
  faults found;
  std::vector<std::string> ignored;  ///< files that are not looked at
};

/// Reads every definition and every settings file, those that do not count included.
findings checkFiles(const folders& where);

/// For people: a line for each fault, and for each file that is not looked at.
std::string findingsAsText(const findings& told);

/// For programs: one line with a JSON object in pure ASCII.
std::string findingsAsJSON(const findings& told);

}  // namespace hopopen
