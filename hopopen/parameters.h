// SPDX-License-Identifier: MIT
// The parameters of a link: pairs of a name and a value.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "piece.h"
#include "refusal.h"

namespace hopopen {

/// A parameter of the query, or of the user information of an ssh link; or a typed pair of an
/// rdp link.
struct parameter {
  std::string name;      ///< decoded, in the letters of the link; compared without their case
  std::string value;     ///< decoded, without a type
  std::size_t position;  ///< where the name begins in the link
  std::size_t valuePosition = 0;  ///< where the value begins, without a type
  char type = 0;                  ///< of a typed pair: 's', 'i' or 'b'
  bool taken = false;             ///< became the user, the port or the like while the link was read

  /// The name as it is compared: in a typed pair "_" and "+" are blanks.
  std::string key() const;
  /// The value as viewers are given it: without leading zeros if it is typed as a number.
  std::string meant() const;
  /// True when the value must not be shown.
  bool holdsPassword() const;
};

/// Decodes the value of a parameter, which is of bounded length and has no control character.
verdict readValue(const piece& encoded, code why, std::string& into);

/// Adds a parameter, unless it is there already with the same value.  With another value, it is
/// refused.
verdict addParameter(parameter read, code why, std::vector<parameter>& into);

/// The most bytes that the name of a parameter may have.
constexpr std::size_t LONGEST_PARAMETER = 64;

/// Messages on names.
constexpr const char* BAD_NAME =
    "A parameter of the link has a name that is too long or has a character that "
    "names cannot have. Check the link.";
constexpr const char* NO_NAME = "A parameter of the link has no name. Check the link.";

/// Reads pairs, each `name` or `name=value`, with one of `separators` between them, and adds
/// those that are not there already.  Empty pairs are skipped.  A fault is a refusal with the code
/// `why`.
verdict readParameters(piece text, const char* separators, code why, std::vector<parameter>& into);

}  // namespace hopopen
