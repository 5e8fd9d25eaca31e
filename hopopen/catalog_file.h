// SPDX-License-Identifier: MIT
// Keeping the catalog of definitions on disk, among what a user may throw away at any time.
#pragma once

#include <string>

#include "catalog.h"
#include "definitions.h"

namespace hopopen {

/// Reads the catalog.  An empty one when there is none.
catalog readCatalog(const std::string& path);

/// Keeps the catalog of these definitions, unless it is there already.  What cannot be written
/// is left out without a word: everything works without it.
void keepCatalog(const std::string& path, const definitions& known);

}  // namespace hopopen
