// SPDX-License-Identifier: MIT
// The way to the machine of a link: straight, or through an ssh gateway.
//
// A gateway decides what the names after it mean.  So one that a link asks for must be trusted,
// while one that the settings name for a host needs no trust.
//
//     vnc://host?SshHost=gate.example&SshPort=2222&SshUsername=kim
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

#include "gateway.h"
#include "host.h"
#include "link.h"
#include "refusal.h"

namespace hopopen {

struct route {
  std::optional<gateway> through;  ///< nothing: straight
  bool asked = false;              ///< whether the link asks for a gateway
  bool trusted = false;            ///< whether all on the way that the link names is trusted
  verdict fault;                   ///< why there is no such way
  /// The index of the parameter that the fault is about; nothing for the link as a whole.
  std::optional<std::size_t> faulty;
  std::string socket = "{socket}";  ///< where the tunnel begins, as soon as there is one
};

/// The way to the link's machine.  `configured` is the gateway that the settings name for it.
/// REQUIRES: the link was read without a fault.
route findRoute(const link& what, const std::optional<gateway>& configured,
                const std::function<bool(const host& machine)>& trusts);

}  // namespace hopopen
