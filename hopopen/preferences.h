// What a user and the administrators want, taken together.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "fault.h"
#include "folders.h"
#include "host.h"
#include "settings.h"

namespace hopopen {

/// Who chose the viewer.
enum class chooser : std::uint8_t { OPTION, USER, ADMINISTRATOR, RANK };

struct wanted {
  std::string viewer;  ///< its name
  chooser by;
};

struct preferences {
  std::vector<settings> files;  ///< the user's first, if there is one
  bool hasUser = false;         ///< whether the first is the user's
  faults found;                 ///< with one of them, none of this may be relied on

  /// The viewer for a scheme, if somebody named one; the first file that does counts.
  std::optional<wanted> viewerFor(const std::string& scheme) const;
  /// True when any of the files trusts the host.
  bool trust(const host& machine) const;
};

/// Reads all settings files that are there.
preferences readPreferences(const folders& where);

}  // namespace hopopen
