// SPDX-License-Identifier: MIT
// Reading the definition of a viewer.
#pragma once

#include <optional>
#include <string>

#include "definition.h"
#include "fault.h"

namespace hopopen {

/// Reads the text of a definition.  `file` is its path, for the faults, all of which are
/// appended to `found`; with one of them there is no definition.
std::optional<definition> readDefinition(const std::string& name, const std::string& text,
                                         const std::string& file, faults& found);

}  // namespace hopopen
