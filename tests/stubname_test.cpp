// SPDX-License-Identifier: MIT
// The last component of a program's path.

#include <gtest/gtest.h>

#include "stubname.h"

namespace stubname_test {

namespace {

TEST(stubName, IsBehindTheLastSeparator) {
  struct {
    const char* path;
    const char* expected;
  } const cases[] = {
      {"vncviewer", "vncviewer"},
      {"/usr/bin/xyz", "xyz"},
      {"./xyz", "xyz"},
      {"bin/xyz", "xyz"},
      {"C:\\Programs\\viewer.exe", "viewer.exe"},
      {"a/b\\c", "c"},
      {"a\\b/c", "c"},
      {"/usr/bin\\", ""},
      {"\\usr\\bin/", ""},
      {"/", ""},
      {"\\", ""},
      {"//x", "x"},
      {"\\\\x", "x"},
      {"x//", ""},
      {"", ""},
      {"C:x", "C:x"},
      {"a b/c d", "c d"},
      {"/caf\xc3\xa9", "caf\xc3\xa9"},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.path);
    EXPECT_STREQ(one.expected, stubName(one.path));
  }
}

TEST(stubName, IsThePathItselfWithoutASeparator) {
  const char path[] = "vncviewer";
  EXPECT_EQ(path, stubName(path));
  const char empty[] = "";
  EXPECT_EQ(empty, stubName(empty));
}

TEST(stubName, PointsIntoThePath) {
  const char path[] = "/usr/bin/xyz";
  EXPECT_EQ(path + 9, stubName(path));
}

}  // namespace

}  // namespace stubname_test
