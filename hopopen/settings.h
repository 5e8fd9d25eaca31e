// SPDX-License-Identifier: MIT
// The settings of hopopen: which viewer opens which scheme, and which hosts are trusted.
//
//     [use]
//     vnc = "tigervnc"
//
//     [trust]
//     hosts = ["build.example", ".lab.example", "[fe80::1%25eth0]"]
//
//     [host.".lab.example"]
//     use = { vnc = "remmina" }
//     user = "build"
//     trust = false
//     through = "me@gate.example:2222"
//
// A user has one such file, administrators may have several.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "fault.h"
#include "gateway.h"
#include "trusted.h"

namespace hopopen {

/// From a scheme, in lower case, to a viewer.
using viewerOfScheme = std::map<std::string, std::string>;

/// What one table says of a host, or of all hosts below a domain.
struct hostTable {
  trustedHost where;
  viewerOfScheme use = {};
  std::optional<std::string> user = {};  ///< for links that name none
  std::optional<bool> trust = {};
  std::optional<gateway> through = {};  ///< what the hosts are reached through

  bool operator==(const hostTable&) const = default;
};

/// What one file says.
struct settings {
  std::string file;  ///< its path
  viewerOfScheme use;
  std::vector<trustedHost> trust;
  std::vector<hostTable> hosts;  ///< in the order of the text, one for each host
};

/// Reads the text of a settings file.  `file` is its path, for the faults, all of which are
/// appended to `found`, in the order of the text:
///
/// - a text that is no TOML;
/// - `use`, `trust` or `host` that is no table;
/// - in `use`, a key that is no scheme in lower case, or a value that is no text;
/// - `hosts` that is no list, or an element of it that is no host;
/// - in `host`, a key that is no host or, however it is written, a host that was there before;
///   or a value that is no table;
/// - in such a table, a `use` as above, a `user` that no link can have, a `trust` that is not true
///   or false, a `through` that is no gateway.
///
/// Keys that are not known mean nothing.
settings readSettings(const std::string& text, const std::string& file, faults& found);

}  // namespace hopopen
