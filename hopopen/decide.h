// SPDX-License-Identifier: MIT
// Deciding what happens with a link.  Nothing is opened or started here.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "choose.h"
#include "fill.h"
#include "host_rules.h"
#include "link.h"
#include "refusal.h"
#include "route.h"

namespace hopopen {

/// All that is known about the opening of one link.  What comes after a refusal is not
/// known.
struct opening {
  link what;
  std::optional<bool> trusted;
  hostRules rules;                ///< what the settings say of the host
  std::optional<route> way;       ///< to the host
  choice chosen;                  ///< its viewer is null while it is not known
  std::optional<filling> filled;  ///< what the viewer is given
  verdict why;                    ///< the refusal, if there is one; its message names the link
  /// Viewers of which the outline is known, and more is needed.  Unless it is empty, nothing
  /// is decided yet: read these whole, and decide again.
  std::vector<std::string> unread;
};

/// Reads the link, chooses a viewer, the one named `viewer` if there is one, and fills
/// in what it is given.
opening decide(const std::string& text, const std::optional<std::string>& viewer,
               const candidates& among);

/// Fills in what the viewer is given anew, as soon as there is the socket of a tunnel.
/// REQUIRES: the opening is decided and goes through a gateway.
void fillSocket(opening& decided, const std::string& socket);

/// The refusal's message made whole: which link it is about, and why it was not opened.
refusal about(const link& what, refusal why);

}  // namespace hopopen
