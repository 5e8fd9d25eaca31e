// SPDX-License-Identifier: MIT
// The trace flags of a program that is linked with the library and mentions only
// flags of it.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "registered.h"
#include "trace.h"

namespace startup_flags_test {

namespace {

TEST(StartUpFlags, AreAllRegisteredAndOff) {
  std::vector<std::pair<std::string, int>> found;
  for (const auto& [name, flag] : traceFlag::allFlags()) {
    ASSERT_NE(nullptr, flag) << name;
    EXPECT_EQ(name, flag->name());
    EXPECT_FALSE(flag->active()) << name;
    found.emplace_back(name, static_cast<int>(flag->level()));
  }
  EXPECT_EQ(registered::flagsOff(), found);
}

TEST(StartUpFlags, OfTheLauncherIsNotTheLibrarys) {
  EXPECT_EQ(-1, traceFlag::level("hoplaunch"));
  EXPECT_FALSE(traceFlag::set("hoplaunch", 1));
}

}  // namespace

}  // namespace startup_flags_test
