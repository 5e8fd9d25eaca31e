// SPDX-License-Identifier: MIT
// The check of what keeps a link in a browser: policies, profiles and sandboxes.
#pragma once

#include <string>
#include <vector>

#include "click_places.h"
#include "finding.h"
#include "place_reader.h"

namespace hopopen {

/// Policies of Chromium and Google Chrome that forbid one of the schemes.
findings checkChromiumPolicies(const clickPlaces& places, const std::vector<std::string>& schemes,
                               placeReader& reader);

/// The same for Firefox.
findings checkFirefoxPolicies(const clickPlaces& places, const std::vector<std::string>& schemes,
                              placeReader& reader);

/// Profiles that block one of the schemes, or give it to another program.
findings checkProfiles(const clickPlaces& places, const std::vector<std::string>& schemes,
                       placeReader& reader);

/// Browsers from a snap or a flatpak, which hand links on by a portal.
findings checkSandboxes(const clickPlaces& places);

}  // namespace hopopen
