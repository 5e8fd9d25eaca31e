// SPDX-License-Identifier: MIT
// Sums and differences of times against exact arithmetic with whole numbers of 1,280 bits.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <random>
#include <string>

#include "../utilities/rounding.h"
#include "datetime.h"
#include "datetime_probe.h"

namespace datetime_exact_test {

namespace {

#ifdef SLOW
constexpr int CASES = 50000;  // of each kind: each takes ten times as long
#else
constexpr int CASES = 500000;  // of each kind
#endif
constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr std::int64_t MILLION = 1000000;

// A rational number as a multiple of 2^-1080 / 1,000,000, which every double and every
// microsecond is.
class rational {
 public:
  // `count` / 1,000,000.
  static rational millionths(std::int64_t count) { return rational(count, 1080); }

  // REQUIRES: below 2^40.
  static rational exactly(double value) {
    int exponent = 0;
    const double mantissa = std::frexp(value, &exponent);
    rational result(static_cast<std::int64_t>(std::ldexp(mantissa, 53)), 0);
    result.times(1000000);
    // The smallest doubles end with zeros, so nothing is lost on the way down.
    return exponent + 1027 >= 0
               ? result.shifted(exponent + 1027)
               : rational(static_cast<std::int64_t>(std::ldexp(value, 1074)), 6).timesMillion();
  }

  rational plus(const rational& other) const {
    rational result;
    std::uint64_t carry = 0;
    for (std::size_t i = 0; i < LIMBS; i++) {
      carry += std::uint64_t{m_limbs[i]} + other.m_limbs[i];
      result.m_limbs[i] = static_cast<std::uint32_t>(carry);
      carry >>= 32;
    }
    return result;
  }

  rational minus(const rational& other) const {
    rational result;
    std::int64_t carry = 0;
    for (std::size_t i = 0; i < LIMBS; i++) {
      carry += std::int64_t{m_limbs[i]} - std::int64_t{other.m_limbs[i]};
      result.m_limbs[i] = static_cast<std::uint32_t>(static_cast<std::uint64_t>(carry));
      carry >>= 32;
    }
    return result;
  }

  // -1, 0 or 1.
  int sign() const {
    if (m_limbs[LIMBS - 1] >> 31 != 0) {
      return -1;
    }
    for (const std::uint32_t limb : m_limbs) {
      if (limb != 0) {
        return 1;
      }
    }
    return 0;
  }

 private:
  static constexpr std::size_t LIMBS = 40;

  rational() = default;
  rational(std::int64_t value, int shift) {
    const auto bits = static_cast<std::uint64_t>(value);
    m_limbs.fill(value < 0 ? 0xFFFFFFFF : 0);
    m_limbs[0] = static_cast<std::uint32_t>(bits);
    m_limbs[1] = static_cast<std::uint32_t>(bits >> 32);
    *this = shifted(shift);
  }

  void times(std::uint32_t factor) {
    std::uint64_t carry = 0;
    for (std::uint32_t& limb : m_limbs) {
      carry += std::uint64_t{limb} * factor;
      limb = static_cast<std::uint32_t>(carry);
      carry >>= 32;
    }
  }

  rational timesMillion() const {
    rational result(*this);
    result.times(1000000);
    return result;
  }

  rational shifted(int count) const {
    rational result;
    const auto limbs = static_cast<std::size_t>(count) / 32;
    const int bits = count % 32;
    for (std::size_t i = limbs; i < LIMBS; i++) {
      const std::uint64_t low = i > limbs ? m_limbs[i - limbs - 1] : 0;
      result.m_limbs[i] = static_cast<std::uint32_t>(
          ((std::uint64_t{m_limbs[i - limbs]} << 32 | low) << bits) >> 32);
    }
    return result;
  }

  std::array<std::uint32_t, LIMBS> m_limbs{};
};

bool even(double value) {
  int exponent = 0;
  return std::fmod(std::ldexp(std::frexp(value, &exponent), 53), 2) == 0;
}

// True if no double is nearer to `exact`, and no even one as near.
bool nearest(const rational& exact, double value) {
  const rational twice = exact.plus(exact);
  const rational centre = rational::exactly(value);
  const rational below = rational::exactly(std::nextafter(value, -INFINITE));
  const rational above = rational::exactly(std::nextafter(value, INFINITE));
  const int low = twice.minus(centre.plus(below)).sign();
  const int high = twice.minus(centre.plus(above)).sign();
  return low >= 0 && high <= 0 && ((low > 0 && high < 0) || even(value));
}

// The double nearest to `exact`, which is at least 0.  The search begins at `guess`.
double nearestTo(const rational& exact, double guess) {
  // Doubles from 0 up are in the order of their bits.
  auto low = std::bit_cast<std::uint64_t>(std::max(guess, 0.0));
  std::uint64_t high = low;
  const auto over = [&exact](std::uint64_t bits) {
    return rational::exactly(std::bit_cast<double>(bits)).minus(exact).sign() > 0;
  };
  for (std::uint64_t step = 1; over(low) && low > 0; step *= 2) {
    low -= std::min(step, low);
  }
  for (std::uint64_t step = 1; !over(high); step *= 2) {
    high += step;
  }
  while (high - low > 1) {
    const std::uint64_t middle = low + (high - low) / 2;
    (over(middle) ? high : low) = middle;
  }
  return std::bit_cast<double>(nearest(exact, std::bit_cast<double>(low)) ? low : high);
}

// The result of a sum whose nearest double is `total`.
std::string fields(double total) {
  if (total > 4294967295.999998) {
    return "4294967295.invalid";
  }
  if (!(total >= 0)) {
    return "0.invalid";
  }
  const double seconds = std::floor(total);
  const double fraction = total - seconds;
  // The product is rounded, too.
  rational product = rational::exactly(0);
  for (int i = 0; i < 20; i++) {
    if ((MILLION >> i & 1) != 0) {
      product = product.plus(rational::exactly(std::ldexp(fraction, i)));
    }
  }
  const auto microseconds = static_cast<unsigned long>(nearestTo(product, fraction * 1e6));
  return raw(rawTime(static_cast<unsigned long>(seconds), microseconds));
}

std::string expectedSum(std::int64_t millionths, double delta) {
  const rational exact = rational::millionths(millionths).plus(rational::exactly(delta));
  if (exact.sign() < 0) {
    return "0.invalid";
  }
  const double seconds = std::floor(static_cast<double>(millionths) / 1e6);
  const auto rest = static_cast<double>(millionths - static_cast<std::int64_t>(seconds) * MILLION);
  return fields(nearestTo(exact, (seconds + delta) + rest / 1e6));
}

class timePicker {
 public:
  std::uint32_t seconds() {
    constexpr std::array<std::uint32_t, 8> edges = {0,          1,          2,          0x7FFFFFFF,
                                                    0x80000000, 0xFFFFFFFE, 0xFFFFFFFF, 1794740854};
    return below(4) == 0 ? edges[below(8)] : number() >> below(32);
  }

  std::uint32_t microseconds() {
    constexpr std::array<std::uint32_t, 8> edges = {0,      1,      499999, 500000,
                                                    500001, 999998, 999999, 250000};
    return below(4) == 0 ? edges[below(8)] : below(1000000);
  }

  // A number of seconds to move a time of `millionths` by.
  double delta(std::int64_t millionths) {
    const double sign = below(2) == 0 ? 1 : -1;
    switch (below(6)) {
      case 0:  // whole microseconds
        return sign * static_cast<double>(number()) / 1e6;
      case 1:  // back to about the beginning
        return std::nextafter(-static_cast<double>(millionths) / 1e6, sign * INFINITE);
      case 2:  // to about the end
        return (4294967295999998.0 - static_cast<double>(millionths)) / 1e6 + sign * 1e-6;
      case 3:  // whole halves
        return sign * static_cast<double>(below(1000)) / 2;
      case 4:  // very small
        return sign *
               std::ldexp(static_cast<double>(number()) + 1, -1074 + static_cast<int>(below(1060)));
      default:
        return sign * std::ldexp(static_cast<double>(number()) +
                                     static_cast<double>(number()) / 4294967296.0,
                                 -static_cast<int>(below(80)));
    }
  }

 private:
  std::uint32_t number() { return static_cast<std::uint32_t>(m_engine()); }
  std::uint32_t below(std::uint32_t limit) { return number() % limit; }

  std::mt19937 m_engine{20261122};
};

TEST(DateTimeDifference, IsTheDoubleNearestToTheExactOne) {
  timePicker pick;
  for (int i = 0; i < CASES; i++) {
    const rawTime left(pick.seconds(), pick.microseconds());
    const rawTime right(pick.seconds(), pick.microseconds());
    const std::int64_t millionths =
        (static_cast<std::int64_t>(left.UNIXtime()) - static_cast<std::int64_t>(right.UNIXtime())) *
            MILLION +
        gregorianDate(left).mseconds - gregorianDate(right).mseconds;
    const double result = left - right;
    ASSERT_TRUE(nearest(rational::millionths(millionths), result))
        << raw(left) << " - " << raw(right) << " was " << std::hexfloat << result;
  }
}

TEST(DateTimePlus, IsTheDoubleNearestToTheExactSum) {
  timePicker pick;
  for (int i = 0; i < CASES; i++) {
    const std::uint32_t seconds = pick.seconds();
    const std::uint32_t microseconds = pick.microseconds();
    const std::int64_t millionths = std::int64_t{seconds} * MILLION + microseconds;
    const double delta = pick.delta(millionths);
    const rawTime time(seconds, microseconds);
    ASSERT_EQ(raw(time + delta), expectedSum(millionths, delta))
        << raw(time) << " + " << std::hexfloat << delta;
  }
}

TEST(DateTimePlus, TakesHalfASecondFromHalfASecond) {
  EXPECT_EQ(raw(rawTime(0, 500000) - 0.5), "0.000000");
  EXPECT_EQ(raw(rawTime(7, 500000) - 7.5), "0.000000");
  EXPECT_EQ(raw(rawTime(0, 250000) - 0.25), "0.000000");
  // The double 0.1 is a little more than a tenth, and 0.3 a little less than three.
  EXPECT_EQ(raw(rawTime(0, 100000) - 0.1), "0.invalid");
  EXPECT_EQ(raw(rawTime(0, 300000) - 0.3), "0.000000");
}

TEST(DateTimePlus, TellsTheSmallestDoubleFromNothing) {
  EXPECT_EQ(raw(rawTime(0, 0) - 4.9406564584124654e-324), "0.invalid");
  EXPECT_EQ(raw(rawTime(0, 0) + 4.9406564584124654e-324), "0.000000");
  EXPECT_EQ(raw(rawTime(1, 0) - 4.9406564584124654e-324), "1.000000");
  EXPECT_EQ(raw(rawTime(1, 0) - 0x1p-54), "1.000000");  // halfway: to the even one
  EXPECT_EQ(raw(rawTime(1, 0) - 0x1.8p-54), "0.999999");
}

// The code that uses the result does not expect a zero with a sign.
TEST(DateTimePlus, MakesNoNegativeZero) {
  EXPECT_FALSE(std::signbit(internal::rounding::sum(0, -0.0)));
  EXPECT_FALSE(std::signbit(internal::rounding::sum(0, 0.0)));
  EXPECT_FALSE(std::signbit(internal::rounding::sum(1000000, -1.0)));
  EXPECT_EQ(raw(rawTime(0, 0) + -0.0), "0.000000");
  EXPECT_EQ(raw(rawTime(0, 0) - 0.0), "0.000000");
}

TEST(DateTimePlus, KnowsNoNumberButThoseOfTheRange) {
  EXPECT_EQ(raw(rawTime(5, 0) + std::numeric_limits<double>::quiet_NaN()), "0.invalid");
  EXPECT_EQ(raw(rawTime(5, 0) + INFINITE), "4294967295.invalid");
  EXPECT_EQ(raw(rawTime(5, 0) - INFINITE), "0.invalid");
  EXPECT_EQ(raw(rawTime(0, 0) + 0x1p33), "4294967295.invalid");
  EXPECT_EQ(raw(rawTime(0xFFFFFFFF, 0) + std::nextafter(-0x1p33, 0)), "0.invalid");
  EXPECT_EQ(raw(rawTime(0xFFFFFFFF, 0) - 1e308), "0.invalid");
}

}  // namespace

}  // namespace datetime_exact_test
