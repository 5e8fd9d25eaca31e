// SPDX-License-Identifier: MIT
// Reading a link, by RFC 3986, RFC 7869, RFC 4248 and the IETF draft on ssh URIs.  Nothing is
// looked up; what the pieces mean to a viewer is decided elsewhere.
//
// Whatever a stranger can put into a link is compared with a short list of what is allowed,
// and everything else is refused, so that any program can be given a piece.
#pragma once

#include <string>

#include "link.h"
#include "refusal.h"

namespace hopopen {

/// The first steps: keeps the text, and reads its scheme.
verdict readScheme(const std::string& text, link& into);

/// All other steps.
/// REQUIRES: `readScheme` found no fault.
verdict readRest(link& into);

}  // namespace hopopen
