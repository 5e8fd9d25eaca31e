// SPDX-License-Identifier: MIT
// A machine that others are reached through, by ssh.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "host.h"

namespace hopopen {

struct gateway {
  std::optional<std::string> user;  ///< decoded
  host machine;
  std::optional<std::uint16_t> port;  ///< 1 to 65535

  /// As people write it: `[user@]host[:port]`, an IPv6 address in brackets, nothing encoded.
  std::string text() const;
  /// Hosts are compared by what they mean.  No port is not the same as port 22: the settings
  /// of ssh may name another one.
  bool operator==(const gateway& other) const {
    return user == other.user && machine == other.machine && port == other.port;
  }
};

/// Reads `[user@]host[:port]` as the authority of a link is read:
///
/// - at most one "@" and no password; the user is decoded once, and an empty one is absent;
/// - a host that is a name, an IPv4 address, or an IPv6 address in brackets;
/// - a port from 1 to 65535 without leading zeros; an empty one is absent.
///
///     readGateway("me@gate.example:2222")   // user "me", host "gate.example", port 2222
///
/// Nothing when it is anything else.  A "\" in the user need not be encoded.
std::optional<gateway> readGateway(std::string_view text);

}  // namespace hopopen
