// SPDX-License-Identifier: MIT
// The items and trace flags that exist before `main` in a program linked with the
// launcher's driver.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "configDB.h"
#include "configRef.h"
#include "registered.h"
#include "threading.h"
#include "trace.h"

namespace startup_driver_test {

namespace {

using Strings = std::vector<std::string>;

configString ownItem("startup_driver_test.item", "own");

TEST(StartUpWithDriver, AllItemsAreRegistered) {
  ThreadData::instance(false);
  ASSERT_EQ("own", ownItem.value(false));
  const configDB database(RT_READ);
  ASSERT_FALSE(database.null());
  Strings names;
  for (const auto& [name, item] : database.pointer()->map()) {
    names.push_back(name);
  }
  EXPECT_EQ(registered::itemNames({"dummy", "startup_driver_test.item"}), names);
  EXPECT_EQ((Strings{"dummy"}), database.find("DUMMY").all());
  EXPECT_EQ((Strings{"dummy"}), database.find("dummy").getDefaults());
  EXPECT_EQ((Strings{"VNC=vncviewer", "SSH=putty"}), database.find("PROGRAMS").all());
  EXPECT_EQ((Strings{"-autoreconnect=0"}), database.find("VNC_OPTIONS").all());
}

TEST(StartUpWithDriver, AllFlagsAreRegisteredAndOff) {
  std::vector<std::pair<std::string, int>> found;
  for (const auto& [name, flag] : traceFlag::allFlags()) {
    found.emplace_back(name, static_cast<int>(flag->level()));
  }
  EXPECT_EQ(registered::flagsOff({"hoplaunch"}), found);
}

}  // namespace

}  // namespace startup_driver_test
