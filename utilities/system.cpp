// SPDX-License-Identifier: MIT
#include "system.h"

#include "lasting.h"

SystemEnv& SystemEnv::instance() {
  static internal::lasting<SystemEnv> theInstance([] { return SystemEnv(); });
  return *theInstance;
}

// Weak, so that a program's own definition replaces it.
[[gnu::weak]] std::string InterfaceFinder::FQDN() {
  return std::string();
}
