// SPDX-License-Identifier: MIT
// Filling in a definition: what a viewer is given for a link.
//
// Only checked pieces of the link come in, each where the template names it, so a link
// cannot add an argument.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "definition.h"
#include "host_rules.h"
#include "link.h"
#include "programs.h"
#include "refusal.h"
#include "route.h"

namespace hopopen {

/// A variable for the viewer.
struct variable {
  std::string name;
  std::string value;
  bool secret;  ///< holds a password
};

/// Everything that is decided about a start.
struct filling {
  std::vector<std::string> arguments;  ///< the whole vector, the terminal's included
  std::vector<variable> environment;
  std::optional<std::uint16_t> port;  ///< of the machine, where a tunnel leads to it
  std::optional<std::string> user;    ///< from wherever in the link it comes, or the settings
  bool userOfSettings = false;        ///< whether it is that of the settings
  std::vector<bool> used;             ///< for each parameter of the link
  std::vector<std::string> dropped;   ///< "password", "user", "fragment", names of parameters
};

/// Fills in the viewer's templates, for a host of which the settings say that, and which is reached
/// in that way.  A parameter may ask for what the viewer cannot be held to; then nothing is
/// started.
verdict fill(const link& what, const hostRules& rules, const route& way, const definition& viewer,
             const installed& program, filling& into);

}  // namespace hopopen
