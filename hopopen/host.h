// SPDX-License-Identifier: MIT
// The host that a link, or a list of trusted hosts, names: a name of the domain name
// system, an IPv4 address, or an IPv6 address with or without a zone.
//
// What is accepted is what every reader of links takes for the same host.  So there are
// no short, octal or hexadecimal forms of IPv4 addresses, and no characters that one
// reader cuts off and another keeps.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "piece.h"

namespace hopopen {

enum class hostKind : std::uint8_t { NAME, IPV4, IPV6 };

struct host {
  hostKind kind = hostKind::NAME;
  std::string name;  ///< a name in lower case and without a last dot; an address as given
  std::string zone;  ///< of an IPv6 address, without its "%"; empty when there is none

  /// As programs take it: `name`, with `%zone` if there is one, without brackets.
  std::string plain() const;
  /// The same with an IPv6 address in brackets.
  std::string bracketed() const;
  /// As a link has it: in brackets, and with "%25" before the zone (RFC 6874).
  std::string inLink() const;
  /// One text for all forms of a host: names and IPv4 addresses are compared as text, IPv6
  /// addresses by their value and their zone.
  std::string canonical() const;
  bool operator==(const host& other) const { return canonical() == other.canonical(); }
};

/// Where a host breaks the rules: the offset in the link, and a sentence about it.
struct hostFault {
  std::size_t position;
  const char* message;
};

/// Whether a text is percent-encoded, or was and is decoded.
enum class coding : std::uint8_t { ENCODED, DECODED };

/// Reads a host as it is in a link: percent-encoded, or an IPv6 address in brackets
/// (RFC 3986, section 3.2.2; RFC 6874).  In a decoded text a "%" only begins a zone.
std::optional<hostFault> readHost(const piece& text, host& into, coding how = coding::ENCODED);

}  // namespace hopopen
