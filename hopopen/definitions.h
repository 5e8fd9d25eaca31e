// SPDX-License-Identifier: MIT
// All definitions of viewers that a user and a system have.
#pragma once

#include <string>
#include <vector>

#include "catalog.h"
#include "definition.h"
#include "fault.h"

namespace hopopen {

struct definitions {
  std::vector<definition> viewers;   ///< those without fault, by name
  faults found;                      ///< why others are left out
  std::vector<std::string> ignored;  ///< files whose names are not those of definitions

  /// The definition of that name, or null.
  const definition* named(const std::string& name) const;
  /// True when a definition opens links of the scheme.
  bool open(const std::string& scheme) const;
};

/// Reads the files NAME.toml of the folders.  The first folder that has a name wins, also
/// with a fault; an empty file hides the viewer.
definitions readDefinitions(const std::vector<std::string>& folders);

/// The same for a click: as little of each definition as it takes to choose a viewer.  Of
/// files that the catalog knows, or that come with this program, that is the outline.
definitions readOutlines(const std::vector<std::string>& folders, const catalog& known);

/// Reads the definitions of these names whole, of which the outline is known.  A file may
/// have changed since: a viewer whose definition now has a fault, or is gone, is left out.
void readWhole(definitions& known, const std::vector<std::string>& names);

/// The same with the files that do not win read, too, for their faults.
definitions readAllDefinitions(const std::vector<std::string>& folders);

}  // namespace hopopen
