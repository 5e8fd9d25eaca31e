#include "system.h"

SystemEnv& SystemEnv::instance() {
  static auto& theInstance = *new SystemEnv;
  return theInstance;
}

// Weak, so that a program's own definition takes its place.
[[gnu::weak]] std::string InterfaceFinder::FQDN() {
  return std::string();
}
