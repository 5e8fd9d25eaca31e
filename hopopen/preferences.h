// SPDX-License-Identifier: MIT
// What a user and the administrators want, taken together.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "fault.h"
#include "folders.h"
#include "settings.h"
#include "trusted.h"

namespace hopopen {

/// Who chose the viewer.
enum class chooser : std::uint8_t { OPTION, USER, ADMINISTRATOR, RANK };

struct wanted {
  std::string viewer;  ///< its name
  chooser by;
  std::optional<trustedHost> where = {};  ///< the hosts that it was chosen for, unless for all
};

struct preferences {
  std::vector<settings> files;  ///< the user's first, if there is one
  bool hasUser = false;         ///< whether the first is the user's
  faults found;                 ///< with one of them, none of this may be relied on

  /// True for the file of that index when it is the user's own.
  bool isUsers(std::size_t index) const { return index == 0 && hasUser; }
  /// The viewer for a scheme on whatever host, if somebody named one; the first file that does
  /// counts.
  std::optional<wanted> viewerFor(const std::string& scheme) const;
};

/// Reads all settings files that are there.
preferences readPreferences(const folders& where);

}  // namespace hopopen
