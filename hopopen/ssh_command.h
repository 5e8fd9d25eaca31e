// SPDX-License-Identifier: MIT
// The command that makes a tunnel: what ssh is given.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "gateway.h"
#include "host.h"

namespace hopopen {

/// Where a tunnel leads.
struct endpoint {
  host machine;
  std::uint16_t port;
};

/// The words for ssh, its name first.  What must hold for every tunnel is said before the
/// settings of the user are read, and counts more: the gateway gets neither the agent nor the X
/// display, no command runs here, and no connection is shared.  Keys, questions and
/// further gateways are as the user's settings say.
///
/// The tunnel begins at `socket` and ends 20 seconds later, or with the last connection.
/// REQUIRES: `socket` is a path that `isPlainPath` takes.
std::vector<std::string> sshCommand(const gateway& through, const endpoint& to,
                                    const std::string& socket);

/// How people log in to the gateway: "ssh -p 2222 kim@gate.example".
std::string loginCommand(const gateway& through);

/// True for a path in which ssh reads nothing but a path: "%" and "$" would name
/// something else, and ":" would end it.
bool isPlainPath(const std::string& path);

}  // namespace hopopen
