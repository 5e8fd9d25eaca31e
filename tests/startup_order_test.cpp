// SPDX-License-Identifier: MIT
// The flags and items that exist before `main`, in programs that are linked in different
// ways: see startup/CMakeLists.txt.

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <string>

#include "registered.h"

namespace startup_order_test {

namespace {

std::string flags() {
  std::string result;
  for (const std::string& name : registered::flags()) result += name + " 0\n";
  return result + "in main: " + std::to_string(registered::flags().size()) + "\n";
}

std::string items() {
  std::string result;
  for (const registered::item& each : registered::items()) {
    result += std::string(each.name) + " " + each.values[0] + "\n";
  }
  return result + "in main: " + std::to_string(registered::items().size()) + "\n";
}

std::string database() {
  std::string result;
  for (const std::string& name : registered::itemNames()) result += name + "\n";
  return result;
}

std::string outputOf(const std::string& program) {
  std::string result;
  std::FILE* const pipe =
      popen(("\"" STARTUP_PROGRAMS "/startup_" + program + "\" 2>&1").c_str(), "r");
  if (pipe == nullptr) return "no pipe";
  std::array<char, 4096> piece;
  while (std::fgets(piece.data(), piece.size(), pipe) != nullptr) result += piece.data();
  if (pclose(pipe) != 0) result += "failed\n";
  return result;
}

TEST(StartUpOrder, AProgramThatUsesFlagsHasAllFlags) {
  EXPECT_EQ(flags(), outputOf("flags"));
}

TEST(StartUpOrder, AProgramThatUsesItemsHasAllItems) {
  EXPECT_EQ(items(), outputOf("items"));
}

TEST(StartUpOrder, AProgramThatUsesLocalisedStringsHasAllItems) {
  EXPECT_EQ(database(), outputOf("database"));
}

TEST(StartUpOrder, TheObjectsOfTheLibraryMayBeLinkedInAnyOrder) {
  for (const char* const order : {"123", "132", "213", "231", "312", "321"}) {
    SCOPED_TRACE(order);
    EXPECT_EQ(flags(), outputOf(std::string("flags_") + order));
    EXPECT_EQ(items(), outputOf(std::string("items_") + order));
    EXPECT_EQ(database(), outputOf(std::string("database_") + order));
  }
}

#ifdef HAS_SHARED
TEST(StartUpOrder, TheSharedLibraryBringsAllFlagsAndItems) {
  EXPECT_EQ(flags(), outputOf("flags_shared"));
  EXPECT_EQ(items(), outputOf("items_shared"));
  EXPECT_EQ(database(), outputOf("database_shared"));
}
#endif

}  // namespace

}  // namespace startup_order_test
