// SPDX-License-Identifier: MIT
// What a user wants to be different in a settings file.
#pragma once

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "trusted.h"

namespace hopopen {

struct change {
  /// From a scheme to the viewer that opens it, or to nothing when the choice is forgotten.
  std::map<std::string, std::optional<std::string>> use = {};
  std::optional<trustedHost> forHost = {};  ///< the hosts that `use` is for, unless for all
  /// Taken out first, wherever they are.  A table of such a host that trusts it distrusts it then.
  std::vector<trustedHost> distrust = {};
  /// Added, except for those that are there already.  A table of such a host that distrusts it
  /// trusts it then.
  std::vector<trustedHost> trust = {};
};

/// True when the list has that host.
inline bool contains(const std::vector<trustedHost>& list, const trustedHost& host) {
  return std::find(list.begin(), list.end(), host) != list.end();
}

}  // namespace hopopen
