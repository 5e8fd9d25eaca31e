// SPDX-License-Identifier: MIT
// What the settings say of one host: the viewer for a scheme, the user, whether it is trusted, and
// what it is reached through.
//
// A settings file may have a table for a host and tables for the domains that it is in.  For each
// key, the closest table that has it counts.  What the user's own file says comes before what the
// files of the administrators say, which are taken together; of two tables of theirs that are
// equally close, that of the first file counts.
#pragma once

#include <optional>
#include <string>

#include "gateway.h"
#include "host.h"
#include "preferences.h"
#include "trusted.h"

namespace hopopen {

/// Something that a table says, and where.
template <class Value>
struct said {
  Value value;
  trustedHost where;  ///< which hosts the table is for
  std::string file;   ///< the path of its file
  bool byUser;        ///< whether that is the user's own
};

struct hostRules {
  std::optional<said<std::string>> viewer;  ///< for the scheme; [use] is not part of this
  std::optional<said<std::string>> user;    ///< for links that name none
  std::optional<said<bool>> trust;          ///< of a table; lists are not part of this
  std::optional<said<gateway>> through;
  /// In the end: what the table says, otherwise whether any file has the host in its list.  A table
  /// that says false beats the lists, except for entries that are closer than it.
  bool trusted = false;
};

/// What holds for a host and links of that scheme.
hostRules rulesFor(const preferences& wishes, const host& machine, const std::string& scheme);

/// True when the host is trusted.
bool isTrusted(const preferences& wishes, const host& machine);

/// The viewer that was chosen for the scheme: by the user for the host or for all, or by the
/// administrators in the same order.
std::optional<wanted> viewerFor(const preferences& wishes, const std::string& scheme,
                                const hostRules& rules);

}  // namespace hopopen
