// SPDX-License-Identifier: MIT
// Choosing the viewer for a link.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "definition.h"
#include "definitions.h"
#include "host_rules.h"
#include "preferences.h"
#include "programs.h"
#include "refusal.h"
#include "trusted.h"

namespace hopopen {

/// What a choice depends on.
struct candidates {
  const definitions& known;
  const preferences& wishes;
  /// Looks for the program of a viewer.
  std::function<std::optional<installed>(const definition& viewer)> find;
};

/// A link, as far as the choice depends on it.
struct occasion {
  std::string scheme;
  std::string host;  ///< as it would be trusted
  const hostRules& rules;
};

struct choice {
  const definition* viewer = nullptr;
  installed program;
  chooser by = chooser::RANK;
  std::optional<trustedHost> where = {};  ///< the hosts that it was chosen for, unless for all
};

/// Chooses the viewer: the one named `option`, if there is one; the one that the
/// settings name for the host or for all; or the one of the lowest rank that is installed.  A
/// viewer that has no option to guard the user is chosen by rank for trusted hosts alone.
verdict choose(const candidates& among, const occasion& what,
               const std::optional<std::string>& option, choice& into);

/// The end of a command that is about these hosts: " --for HOST", or nothing for all hosts.
std::string forHosts(const std::optional<trustedHost>& where);

/// The viewer that rank alone gives, or null.
const definition* lowestRank(const candidates& among, const std::string& scheme, bool trusted);

/// The definitions that open the scheme, the lowest rank first, then by name.
std::vector<const definition*> ranked(const definitions& known, const std::string& scheme);

}  // namespace hopopen
