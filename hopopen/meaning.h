// What a parameter of a link is for.
#pragma once

#include <cstdint>
#include <string_view>

namespace hopopen {

enum class meaning : std::uint8_t {
  VIEW_ONLY,   ///< the other machine is to be looked at, not controlled
  PROTECTION,  ///< asks for a tunnel, a security type, or a check of who answers
  USER,        ///< gives the user name
  PASSWORD,    ///< gives the password
  WISH,        ///< how the picture is to be; dropped where a viewer cannot be told
  NUMBER,      ///< the same, and dropped, too, where it is not within the scheme's limits
  NONE         ///< nothing that a viewer is told
};

/// What the parameter means in links of every scheme (RFC 7869, section 2.1, and the IETF
/// draft on ssh URIs).  The letter case of its name does not matter.
meaning meaningOf(std::string_view name);

/// What a value of `ViewOnly` says.
enum class answer : std::uint8_t { YES, NO, UNCLEAR };
answer readAnswer(std::string_view value);

/// True when a parameter that asks for protection asks for none: its value is empty, or says
/// that there is to be none.
bool asksForNothing(std::string_view name, std::string_view value);

}  // namespace hopopen
