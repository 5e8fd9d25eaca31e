// SPDX-License-Identifier: MIT
// Bad arguments: null pointers, positions beyond the end, dice without sides.

#include <gtest/gtest.h>

#include <string>

#include "DistName.h"
#include "datetime.h"
#include "random.h"
#include "uri.h"

namespace edges_arguments_test {

TEST(BadArguments, ADieWithoutSidesIsAnAssertion) {
  PRNG generator;
  EXPECT_EXIT(
      {
        alarm(10);
        generator.die(0);
      },
      testing::KilledBySignal(SIGABRT), "");
}

TEST(BadArguments, ADieWithFewerThanNoSidesIsAnAssertion) {
  PRNG generator;
  for (const int sides : {-1, -6, -2147483647 - 1}) {
    EXPECT_EXIT(
        {
          alarm(10);
          generator.die(sides);
        },
        testing::KilledBySignal(SIGABRT), "")
        << sides;
  }
}

TEST(BadArguments, ADieWithOneSideShowsIt) {
  PRNG generator;
  EXPECT_EQ(generator.die(1), 0);
}

TEST(BadArguments, TheLargestDieHasAllItsSides) {
  PRNG generator;
  for (int turn = 0; turn < 100; turn++) {
    EXPECT_GE(generator.die(2147483647), 0);
  }
}

TEST(BadArguments, NoTextHasNoDecimalNumber) {
  EXPECT_EQ(decimalInt(nullptr), 0);
}

TEST(BadArguments, NoTextIsNoStampOfTheSystemLog) {
  const char* text = nullptr;
  const gregorianDate date(text);
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(date.mseconds, -1);
  EXPECT_EQ(date.month, 13);
  EXPECT_EQ(date.year, 1972);
}

TEST(BadArguments, NoTextIsAnEmptyName) {
  EXPECT_TRUE(DistName(nullptr).empty());
  EXPECT_TRUE(DistName(nullptr, 0).empty());
  EXPECT_TRUE(DistName(nullptr, 5).empty());
  EXPECT_TRUE(DistName(nullptr, -1).empty());
  EXPECT_TRUE(DistName(static_cast<const char*>(nullptr), DistName::SIMPLE).empty());
  EXPECT_EQ(DistName(static_cast<const char*>(nullptr), DistName::DOMAIN).str(), "DC=");
}

TEST(BadArguments, NoTextAddsNothingToAName) {
  const DistName name("CN=a");
  EXPECT_EQ((name + static_cast<const char*>(nullptr)).str(), "CN=a");
  EXPECT_EQ((DistName() + static_cast<const char*>(nullptr)).str(), "");
}

TEST(BadArguments, APieceBeyondTheEndOfANameIsEmpty) {
  const DistName name("CN=a");
  EXPECT_EQ(name.substr(4), "");
  EXPECT_EQ(name.substr(5), "");
  EXPECT_EQ(name.substr(5, 1), "");
  EXPECT_EQ(name.substr(std::string::npos), "");
  EXPECT_EQ(name.substr(3), "a");
  EXPECT_EQ(DistName().substr(1), "");
}

TEST(BadArguments, NothingIsFoundBeyondTheEndOfAName) {
  const DistName name("CN=a");
  EXPECT_EQ(name.find('a', 4), std::string::npos);
  EXPECT_EQ(name.find('a', std::string::npos), std::string::npos);
  EXPECT_EQ(name.find(std::string("a"), 100), std::string::npos);
}

}  // namespace edges_arguments_test
