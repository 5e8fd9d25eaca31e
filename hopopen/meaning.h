// SPDX-License-Identifier: MIT
// What a parameter of a link is for.
#pragma once

#include <cstdint>
#include <string_view>

namespace hopopen {

enum class meaning : std::uint8_t {
  VIEW_ONLY,   ///< look at the other machine, without controlling it
  PROTECTION,  ///< asks for a security type, a channel, or a check of who answers
  GATEWAY,     ///< asks for a tunnel through an ssh gateway
  USER,        ///< gives the user name
  PASSWORD,    ///< gives the password
  WISH,        ///< asks for a kind of picture; dropped if a viewer has no option for it
  NUMBER,      ///< the same; also dropped if it is outside the limits of the scheme
  NONE         ///< nothing that a viewer needs
};

/// What the parameter means in links of every scheme (RFC 7869, section 2.1, and the IETF
/// draft on ssh URIs).  The letter case of its name does not matter.
meaning meaningOf(std::string_view name);

/// What a value of `ViewOnly` says.
enum class answer : std::uint8_t { YES, NO, UNCLEAR };
answer readAnswer(std::string_view value);

/// True when a parameter that asks for protection asks for none: its value is empty, or says
/// "none".
bool asksForNothing(std::string_view name, std::string_view value);

/// True when a parameter asks for a channel through ssh, as a tunnel is.
bool asksForTunnel(std::string_view name, std::string_view value);

}  // namespace hopopen
