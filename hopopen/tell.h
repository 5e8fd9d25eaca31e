// What hopopen says about a link that it was asked to open.
#pragma once

#include <string>

#include "decide.h"

namespace hopopen {

/// The line on standard error: "hopopen: MESSAGE (CODE)", without a line feed.
std::string refusalLine(const refusal& why);

/// For people: a line for each fact.
std::string asText(const opening& told);

/// For programs: one line with a JSON object (RFC 8259) in pure ASCII.
std::string asJSON(const opening& told);

}  // namespace hopopen
