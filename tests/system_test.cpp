// SPDX-License-Identifier: MIT
#include "system.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

#include "DistName.h"
#include "configRef.h"

namespace system_test {

namespace {

// A static initialiser asks for this.
const bool emptyBeforeMain =
    SystemEnv::instance().ServerRoot().empty() && InterfaceFinder::FQDN().empty();

}  // namespace

TEST(SystemEnv, IsOneForTheProcess) {
  SystemEnv& one = SystemEnv::instance();
  EXPECT_EQ(&one, &SystemEnv::instance());
  EXPECT_EQ(&one.ServerRoot(), &SystemEnv::instance().ServerRoot());
  EXPECT_FALSE(std::is_default_constructible_v<SystemEnv>);
  EXPECT_FALSE(std::is_copy_constructible_v<SystemEnv>);
  EXPECT_FALSE(std::is_copy_assignable_v<SystemEnv>);
}

TEST(SystemEnv, HasAnEmptyServerRoot) {
  EXPECT_EQ(SystemEnv::instance().ServerRoot(), "");
}

TEST(SystemEnv, WorksBeforeMain) {
  EXPECT_TRUE(emptyBeforeMain);
}

TEST(InterfaceFinder, HasNoNameForTheHostByDefault) {
  EXPECT_EQ(InterfaceFinder::FQDN(), "");
  // Domain style turns an empty host name into this.
  EXPECT_EQ(configRef::RootDN().str(), "DC=");
}

}  // namespace system_test
