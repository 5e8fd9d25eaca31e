// SPDX-License-Identifier: MIT
// What may be particular to a scheme.  All links are read by the same rules; where a scheme has
// one of its own, this says so.
#pragma once

#include <span>
#include <string_view>

#include "link.h"
#include "meaning.h"
#include "refusal.h"

namespace hopopen {

/// A parameter that means something in links of one scheme alone.
struct ownParameter {
  std::string_view name;
  meaning what;
};

/// A parameter of one scheme whose value is a number.
struct ownNumber {
  std::string_view name;
  int least;
  int most;              ///< for machines that the user trusts
  int mostForStrangers;  ///< less than `least`: none at all
};

struct schemeRules {
  std::string_view name;  ///< in lower case; empty for the rules of all other schemes
  /// Why links of the scheme are never opened, whatever definitions say; or null.
  const char* never = nullptr;
  /// Between the parameters of a query.
  const char* separators = "&";
  /// Whether parameters may follow the user (the IETF draft on ssh URIs).
  bool userParameters = false;
  /// Whether parameters may say how the picture is to be.
  bool wishes = true;
  /// Whether there is a place for a password at all.
  bool passwords = true;
  /// Whether a link that is made anew has the user.
  bool userInLink = true;
  std::span<const ownParameter> parameters = {};
  std::span<const ownNumber> numbers = {};
  /// True when the link is of a form of the scheme's own, which `readOwnForm` reads.
  bool (*hasOwnForm)(std::string_view text) = [](std::string_view) { return false; };
  verdict (*readOwnForm)(link& into) = nullptr;
  /// The last step of reading: what follows from all the pieces together.
  verdict (*settle)(link& into) = [](link&) { return verdict(); };
};

}  // namespace hopopen
