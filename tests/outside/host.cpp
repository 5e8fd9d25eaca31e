// SPDX-License-Identifier: MIT
// A program that knows its host's name says so by defining this.

#include <hoplaunch/system.h>

std::string InterfaceFinder::FQDN() {
  return "host.example.org";
}
