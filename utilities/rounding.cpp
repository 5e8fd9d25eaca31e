// SPDX-License-Identifier: MIT
#include "rounding.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>

namespace internal::rounding {

namespace {

constexpr int MANTISSA = 53;  // bits of a double
constexpr int BIAS = 1023;    // of its exponent
constexpr std::uint32_t MILLION = 1000000;

// A whole number of 256 bits; a negative one is its two's complement.
class wideNumber {
 public:
  explicit wideNumber(std::uint64_t value)
      : m_limbs{static_cast<std::uint32_t>(value), static_cast<std::uint32_t>(value >> 32)} {}

  bool negative() const { return bit(BITS - 1); }

  bool bit(int index) const {
    const auto place = static_cast<unsigned int>(index);
    return (m_limbs[place / 32] >> place % 32 & 1) != 0;
  }

  // The number of bits without leading zeros.
  int length() const {
    int result = BITS;
    while (result > 0 && !bit(result - 1)) {
      result--;
    }
    return result;
  }

  void shiftLeft(int count) {
    const auto limbs = static_cast<std::size_t>(count) / 32;
    const std::size_t bits = static_cast<std::size_t>(count) % 32;
    for (std::size_t i = m_limbs.size(); i-- > 0;) {
      const std::uint64_t low = i > limbs ? m_limbs[i - limbs - 1] : 0;
      const std::uint64_t high = i >= limbs ? m_limbs[i - limbs] : 0;
      m_limbs[i] = static_cast<std::uint32_t>((high << 32 | low) << bits >> 32);
    }
  }

  void add(const wideNumber& other) {
    std::uint64_t carry = 0;
    for (std::size_t i = 0; i < m_limbs.size(); i++) {
      carry += std::uint64_t{m_limbs[i]} + other.m_limbs[i];
      m_limbs[i] = static_cast<std::uint32_t>(carry);
      carry >>= 32;
    }
  }

  void negate() {
    for (std::uint32_t& limb : m_limbs) {
      limb = ~limb;
    }
    add(wideNumber(1));
  }

  void multiply(std::uint32_t factor) {
    std::uint64_t carry = 0;
    for (std::uint32_t& limb : m_limbs) {
      carry += std::uint64_t{limb} * factor;
      limb = static_cast<std::uint32_t>(carry);
      carry >>= 32;
    }
  }

  // Returns the remainder.
  std::uint32_t divide(std::uint32_t divisor) {
    std::uint64_t rest = 0;
    for (std::size_t i = m_limbs.size(); i-- > 0;) {
      rest = rest << 32 | m_limbs[i];
      m_limbs[i] = static_cast<std::uint32_t>(rest / divisor);
      rest %= divisor;
    }
    return static_cast<std::uint32_t>(rest);
  }

 private:
  static constexpr int BITS = 256;
  std::array<std::uint32_t, BITS / 32> m_limbs;
};

// A number that is at least 0: its mantissa, as a whole number, and its exponent.
struct splitDouble {
  std::uint64_t mantissa;
  int exponent;

  explicit splitDouble(double value) {
    const auto bits = std::bit_cast<std::uint64_t>(value);
    constexpr std::uint64_t FIRST = std::uint64_t{1} << (MANTISSA - 1);
    const int biased = static_cast<int>(bits / FIRST);
    mantissa = bits % FIRST + (biased > 0 ? FIRST : 0);
    exponent = std::max(biased, 1) - BIAS - MANTISSA + 1;
  }
};

// 2^`exponent`, which is a normal number.
double powerOfTwo(int exponent) {
  return std::bit_cast<double>(static_cast<std::uint64_t>(exponent + BIAS) << (MANTISSA - 1));
}

// `mantissa` * 2^`exponent`.  This saves linking the mathematical library.
double scaled(std::uint64_t mantissa, int exponent) {
  const int least = 1 - BIAS;
  const auto number = static_cast<double>(mantissa);
  return exponent >= least ? number * powerOfTwo(exponent)
                           : number * powerOfTwo(least) * powerOfTwo(exponent - least);
}

// The double nearest to (`number` + rest) * 2^`exponent`.  The rest is less than 1; it is
// above 0 if `more`, and 0 otherwise.
double nearest(const wideNumber& number, bool more, int exponent) {
  const int dropped = std::max(number.length() - MANTISSA, 0);
  std::uint64_t mantissa = 0;
  for (int i = dropped + MANTISSA; i-- > dropped;) {
    mantissa = mantissa << 1 | (number.bit(i) ? 1 : 0);
  }
  if (dropped > 0 && number.bit(dropped - 1)) {
    for (int i = dropped - 1; i-- > 0 && !more;) {
      more = number.bit(i);
    }
    mantissa += more ? 1 : mantissa & 1;
  }
  return scaled(mantissa, exponent + dropped);
}

}  // namespace

double sum(std::int64_t millionths, double addend) {
  constexpr int SCALE = 163;  // the last bit of the smallest addend below is 2^-162
  if (millionths == 0) {
    return addend + 0.0;  // a negative zero becomes 0
  }
  const double size = std::abs(addend);
  // The millionths are a double, halfway between two, or at least 2^-94 away from both.  So
  // only the sign of a small addend matters.
  const splitDouble part(size > 0 ? std::max(size, 0x1p-110) : 0.0);
  wideNumber total(part.mantissa);
  total.multiply(MILLION);
  total.shiftLeft(size > 0 ? part.exponent + SCALE : 0);
  if (addend < 0) {
    total.negate();
  }
  const auto distance = static_cast<std::uint64_t>(millionths);
  wideNumber first(millionths < 0 ? 0 - distance : distance);
  first.shiftLeft(SCALE);
  if (millionths < 0) {
    first.negate();
  }
  total.add(first);
  const bool negative = total.negative();
  if (negative) {
    total.negate();
  }
  const bool more = total.divide(MILLION) != 0;
  const double result = nearest(total, more, -SCALE);
  return negative ? -result : result;
}

double millionTimes(double value) {
  const splitDouble part(value);
  wideNumber product(part.mantissa);
  product.multiply(MILLION);
  return nearest(product, false, part.exponent);
}

}  // namespace internal::rounding
