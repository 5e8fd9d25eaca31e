// SPDX-License-Identifier: MIT
// The clock of these tests does not move; the generator is the C library's unless a test
// says what it draws.

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "fake_clock.h"
#include "random.h"
#include "system_calls.h"

namespace random_test {

namespace {

std::vector<long> draws;  // what `random` gives; empty: the C library's numbers
std::size_t drawn = 0;
std::vector<unsigned int> seeds;  // what `srandom` got

long drawnNumber() {
  if (draws.empty()) return systemCalls::random.real();
  if (drawn < draws.size()) return draws[drawn++];
  ADD_FAILURE() << "more than " << draws.size() << " numbers were drawn";
  return 0;
}

void seed(unsigned int value) {
  seeds.push_back(value);
  systemCalls::srandom.real(value);
}

const replacedCalls here(__FILE__, [] {
  systemCalls::random.replace(drawnNumber);
  systemCalls::srandom.replace(seed);
  fakeClock::stop();
  fakeClock::now.minutesWest = -60;  // an offset that must not count
});

/// Lets `random` give these numbers for as long as it lives.
class script {
 public:
  explicit script(const std::vector<long>& numbers) {
    draws = numbers;
    drawn = 0;
  }
  ~script() { draws.clear(); }
  script(const script&) = delete;
  script& operator=(const script&) = delete;
};

TEST(PRNG, SeedsTheGeneratorOnceFromTheClock) {
  EXPECT_EQ(seeds.size(), 0U) << "seeded before the first construction";
  const PRNG first;
  // 0x01DD74F183EF5BD2 units of 100 nanoseconds since 1601: the upper half
  // exclusive-or the lower one.
  ASSERT_EQ(seeds.size(), 1U);
  EXPECT_EQ(seeds[0], 0x01DD74F1U ^ 0x83EF5BD2U);
  EXPECT_EQ(seeds[0], 2184326947U);

  const PRNG second;
  const PRNG third;
  EXPECT_EQ(seeds.size(), 1U) << "a later construction seeded again";
}

TEST(PRNG, SharesOneSequenceAmongAllObjects) {
  PRNG first;
  systemCalls::srandom.real(4711);
  std::vector<int> expected;
  for (int i = 0; i < 64; i++)
    expected.push_back(static_cast<int>(systemCalls::random.real() >> 23));

  systemCalls::srandom.real(4711);
  std::vector<int> got;
  for (int i = 0; i < 16; i++) got.push_back(first.byte());
  PRNG second;  // does not start the sequence again
  for (int i = 0; i < 16; i++) {
    got.push_back(second.byte());
    got.push_back(first.byte());
  }
  for (int i = 0; i < 16; i++) got.push_back(PRNG().byte());
  EXPECT_EQ(got, expected);
}

TEST(PRNGByte, IsTheTopEightBitsOfTheDraw) {
  const struct {
    long drawn;
    int byte;
  } cases[] = {
      {0, 0},
      {1, 0},
      {8388607, 0},
      {8388608, 1},
      {16777215, 1},
      {16777216, 2},
      {1073741823, 127},
      {1073741824, 128},
      {2139095039, 254},
      {2139095040, 255},
      {2147483647, 255},
  };
  PRNG generator;
  for (const auto& row : cases) {
    SCOPED_TRACE(row.drawn);
    const script numbers({row.drawn});
    EXPECT_EQ(static_cast<int>(generator.byte()), row.byte);
    EXPECT_EQ(drawn, 1U);
  }
}

TEST(PRNGByte, DrawsAgainWhenTheDrawIsOutOfRange) {
  PRNG generator;
  {
    const script numbers({-8388608, -2147483647, 8388608});
    EXPECT_EQ(static_cast<int>(generator.byte()), 1);
    EXPECT_EQ(drawn, 3U);
  }
  if constexpr (sizeof(long) > 4) {
    const script numbers({static_cast<long>(2147483648LL), 16777216});
    EXPECT_EQ(static_cast<int>(generator.byte()), 2);
    EXPECT_EQ(drawn, 2U);
  }
}

TEST(PRNGDie, DividesTheDrawsIntoEqualBuckets) {
  const struct {
    int sides;
    long drawn;
    int thrown;
  } cases[] = {
      {1, 0, 0},          {1, 1, 0},          {1, 2147483647, 0},
      {2, 0, 0},          {2, 1073741823, 0}, {2, 1073741824, 1},
      {2, 2147483647, 1}, {3, 715827881, 0},  {3, 715827882, 1},
      {3, 1431655763, 1}, {3, 1431655764, 2}, {3, 2147483645, 2},
      {6, 0, 0},          {6, 357913940, 0},  {6, 357913941, 1},
      {6, 1789569704, 4}, {6, 1789569705, 5}, {6, 2147483645, 5},
      {256, 8388607, 0},  {256, 8388608, 1},  {256, 2147483647, 255},
      {2147483647, 0, 0}, {2147483647, 5, 5}, {2147483647, 2147483646, 2147483646},
  };
  PRNG generator;
  for (const auto& row : cases) {
    SCOPED_TRACE(std::to_string(row.sides) + " sides, draw " + std::to_string(row.drawn));
    const script numbers({row.drawn});
    EXPECT_EQ(generator.die(row.sides), row.thrown);
    EXPECT_EQ(drawn, 1U);
  }
}

TEST(PRNGDie, DrawsAgainInThePartialLastBucket) {
  const struct {
    int sides;
    long partial;
    long next;
    int thrown;
  } cases[] = {
      {3, 2147483646, 715827882, 1},  {3, 2147483647, 0, 0},          {6, 2147483646, 357913941, 1},
      {6, 2147483647, 2147483645, 5}, {2147483647, 2147483647, 7, 7},
  };
  PRNG generator;
  for (const auto& row : cases) {
    SCOPED_TRACE(std::to_string(row.sides) + " sides, draw " + std::to_string(row.partial));
    const script numbers({row.partial, row.partial, row.next});
    EXPECT_EQ(generator.die(row.sides), row.thrown);
    EXPECT_EQ(drawn, 3U);
  }
}

TEST(PRNGDie, WithOneSideAlwaysGivesZero) {
  PRNG generator;
  for (int i = 0; i < 1000; i++) ASSERT_EQ(generator.die(1), 0) << "throw " << i;
}

// The clock does not move, so the seed is fixed, and the following tests are no gamble.

TEST(PRNGDie, ThrowsEachOfSixSidesAboutEquallyOften) {
  PRNG generator;
  systemCalls::srandom.real(1);
  std::array<int, 6> counts = {};
  for (int i = 0; i < 60000; i++) {
    const int thrown = generator.die(6);
    ASSERT_GE(thrown, 0) << "throw " << i;
    ASSERT_LE(thrown, 5) << "throw " << i;
    counts[static_cast<std::size_t>(thrown)]++;
  }
  for (std::size_t side = 0; side < counts.size(); side++) {
    EXPECT_NEAR(counts[side], 10000, 500) << "side " << side;
  }
}

TEST(PRNGByte, GivesEveryValueAboutEquallyOften) {
  PRNG generator;
  systemCalls::srandom.real(1);
  std::array<int, 256> counts = {};
  for (int i = 0; i < 256000; i++) counts[generator.byte()]++;
  for (std::size_t value = 0; value < counts.size(); value++) {
    EXPECT_NEAR(counts[value], 1000, 200) << "value " << value;
  }
}

}  // namespace

}  // namespace random_test
