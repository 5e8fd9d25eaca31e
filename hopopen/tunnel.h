// SPDX-License-Identifier: MIT
// Making the tunnel that leads a viewer through an ssh gateway.
#pragma once

#include <string>
#include <string_view>

#include "decide.h"
#include "programs.h"
#include "refusal.h"
#include "tunnel_folder.h"

namespace hopopen {

/// Starts ssh, and waits until it listens at the socket in the folder, or gave up.  It may ask
/// questions, on the terminal or by a program of the desktop, for as long as it likes.  What it
/// says is passed on as well if `aloud`, without bytes that a terminal would obey.
/// REQUIRES: the opening is decided and goes through a gateway; the folder has no fault.
verdict makeTunnel(const opening& decided, const programFinder& programs,
                   const tunnelFolder& folder, bool aloud);

/// The last line of a text that is not empty.
std::string lastLine(std::string_view text);

}  // namespace hopopen
