// SPDX-License-Identifier: MIT
// Arithmetic with millionths that is rounded once, to the nearest double.
//
// A double cannot hold a millionth, so floating-point arithmetic rounds at each step.  The
// precision differs: `long double` has 53, 64 or 113 bits, and some processors calculate
// wider than a double.  Whole numbers give the same everywhere.
#pragma once

#include <cstdint>

namespace internal::rounding {

/// The double nearest to `millionths` / 1,000,000 + `addend`.  When two are equally near, it
/// is the even one.  It is never a negative zero.
///
/// REQUIRES: `addend` is between -2^33 and 2^33.
double sum(std::int64_t millionths, double addend);

/// The double nearest to 1,000,000 times `value`, and the even one when two are equally near.
///
/// REQUIRES: `value` is at least 0, not a negative zero, and less than 1.
double millionTimes(double value);

}  // namespace internal::rounding
