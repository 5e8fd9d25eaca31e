// The settings of hopopen: which viewer opens which scheme, and which hosts are trusted.
//
//     [use]
//     vnc = "tigervnc"
//
//     [trust]
//     hosts = ["build.example", ".lab.example", "[fe80::1%25eth0]"]
//
// A user has one such file, administrators may have several.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "fault.h"
#include "trusted.h"

namespace hopopen {

/// What one file says.
struct settings {
  std::string file;                        ///< its path
  std::map<std::string, std::string> use;  ///< from a scheme, in lower case, to a viewer
  std::vector<trustedHost> trust;
};

/// Reads the text of a settings file.  `file` is its path, for the faults, all of which are
/// appended to `found`, in the order of the text:
///
/// - a text that is no TOML;
/// - `use` or `trust` that is no table;
/// - in `use`, a key that is no scheme in lower case, or a value that is no text;
/// - `hosts` that is no list, or an element of it that is no host.
///
/// Keys that are not known mean nothing.
settings readSettings(const std::string& text, const std::string& file, faults& found);

}  // namespace hopopen
