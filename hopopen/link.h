// SPDX-License-Identifier: MIT
// A link: what its text says, piece by piece.  Each piece was checked when it was read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host.h"
#include "parameters.h"

namespace hopopen {

struct link {
  std::string text;                     ///< as given
  std::string scheme;                   ///< in lower case; empty while it is not known
  std::optional<std::string> user;      ///< decoded
  std::optional<std::string> password;  ///< decoded
  std::optional<host> machine;
  std::optional<std::uint16_t> port;     ///< 1 to 65535
  std::optional<std::uint16_t> tlsPort;  ///< instead of the other, where a link asks for TLS
  std::size_t portPosition = 0;          ///< where the port begins, if there is one
  bool plainPortDropped = false;         ///< whether one gave way to that for TLS
  std::vector<parameter> parameters;     ///< in the order of the link; each name once
  bool parametersKnown = false;          ///< whether the reading came that far
  bool fragment = false;                 ///< whether there is one that is not empty

  /// The port that is connected to, if the link says which.
  std::optional<std::uint16_t> anyPort() const { return tlsPort ? tlsPort : port; }
};

}  // namespace hopopen
