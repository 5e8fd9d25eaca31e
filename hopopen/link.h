// Reading a link: what its text says, piece by piece, by RFC 3986, RFC 7869 and the IETF
// draft on ssh URIs.  Nothing is looked up; what the pieces mean to a viewer is decided
// elsewhere.
//
// Whatever a stranger can put into a link is held against a short list of what is allowed,
// and all else is refused, so that a piece can be handed to any program.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host.h"
#include "refusal.h"

namespace hopopen {

/// A parameter of the query, or of the user information of an ssh link.
struct parameter {
  std::string name;      ///< decoded, in the letters of the link; compared without their case
  std::string value;     ///< decoded
  std::size_t position;  ///< where the name begins in the link
};

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

/// The first steps: takes in the text, and reads its scheme.
verdict readScheme(const std::string& text, link& into);

/// All other steps.
/// REQUIRES: `readScheme` found no fault.
verdict readRest(link& into);

/// The rules for a user name and for a password, wherever in the link they come from, once
/// decoded: the index of the first byte that breaks them, if any.
std::optional<std::size_t> faultOfUser(const std::string& user);
std::optional<std::size_t> faultOfPassword(const std::string& password);

constexpr const char* BAD_USER =
    "The user name has a character that user names cannot have, or is "
    "longer than 64 bytes. Check the link.";
constexpr const char* BAD_PASSWORD =
    "The password has a control character, or is longer than 255 "
    "bytes. Check the link.";

}  // namespace hopopen
