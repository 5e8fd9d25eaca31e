// SPDX-License-Identifier: MIT
// Which desktop entry opens links of a scheme by default, by the MIME Applications
// Associations rules (version 1.0.1).
//
// Each folder may have lists, those of the current desktop first, and a cache of what its
// desktop entries offer.  A default of the first list that has one counts.  Where no list has
// one, the first entry counts that a list adds or a cache names, and no list before removes.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "key_file.h"

namespace hopopen {

/// A list or a cache.
struct associationFile {
  std::string path;
  keyFile keys;
};

/// What one folder has.
struct associations {
  bool ofUser = false;                     ///< the folder is the user's own
  std::vector<associationFile> ofDesktop;  ///< NAME-mimeapps.list, in the order of the names
  std::optional<associationFile> list;     ///< mimeapps.list
  std::optional<associationFile> cache;    ///< mimeinfo.cache
};

/// An entry that opens links, and what says so.
struct linkHandler {
  std::string id;       ///< of the entry, such as "hopopen.desktop"
  std::string file;     ///< the list or cache that names it
  bool byUser = false;  ///< the file is a list of the user's own
};

/// Says of an entry's id whether a desktop would take it.  For one that a cache names, `cache`
/// is the path of the cache, beside which the entry must be; otherwise it is empty.
using entryJudge = std::function<bool(const std::string& id, const std::string& cache)>;

/// The default for a scheme.  Entries that do not work are passed over.
std::optional<linkHandler> defaultHandler(const std::vector<associations>& folders,
                                          const std::string& scheme, const entryJudge& works);

}  // namespace hopopen
