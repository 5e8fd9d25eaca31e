// SPDX-License-Identifier: MIT
// Fractions of a second, against exact arithmetic with integers of 128 bits.

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "datetime.h"

namespace edges_fractions_test {

#ifdef __SIZEOF_INT128__

namespace {

__extension__ using Wide = unsigned __int128;
__extension__ using Signed = __int128;

// A time made of its parts, which tests can read.
class Instant : public DateTime {
 public:
  Instant(std::uint32_t seconds, std::uint32_t microseconds) : DateTime(seconds, microseconds) {}
};

// "SECONDS.MICROSECONDS", or "bad".
std::string shown(const DateTime& time) {
  if (!time.okay()) {
    return "bad";
  }
  const std::string text = time.format(DS_ISO8601P);
  return std::to_string(time.UNIXtime()) + text.substr(text.size() - 7);
}

std::string shown(std::uint64_t seconds, std::uint64_t microseconds) {
  const std::string digits = std::to_string(microseconds);
  return std::to_string(seconds) + "." + std::string(6 - digits.size(), '0') + digits;
}

// The double nearest to numerator / denominator, ties to even.  The denominator has at
// most 126 bits, and the result is 0 or not below 2^-1000.
double nearest(Signed numerator, Wide denominator) {
  if (numerator == 0) {
    return 0.0;
  }
  const bool negative = numerator < 0;
  const Wide size =
      negative ? Wide(0) - static_cast<Wide>(numerator) : static_cast<Wide>(numerator);
  Wide digits = size / denominator;
  Wide rest = size % denominator;
  int exponent = 0;
  bool sticky = false;
  while (digits >> 54 != 0) {
    sticky = sticky || (digits & 1) != 0;
    digits >>= 1;
    exponent++;
  }
  while (digits >> 53 == 0) {  // 54 binary digits, the last one for rounding
    rest <<= 1;
    digits <<= 1;
    if (rest >= denominator) {
      rest -= denominator;
      digits |= 1;
    }
    exponent--;
  }
  sticky = sticky || rest != 0;
  const bool half = (digits & 1) != 0;
  digits >>= 1;
  exponent++;
  if (half && (sticky || (digits & 1) != 0)) {
    digits++;
  }
  const double result =
      std::ldexp(static_cast<double>(static_cast<std::uint64_t>(digits)), exponent);
  return negative ? -result : result;
}

// delta = mantissa / 2^shift; false when that does not fit the exact arithmetic.
bool split(double delta, Signed& mantissa, int& shift) {
  int exponent = 0;
  const double fraction = std::frexp(delta, &exponent);
  mantissa = static_cast<Signed>(static_cast<std::int64_t>(std::ldexp(fraction, 53)));
  shift = 53 - exponent;
  while (shift > 0 && mantissa != 0 && mantissa % 2 == 0) {
    mantissa /= 2;
    shift--;
  }
  if (mantissa == 0) {
    shift = 0;
  }
  if (shift < 0) {
    if (shift < -40) {
      return false;
    }
    mantissa *= Signed(1) << -shift;
    shift = 0;
  }
  return shift <= 70;
}

// The right result of seconds + microseconds / 1,000,000 + delta; nothing if `split`
// fails.
std::optional<std::string> expectedSum(std::uint32_t seconds, std::uint32_t micros, double delta) {
  Signed mantissa = 0;
  int shift = 0;
  if (!split(delta, mantissa, shift)) {
    return std::nullopt;
  }
  const Signed whole = Signed(seconds) * 1000000 + micros;  // 52 bits
  const Signed numerator = whole * (Signed(1) << shift) + mantissa * 1000000;
  const double total = nearest(numerator, Wide(1000000) << shift);
  if (total > 4294967295.999998 || total < 0) {
    return "bad";
  }
  const double full = std::floor(total);
  const double rest = (total - full) * 1e6;
  return shown(static_cast<std::uint64_t>(full), static_cast<std::uint64_t>(rest));
}

class Failures {
 public:
  void compare(std::uint32_t seconds, std::uint32_t micros, double delta) {
    const std::optional<std::string> expected = expectedSum(seconds, micros, delta);
    if (!expected) {
      return;
    }
    m_tried++;
    Instant time(seconds, micros);
    time += delta;
    const std::string found = shown(time);
    if (found != *expected && ++m_failed <= 5) {
      ADD_FAILURE() << shown(seconds, micros) << " + " << testing::PrintToString(delta) << " ("
                    << std::hexfloat << delta << "): expected " << *expected << ", found " << found;
    }
  }
  int tried() const { return m_tried; }
  int failed() const { return m_failed; }

 private:
  int m_tried = 0;
  int m_failed = 0;
};

const std::vector<std::uint32_t> edgeSeconds{
    0, 1, 2, 59, 86399, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFE, 0xFFFFFFFF, 1795000000};
const std::vector<std::uint32_t> edgeMicros{0,      1,      2,      3,      499999, 500000,
                                            500001, 999997, 999998, 999999, 333333, 666667};

}  // namespace

TEST(Fraction, OfHalfASecondTakesHalfASecondAway) {
  Instant time(0, 500000);
  time += -0.5;
  EXPECT_EQ(shown(time), "0.000000");
  Instant other(0, 500000);
  other -= 0.5;
  EXPECT_EQ(shown(other), "0.000000");
}

TEST(Fraction, TakenAwayWholeLeavesNothing) {
  for (const std::uint32_t micros : edgeMicros) {
    Instant time(0, micros);
    time += -static_cast<double>(micros) / 1e6;  // the nearest double, as the sum's is
    const auto expected = expectedSum(0, micros, -static_cast<double>(micros) / 1e6);
    if (expected) {
      EXPECT_EQ(shown(time), *expected) << micros;
    }
  }
}

TEST(Fraction, JustMoreThanThereIsGivesABadTime) {
  Instant time(0, 500000);
  time += std::nextafter(-0.5, -1.0);
  EXPECT_EQ(shown(time), "bad");
}

TEST(Fraction, JustLessThanThereIsLeavesNothing) {
  Instant time(0, 500000);
  time += std::nextafter(-0.5, 0.0);
  EXPECT_EQ(shown(time), "0.000000");
}

TEST(Fraction, BeyondTheLastTimeGivesABadTime) {
  Instant last(0xFFFFFFFF, 999998);
  last += 0.0;
  EXPECT_EQ(shown(last), *expectedSum(0xFFFFFFFF, 999998, 0.0));
  Instant beyond(0xFFFFFFFF, 999999);
  beyond += 0.0;
  EXPECT_EQ(shown(beyond), "bad");
}

TEST(Fraction, SumsAtTheEdgesAreThoseOfExactArithmetic) {
  Failures failures;
  const std::vector<double> deltas{0.0,     0.5,          0.25,         1.0,          1e-6,
                                   5e-7,    1e-7,         0.1,          0.3,          1.0 / 3,
                                   2.0 / 3, 0.999999,     0.9999995,    1.5,          1e3,
                                   86400,   2147483648.0, 4294967295.0, 4294967295.5, 4294967296.0,
                                   1e10,    3e-6,         7e-6,         1.1,          2.2};
  for (const std::uint32_t seconds : edgeSeconds) {
    for (const std::uint32_t micros : edgeMicros) {
      for (const double delta : deltas) {
        for (const double near :
             {delta, std::nextafter(delta, 1e300), std::nextafter(delta, -1e300)}) {
          failures.compare(seconds, micros, near);
          failures.compare(seconds, micros, -near);
        }
      }
      const double all = seconds + micros / 1e6;
      for (const double near : {all, std::nextafter(all, 1e300), std::nextafter(all, -1e300)}) {
        failures.compare(seconds, micros, -near);
        failures.compare(seconds, micros, 4294967296.0 - near);
      }
    }
  }
  EXPECT_GT(failures.tried(), 10000);
  EXPECT_EQ(failures.failed(), 0);
}

#ifdef SLOW  // each takes the same ways through the code
constexpr int million = 100000;
#else
constexpr int million = 1000000;
#endif

TEST(Fraction, MillionRandomSumsAreThoseOfExactArithmetic) {
  std::mt19937_64 random(21);
  Failures failures;
  for (int turn = 0; turn < million; turn++) {
    const auto seconds = static_cast<std::uint32_t>(random() >> (32 + random() % 32));
    const auto micros = static_cast<std::uint32_t>(random() % 1000000);
    double delta = 0;
    switch (turn % 4) {
      case 0:  // any size
        delta = std::ldexp(static_cast<double>(random() >> 11),
                           -53 + static_cast<int>(random() % 48) - 16);
        break;
      case 1:  // whole microseconds, as they are typed
        delta = static_cast<double>(random() % 2000000000) / 1e6;
        break;
      case 2:  // about to reach a full microsecond
        delta = std::nextafter(static_cast<double>(random() % 1000000) / 1e6, 2.0);
        break;
      default:  // about to reach nothing
        delta = seconds + micros / 1e6 + std::ldexp(static_cast<double>(random() % 64), -52);
        break;
    }
    failures.compare(seconds, micros, turn % 8 < 4 || turn % 4 == 3 ? -delta : delta);
  }
  EXPECT_GT(failures.tried(), million / 10 * 7);
  EXPECT_EQ(failures.failed(), 0);
}

TEST(Fraction, MillionRandomDifferencesAreThoseOfExactArithmetic) {
  std::mt19937_64 random(22);
  int failed = 0;
  for (int turn = 0; turn < million && failed < 5; turn++) {
    const auto s1 = static_cast<std::uint32_t>(random() >> (32 + random() % 32));
    const auto s2 =
        turn % 3 == 0 ? s1 : static_cast<std::uint32_t>(random() >> (32 + random() % 32));
    const auto m1 = static_cast<std::uint32_t>(random() % 1000000);
    const auto m2 = static_cast<std::uint32_t>(random() % 1000000);
    const Signed exact = (Signed(s1) - Signed(s2)) * 1000000 + (Signed(m1) - Signed(m2));
    const double expected = nearest(exact, 1000000);
    const double found = Instant(s1, m1) - Instant(s2, m2);
    if (std::bit_cast<std::uint64_t>(expected) != std::bit_cast<std::uint64_t>(found) &&
        (expected != 0 || found != 0)) {
      failed++;
      ADD_FAILURE() << shown(s1, m1) << " - " << shown(s2, m2) << ": expected " << std::hexfloat
                    << expected << ", found " << found;
    }
  }
}

TEST(Fraction, DifferencesAreTheNearestDoubles) {
  EXPECT_EQ(Instant(0, 1) - Instant(0, 0), 1e-6);
  EXPECT_EQ(Instant(0, 0) - Instant(0, 1), -1e-6);
  EXPECT_EQ(Instant(0, 300000) - Instant(0, 0), 0.3);
  EXPECT_EQ(Instant(1, 100000) - Instant(0, 0), 1.1);
  EXPECT_EQ(Instant(0xFFFFFFFF, 999999) - Instant(0, 0), 4294967295.999999);
  EXPECT_EQ(Instant(0, 0) - Instant(0xFFFFFFFF, 999999), -4294967295.999999);
  EXPECT_EQ(Instant(5, 200000) - Instant(4, 900000), 0.3);
}

TEST(Fraction, ThatIsNoNumberOrWithoutEndNeverGivesAValidTime) {
  Instant up(5, 0);
  up += std::numeric_limits<double>::infinity();
  EXPECT_EQ(shown(up), "bad");
  Instant down(5, 0);
  down += -std::numeric_limits<double>::infinity();
  EXPECT_EQ(shown(down), "bad");
}

TEST(Fraction, ThatIsTinyChangesNothing) {
  Instant time(5, 0);
  time += 5e-324;
  EXPECT_EQ(shown(time), "5.000000");
  time += 1e-30;
  EXPECT_EQ(shown(time), "5.000000");
  Instant none(0, 0);
  none += -1e-300;
  EXPECT_EQ(shown(none), "bad");
}

#endif

}  // namespace edges_fractions_test
