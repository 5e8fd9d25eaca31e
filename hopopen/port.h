// SPDX-License-Identifier: MIT
// Ports, wherever in a link they come from.
#pragma once

#include <cstdint>
#include <optional>

#include "piece.h"
#include "refusal.h"

namespace hopopen {

/// Reads decimal digits, 1 to 65535, without a leading zero.  An empty text is no port.
verdict readPort(const piece& text, std::optional<std::uint16_t>& into);

constexpr const char* BAD_PORT =
    "The port is not a number from 1 to 65535 without leading zeros. Check the link.";
constexpr const char* TWO_PORTS = "The link names two ports. Ask for a correct link.";

}  // namespace hopopen
