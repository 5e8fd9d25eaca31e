// All definitions of viewers that a user and a system have.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "catalog.h"
#include "definition.h"
#include "fault.h"

namespace hopopen {

struct definitions {
  std::vector<definition> viewers;    ///< those without fault, by name
  std::vector<catalogEntry> entries;  ///< about the files of these viewers
  faults found;                       ///< why others are left out
  std::vector<std::string> ignored;   ///< files whose names are not those of definitions

  /// The definition of that name, or null.
  const definition* named(const std::string& name) const;
  /// True when a definition opens links of the scheme.
  bool open(const std::string& scheme) const;
};

/// Which files need not be read: of those that the catalog knows, the ones that do not open
/// the scheme.  A viewer of such a file has its name, title and schemes, and nothing else.
struct shortcut {
  const catalog& known;
  const std::string& scheme;
};

/// Reads the files NAME.toml of the folders.  The first folder that has a name wins, also
/// with a fault; an empty file hides the viewer.
definitions readDefinitions(const std::vector<std::string>& folders,
                            const std::optional<shortcut>& skip = {});

/// The same with the files that do not win read, too, for their faults.
definitions readAllDefinitions(const std::vector<std::string>& folders);

}  // namespace hopopen
