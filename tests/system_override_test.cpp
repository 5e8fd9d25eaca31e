// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>

#include "DistName.h"
#include "configRef.h"
#include "system.h"

// A program that knows its host's name says so by defining this.
std::string InterfaceFinder::FQDN() {
  return "host.example.org";
}

namespace system_override_test {

TEST(InterfaceFinder, TakesTheProgramsAnswer) {
  EXPECT_EQ(InterfaceFinder::FQDN(), "host.example.org");
  EXPECT_EQ(configRef::RootDN().str(), "DC=host,DC=example,DC=org");
  EXPECT_EQ(SystemEnv::instance().ServerRoot(), "");
}

}  // namespace system_override_test
