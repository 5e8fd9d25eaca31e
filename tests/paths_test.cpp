// SPDX-License-Identifier: MIT
// Paths as texts: where hopopen looks for files.

#include "paths.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace paths_test {

namespace {

using Strings = std::vector<std::string>;

TEST(Paths, OfAListAreTheAbsoluteOnes) {
  EXPECT_EQ(Strings(), hopopen::absolutePaths(""));
  EXPECT_EQ((Strings{"/a", "/b/c"}), hopopen::absolutePaths("/a::b:./c:/b/c:"));
}

TEST(Paths, AreWithinAFolder) {
  EXPECT_EQ("/a/b", hopopen::within("/a", "b"));
}

TEST(Paths, AreInAFolder) {
  EXPECT_EQ("/a/b", hopopen::folderOf("/a/b/c"));
  EXPECT_EQ("/a", hopopen::folderOf("/a/b"));
  EXPECT_EQ("/", hopopen::folderOf("/a"));
  EXPECT_EQ("a", hopopen::folderOf("a/b"));
  EXPECT_EQ(".", hopopen::folderOf("a"));
}

}  // namespace

}  // namespace paths_test
