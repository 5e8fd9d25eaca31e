// The parameters of a link: pairs of a name and a value.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "piece.h"
#include "refusal.h"

namespace hopopen {

/// A parameter of the query, or of the user information of an ssh link.
struct parameter {
  std::string name;      ///< decoded, in the letters of the link; compared without their case
  std::string value;     ///< decoded
  std::size_t position;  ///< where the name begins in the link
};

/// Reads pairs, each `name` or `name=value`, with `separator` between them, and adds those that
/// are not there already.  Empty pairs are skipped.  A fault is a refusal with the code `why`.
verdict readParameters(piece text, const char* separator, code why, std::vector<parameter>& into);

}  // namespace hopopen
