// SPDX-License-Identifier: MIT
#include "main2.h"

#include "launch.h"
#include "launch_end.h"
#include "session.h"
#include "system.h"

int process(const std::vector<std::string>& args, const assocList& params) {
  guardLaunch(params["log"]);
  const session applied(params);
  return processAug(args, applied.rest());
}

// The launcher has no use for the name of its host.
std::string InterfaceFinder::FQDN() {
  return std::string();
}
