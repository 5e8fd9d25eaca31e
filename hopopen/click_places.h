// SPDX-License-Identifier: MIT
// The places that a click on a link goes through before hopopen is started: lists and caches
// of desktops, policies and profiles of browsers.
#pragma once

#include <string>
#include <vector>

#include "base_folders.h"

namespace hopopen {

struct placeOf {
  std::string folder;
  bool ofUser = false;      ///< the folder is the user's own
  bool hasEntries = false;  ///< there may be desktop entries and a cache of them
};

/// A browser that a snap or a flatpak brings.
struct sandboxedBrowser {
  std::string name;    ///< what people read
  std::string folder;  ///< is there when the browser is
};

/// Texts alone: nothing is looked at.  Where a variable is not absolute, or HOME is missing,
/// the folders of the user are left out.
struct clickPlaces {
  explicit clickPlaces(variableReader get);

  std::vector<std::string> desktops;  ///< of XDG_CURRENT_DESKTOP, in lower case
  std::vector<placeOf> lists;         ///< folders with mimeapps.list, in their order
  std::vector<placeOf> entries;       ///< folders with desktop entries and mimeinfo.cache

  std::vector<std::string> chromiumPolicies;  ///< folders with files NAME.json
  std::vector<std::string> firefoxPolicies;   ///< files
  std::vector<std::string> chromiumProfiles;  ///< folders whose folders are profiles
  std::vector<std::string> firefoxProfiles;   ///< the same, with a profiles.ini
  std::vector<sandboxedBrowser> sandboxed;
};

}  // namespace hopopen
