// SPDX-License-Identifier: MIT
// The form of desktop entries and of mimeapps.list, as hopopen's check reads it.

#include "key_file.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace hopopen::key_file_test {
namespace {

TEST(KeyFile, HasTheLastValueOfAKeyInAGroup) {
  const keyFile keys("[A]\nk=1\n[B]\nk=2\n[A]\nk=3\n");
  EXPECT_EQ("3", keys.value("A", "k"));
  EXPECT_EQ("2", keys.value("B", "k"));
  EXPECT_EQ("", keys.value("A", "other"));
  EXPECT_EQ("", keys.value("C", "k"));
  EXPECT_EQ((std::vector<std::string>{"A", "B"}), keys.groups());
}

TEST(KeyFile, OverlooksBlanksCommentsAndWhatIsNoKey) {
  const keyFile keys("\xEF\xBB\xBFk=0\n# [X]\n[A]\r\n  k =  a b=c \r\n#k=1\nnothing\n\n[\n[]\n");
  EXPECT_EQ("a b=c", keys.value("A", "k"));
  EXPECT_EQ("", keys.value("A", "#k"));
  EXPECT_EQ((std::vector<std::string>{"A"}), keys.groups());
}

TEST(KeyFile, HasListsWithoutEmptyElements) {
  const keyFile keys("[A]\nk=;a; b ;;c\nempty=\n");
  EXPECT_EQ((std::vector<std::string>{"a", "b", "c"}), keys.list("A", "k"));
  EXPECT_TRUE(keys.list("A", "empty").empty());
  EXPECT_TRUE(keys.list("A", "other").empty());
}

TEST(KeyFile, IsEmptyForATextWithoutGroups) {
  EXPECT_TRUE(keyFile("").groups().empty());
  EXPECT_TRUE(keyFile("a=b").groups().empty());
}

}  // namespace
}  // namespace hopopen::key_file_test
