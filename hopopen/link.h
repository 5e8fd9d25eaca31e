// Reading a link: what its text says, piece by piece, by RFC 3986, RFC 7869 and the IETF
// draft on ssh URIs.  Nothing is looked up; what the pieces mean to a viewer is decided
// elsewhere.
//
// Whatever a stranger can put into a link is compared with a short list of what is allowed,
// and everything else is refused, so that any program can be given a piece.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host.h"
#include "parameters.h"
#include "refusal.h"

namespace hopopen {

struct link {
  std::string text;                     ///< as given
  std::string scheme;                   ///< in lower case; empty while it is not known
  std::optional<std::string> user;      ///< decoded
  std::optional<std::string> password;  ///< decoded
  std::optional<host> machine;
  std::optional<std::uint16_t> port;  ///< 1 to 65535
  std::size_t portPosition = 0;       ///< where it begins, if there is one
  std::vector<parameter> parameters;  ///< in the order of the link; each name once
  bool parametersKnown = false;       ///< whether the reading came that far
  bool fragment = false;              ///< whether there is one that is not empty
};

/// The first steps: keeps the text, and reads its scheme.
verdict readScheme(const std::string& text, link& into);

/// All other steps.
/// REQUIRES: `readScheme` found no fault.
verdict readRest(link& into);

}  // namespace hopopen
