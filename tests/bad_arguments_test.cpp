// SPDX-License-Identifier: MIT
// Null pointers and positions beyond the end.  They give the same as a malformed text.
#include <gtest/gtest.h>

#include <csignal>
#include <string>

#include "DistName.h"
#include "asserts.h"
#include "datetime.h"
#include "random.h"
#include "uri.h"

namespace bad_arguments_test {

namespace {

constexpr const char* NOTHING = nullptr;

TEST(Die, BelowOneIsAnAssertion) {
  const auto thrown = [](int n) {
    const stderrHandler handler(1, AUD_ALL);
    PRNG().die(n);
  };
  for (const int n : {0, -1, -2147483647 - 1}) {
    EXPECT_EXIT(thrown(n), testing::KilledBySignal(SIGABRT), "assert failure \"n >= 1\"") << n;
  }
}

TEST(Die, TakesOneAndTheLargestNumber) {
  EXPECT_EQ(PRNG().die(1), 0);
  EXPECT_GE(PRNG().die(2147483647), 0);
}

TEST(DistNameOfNull, IsEmptyWhateverTheLength) {
  EXPECT_EQ(DistName(NOTHING).str(), "");
  for (const int length : {-1, 0, 1, 2147483647}) {
    EXPECT_EQ(DistName(NOTHING, length).str(), "") << length;
  }
  EXPECT_EQ(DistName(NOTHING, DistName::SIMPLE).str(), "");
  EXPECT_EQ(DistName(NOTHING, DistName::DOMAIN).str(), "DC=");
}

TEST(DistNameAndNull, AreTheNameAlone) {
  EXPECT_EQ((DistName("CN=a") + NOTHING).str(), "CN=a");
  EXPECT_EQ((DistName() + NOTHING).str(), "");
}

TEST(DistNameSubstr, IsEmptyBeyondTheEnd) {
  const DistName name("CN=a");
  EXPECT_EQ(name.substr(3), "a");
  EXPECT_EQ(name.substr(4), "");
  EXPECT_EQ(name.substr(5), "");
  EXPECT_EQ(name.substr(5, 1), "");
  EXPECT_EQ(name.substr(std::string::npos), "");
  EXPECT_EQ(name.substr(std::string::npos, 0), "");
  EXPECT_EQ(DistName().substr(1), "");
}

TEST(DistNameFind, FindsNothingBeyondTheEnd) {
  const DistName name("CN=a");
  EXPECT_EQ(name.find('a', 3), 3U);
  EXPECT_EQ(name.find('a', 4), std::string::npos);
  EXPECT_EQ(name.find('a', 5), std::string::npos);
  EXPECT_EQ(name.find(std::string("a"), std::string::npos), std::string::npos);
}

TEST(DecimalInt, OfNullIsZero) {
  EXPECT_EQ(decimalInt(NOTHING), 0);
}

TEST(GregorianDate, OfNullIsMalformed) {
  const char* text = nullptr;
  const gregorianDate date(text);
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(date.month, 13);
  EXPECT_EQ(date.mseconds, -1);
}

}  // namespace

}  // namespace bad_arguments_test
