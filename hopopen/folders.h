// SPDX-License-Identifier: MIT
// Where files are looked for, by the XDG Base Directory rules (version 0.8).
#pragma once

#include <string>
#include <vector>

#include "base_folders.h"

namespace hopopen {

/// The user's own folder is first in each list, if there is one: without HOME there may be
/// none.  Variables that are empty count as not set, and paths that are not absolute do not
/// count at all.
struct folders {
  explicit folders(variableReader get);

  std::string userSettings;                ///< the user's settings file, or empty
  std::vector<std::string> otherSettings;  ///< those of administrators, in their order
  std::string catalogFile;                 ///< the catalog of definitions, or empty
  std::vector<std::string> viewers;        ///< folders with definitions, in their order
};

}  // namespace hopopen
