// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "datetime.h"
#include "datetime_probe.h"

namespace datetime_arithmetic_test {

namespace {

// Read before the library's own initialisers can run.
struct startUpValues {
  std::string last = raw(DateTime::LAST_DAY);
  std::string bad = raw(DateTime::BAD_TIME);
  std::string first = DateTime::MIN_TIME.format(DS_ISO8601P);
  std::string end = DateTime::MAX_TIME.format(DS_ISO8601P);
};
__attribute__((init_priority(101))) const startUpValues atStartUp;

constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr std::int32_t HIGHEST = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t LOWEST = std::numeric_limits<std::int32_t>::min();

// --- Values and constants ----------------------------------------------------

TEST(DateTime, IsAPlainValue) {
  EXPECT_TRUE(std::is_trivially_copyable_v<DateTime>);
  EXPECT_FALSE(std::is_polymorphic_v<DateTime>);
}

TEST(DateTime, StartsInvalid) {
  EXPECT_FALSE(DateTime().okay());
  EXPECT_EQ(raw(DateTime()), "0.invalid");
}

TEST(DateTime, IsValidBelowTheReservedMicroseconds) {
  EXPECT_TRUE(rawTime(0, 0).okay());
  EXPECT_TRUE(rawTime(0, 999999).okay());
  EXPECT_TRUE(rawTime(0, 0xFFFFFFFE).okay());
  EXPECT_FALSE(rawTime(0, 0xFFFFFFFF).okay());
  EXPECT_FALSE(rawTime(1794740854, 0xFFFFFFFF).okay());
}

TEST(DateTime, HasItsConstants) {
  EXPECT_EQ(raw(DateTime::BAD_TIME), "0.invalid");
  EXPECT_EQ(raw(DateTime::MIN_TIME), "0.000000");
  EXPECT_EQ(raw(DateTime::UNIX_DATUM), "0.000000");
  EXPECT_EQ(raw(DateTime::LAST_DAY), "4294944000.000000");
  EXPECT_EQ(raw(DateTime::MAX_TIME), "4294967295.999999");
}

TEST(DateTime, HasItsConstantsBeforeMain) {
  EXPECT_EQ(atStartUp.last, "4294944000.000000");
  EXPECT_EQ(atStartUp.bad, "0.invalid");
  EXPECT_EQ(atStartUp.first, "19700101T000000.000000");
  EXPECT_EQ(atStartUp.end, "21060207T062815.999999");
}

TEST(DateTime, CountsUnixTimeInWholeSeconds) {
  EXPECT_EQ(rawTime(1794740854, 999999).UNIXtime(), 1794740854UL);
  EXPECT_EQ(DateTime::MAX_TIME.UNIXtime(), 4294967295UL);
  EXPECT_EQ(DateTime::BAD_TIME.UNIXtime(), 0UL);
}

TEST(DateTime, CountsHundredNanosecondsFrom1601) {
  EXPECT_EQ(DateTime::MIN_TIME.VNCtime(), 116444736000000000ULL);
  EXPECT_EQ(rawTime(1, 1).VNCtime(), 116444736010000010ULL);
  EXPECT_EQ(rawTime(1794740854, 42517).VNCtime(), 134392144540425170ULL);
  EXPECT_EQ(DateTime::MAX_TIME.VNCtime(), 159394408959999990ULL);
}

TEST(DateTime, OrdersBySecondsThenMicroseconds) {
  const std::vector<rawTime> ascending = {{0, 0},          {0, 1},         {0, 999999},
                                          {1, 0},          {1, 1},         {0x7FFFFFFF, 5},
                                          {0x80000000, 4}, {0xFFFFFFFF, 0}};
  for (std::size_t i = 0; i < ascending.size(); i++) {
    for (std::size_t j = 0; j < ascending.size(); j++) {
      EXPECT_EQ(ascending[i] < ascending[j], i < j)
          << raw(ascending[i]) << " and " << raw(ascending[j]);
    }
  }
  // The order compares only the fields, so the invalid time has a place in it, too.
  EXPECT_TRUE(rawTime(0, 999999) < DateTime::BAD_TIME);
  EXPECT_TRUE(DateTime::BAD_TIME < rawTime(1, 0));
  EXPECT_FALSE(DateTime::BAD_TIME < DateTime());
}

// --- Calendar dates ----------------------------------------------------------

TEST(GregorianDate, StartsAtTheBeginningOf1970) {
  EXPECT_EQ(raw(gregorianDate()), "1970-1-1 0:0:0 0");
}

TEST(GregorianDate, HasFieldsOf32Bits) {
  EXPECT_TRUE((std::is_same_v<decltype(gregorianDate::year), std::int32_t>));
  EXPECT_TRUE((std::is_same_v<decltype(gregorianDate::mseconds), std::int32_t>));
  EXPECT_EQ(sizeof(gregorianDate), 28U);
}

TEST(GregorianDate, GoesToAnInstantAndBack) {
  const struct {
    rawTime time;
    const char* fields;
  } cases[] = {
      {{0, 0}, "1970-1-1 0:0:0 0"},
      {{0, 999999}, "1970-1-1 0:0:0 999999"},
      {{59, 0}, "1970-1-1 0:0:59 0"},
      {{60, 0}, "1970-1-1 0:1:0 0"},
      {{3599, 0}, "1970-1-1 0:59:59 0"},
      {{3600, 0}, "1970-1-1 1:0:0 0"},
      {{86399, 0}, "1970-1-1 23:59:59 0"},
      {{86400, 0}, "1970-1-2 0:0:0 0"},
      {{68205600, 0}, "1972-2-29 10:0:0 0"},
      {{951782400, 0}, "2000-2-29 0:0:0 0"},
      {{1794740854, 42517}, "2026-11-15 11:7:34 42517"},
      {{2147483647, 0}, "2038-1-19 3:14:7 0"},
      {{2147483648, 0}, "2038-1-19 3:14:8 0"},
      {{4294944000, 0}, "2106-2-7 0:0:0 0"},
      {{4294967295, 999999}, "2106-2-7 6:28:15 999999"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.fields);
    const gregorianDate fields(row.time);
    EXPECT_EQ(raw(fields), row.fields);
    EXPECT_EQ(raw(DateTime(fields)), raw(row.time));
  }
}

TEST(GregorianDate, MakesAnInvalidTimeOfNegativeMicroseconds) {
  EXPECT_FALSE(DateTime(date(2026, 11, 15, 11, 7, 34, -1)).okay());
  EXPECT_EQ(gregorianDate(DateTime()).mseconds, -1);
}

TEST(GregorianDate, IsAssignedToAnInstant) {
  DateTime time;
  DateTime& result = (time = date(2026, 11, 15, 11, 7, 34, 42517));
  EXPECT_EQ(raw(time), "1794740854.042517");
  EXPECT_EQ(&result, &time);
}

TEST(GregorianDate, WrapsIn32Bits) {
  const struct {
    gregorianDate fields;
    unsigned long seconds;
  } cases[] = {
      {date(2106, 2, 7, 6, 28, 15), 4294967295},
      {date(2106, 2, 7, 6, 28, 16), 0},
      {date(2107, 1, 1), 28315904},
      {date(2400, 2, 29), 689661312},
      {date(9999, 12, 31, 23, 59, 59), 4294197631},
      {date(12026, 11, 15, 11, 7, 34), 3831648246},
      {date(99999, 12, 31), 1151441280},
      {date(1969, 12, 31, 23, 59, 59), 4294967295},
      {date(1900, 3, 1), 2091076096},
      {date(1, 1, 1), 2288912640},
      {date(0, 0, 0), 2254525440},
      {date(1970, 1, HIGHEST), 4294794496},
      {date(1970, 1, LOWEST), 4294880896},
      {date(1970, 1, 1, HIGHEST), 4294963696},
      {date(1970, 1, 1, LOWEST), 0},
      {date(1970, 1, 1, 0, HIGHEST), 4294967236},
      {date(1970, 1, 1, 0, LOWEST), 0},
      {date(1970, 1, 1, 0, 0, HIGHEST), 2147483647},
      {date(1970, 1, 1, 0, 0, LOWEST), 2147483648},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(raw(row.fields));
    EXPECT_EQ(DateTime(row.fields).UNIXtime(), row.seconds);
  }
}

TEST(GregorianDate, TakesAnyFieldsWithoutHarm) {
  for (const std::int32_t value : {HIGHEST, LOWEST}) {
    EXPECT_TRUE(DateTime(date(value, value, value, value, value, value, 0)).okay());
    EXPECT_TRUE(DateTime(date(value, 1, 1)).okay());
    EXPECT_TRUE(DateTime(date(2026, value, 1)).okay());
  }
}

TEST(GregorianDate, NormalisesFieldsThatAreOutOfRange) {
  const struct {
    gregorianDate fields;
    const char* expected;
  } cases[] = {
      {date(2026, 11, 15, 11, 7, 34, 42517), "2026-11-15 11:7:34 42517"},
      {date(2026, 1, 32), "2026-2-1 0:0:0 0"},
      {date(2026, 2, 29), "2026-3-1 0:0:0 0"},
      {date(2026, 3, 0), "2026-2-28 0:0:0 0"},
      {date(2026, 1, 0), "2025-12-31 0:0:0 0"},
      {date(2026, 1, -1), "2025-12-30 0:0:0 0"},
      {date(2026, 13, 1), "2027-1-1 0:0:0 0"},
      {date(2026, 14, 1), "2027-2-1 0:0:0 0"},
      {date(2026, 0, 1), "2025-12-1 0:0:0 0"},
      {date(2026, -1, 1), "2025-11-1 0:0:0 0"},
      {date(2026, -9, 1), "2025-3-1 0:0:0 0"},
      {date(2026, -10, 1), "2025-2-1 0:0:0 0"},
      {date(2026, -11, 1), "2025-1-1 0:0:0 0"},
      {date(2026, -22, 1), "2024-2-1 0:0:0 0"},
      {date(2026, 11, 15, 24, 0, 0), "2026-11-16 0:0:0 0"},
      {date(2026, 11, 15, -1, 0, 0), "2026-11-14 23:0:0 0"},
      {date(2026, 11, 15, 11, 60, 0), "2026-11-15 12:0:0 0"},
      {date(2026, 11, 15, 11, 7, 60), "2026-11-15 11:8:0 0"},
      {date(2026, 11, 15, 0, 0, -1), "2026-11-14 23:59:59 0"},
      {date(2026, 13, 32, 25, 61, 99), "2027-2-2 2:2:39 0"},
      {date(1970, 1, 1, 0, 0, -1), "2106-2-7 6:28:15 0"},
      // Months from March of the next year on run into the uneven month lengths.
      {date(2026, 15, 1), "2027-3-3 0:0:0 0"},
      {date(2026, 24, 1), "2027-12-3 0:0:0 0"},
      {date(2026, 26, 1), "2028-2-1 0:0:0 0"},
      {date(2026, 27, 1), "2028-3-2 0:0:0 0"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(raw(row.fields));
    gregorianDate fields = row.fields;
    gregorianDate& result = fields.normalise();
    EXPECT_EQ(raw(fields), row.expected);
    EXPECT_EQ(&result, &fields);
  }
}

// --- Moving ------------------------------------------------------------------

TEST(DateTimePlus, MovesByAFractionOfSeconds) {
  const struct {
    rawTime time;
    double delta;
    const char* expected;
  } cases[] = {
      {{0, 0}, 0.0, "0.000000"},
      {{0, 0}, 0.5, "0.500000"},
      {{0, 0}, 1.0, "1.000000"},
      {{10, 0}, -0.25, "9.750000"},
      {{1, 250000}, -1.0, "0.250000"},
      {{5, 0}, -5.0, "0.000000"},
      {{1, 500000}, -0.5, "1.000000"},
      {{0, 500000}, -0.5, "0.000000"},
      // Rounded once: with a rounding at each step this would be .142516.
      {{1794740854, 42517}, 0.1, "1794740854.142517"},
      {{1794740854, 0}, 5.0, "1794740859.000000"},
      {{1794740854, 500000}, 0.25, "1794740854.750000"},
      {{1794740854, 750000}, 0.25, "1794740855.000000"},
      {{3000000000, 123456}, 86400.0, "3000086400.123456"},
      {{4294967294, 500000}, 1.0, "4294967295.500000"},
      {{4294967295, 0}, -4294967295.0, "0.000000"},
      {{2147483647, 0}, 1.0, "2147483648.000000"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(raw(row.time) + " + " + std::to_string(row.delta));
    DateTime time = row.time;
    DateTime& result = (time += row.delta);
    EXPECT_EQ(raw(time), row.expected);
    EXPECT_EQ(&result, &time);
    EXPECT_EQ(raw(row.time + row.delta), row.expected);
    EXPECT_EQ(raw(row.time - -row.delta), row.expected);
    DateTime other = row.time;
    DateTime& otherResult = (other -= -row.delta);
    EXPECT_EQ(raw(other), row.expected);
    EXPECT_EQ(&otherResult, &other);
  }
}

TEST(DateTimePlus, CutsTheMicrosecondsOff) {
  EXPECT_EQ(raw(DateTime::MIN_TIME + 1.9e-6), "0.000001");
  EXPECT_EQ(raw(rawTime(1794740854, 1) + 1e-6), "1794740854.000001");
  // The sum is a double, which is a little below 42517 microseconds here.
  EXPECT_EQ(raw(rawTime(1794740854, 42517) + 5.0), "1794740859.042516");
  EXPECT_EQ(raw(rawTime(1794740854, 42517) + 0.0), "1794740854.042516");
}

TEST(DateTimePlus, LeavesItsOperandAlone) {
  const rawTime time(1000, 500000);
  EXPECT_EQ(raw(time + 2.0), "1002.500000");
  EXPECT_EQ(raw(time - 2.0), "998.500000");
  EXPECT_EQ(raw(time), "1000.500000");
}

TEST(DateTimePlus, BecomesInvalidBehindTheLastTime) {
  const struct {
    rawTime time;
    double delta;
  } cases[] = {
      {{0xFFFFFFFF, 999999}, 1.0}, {{0xFFFFFFFF, 999999}, 0.0}, {{0xFFFFFFFF, 500000}, 0.5},
      {{0xFFFFFFFF, 0}, 1.0},      {{0, 0}, 4294967296.0},      {{0, 0}, 1e300},
      {{0, 0}, INFINITE},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(raw(row.time) + " + " + std::to_string(row.delta));
    EXPECT_EQ(raw(row.time + row.delta), "4294967295.invalid");
  }
}

TEST(DateTimePlus, IsStillValidAtTheUpperLimit) {
  EXPECT_EQ(raw(rawTime(0xFFFFFFFF, 999998) + 0.0), "4294967295.999998");
  EXPECT_EQ(raw(rawTime(0xFFFFFFFF, 999997) + 0.0), "4294967295.999997");
  EXPECT_EQ(raw(DateTime::MIN_TIME + 4294967295.0), "4294967295.000000");
}

TEST(DateTimePlus, BecomesTheBadTimeBeforeTheFirstTime) {
  const struct {
    rawTime time;
    double delta;
  } cases[] = {
      {{0, 0}, -0.5},      {{0, 0}, -1e-9}, {{1, 0}, -1.5}, {{0xFFFFFFFF, 999999}, -4294967297.0},
      {{5, 0}, -INFINITE},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(raw(row.time) + " + " + std::to_string(row.delta));
    EXPECT_EQ(raw(row.time + row.delta), "0.invalid");
  }
}

TEST(DateTimePlus, LeavesAnInvalidTimeAlone) {
  for (const double delta : {5.0, -5.0, 0.0, 1e300, -1e300}) {
    SCOPED_TRACE(delta);
    EXPECT_EQ(raw(DateTime::BAD_TIME + delta), "0.invalid");
    EXPECT_EQ(raw(DateTime::BAD_TIME - delta), "0.invalid");
    EXPECT_EQ(raw(rawTime(1000, 0xFFFFFFFF) + delta), "1000.invalid");
    EXPECT_EQ(raw(DateTime::MAX_TIME + 1.0 + delta), "4294967295.invalid");
  }
}

TEST(DateTimeIncrement, StepsByOneMicrosecond) {
  const struct {
    rawTime time;
    const char* expected;
  } cases[] = {
      {{0, 0}, "0.000001"},
      {{5, 999998}, "5.999999"},
      {{5, 999999}, "6.000000"},
      {{0x7FFFFFFF, 999999}, "2147483648.000000"},
      {{0xFFFFFFFE, 999999}, "4294967295.000000"},
      {{0xFFFFFFFF, 999998}, "4294967295.999999"},
      {{0xFFFFFFFF, 999999}, "4294967295.invalid"},
      {{0, 0xFFFFFFFF}, "0.invalid"},
      {{1000, 0xFFFFFFFF}, "1000.invalid"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(raw(row.time));
    DateTime time = row.time;
    DateTime& result = ++time;
    EXPECT_EQ(raw(time), row.expected);
    EXPECT_EQ(&result, &time);
  }
}

TEST(DateTimeDifference, IsInSeconds) {
  const struct {
    rawTime left;
    rawTime right;
    double expected;
  } cases[] = {
      {{5, 0}, {5, 0}, 0.0},
      {{10, 0}, {4, 0}, 6.0},
      {{4, 0}, {10, 0}, -6.0},
      {{5, 500000}, {5, 0}, 0.5},
      {{5, 0}, {5, 500000}, -0.5},
      {{6, 250000}, {5, 750000}, 0.5},
      {{5, 750000}, {6, 250000}, -0.5},
      {{0, 1}, {0, 0}, 1e-6},
      {{0, 1}, {0, 2}, -1e-6},
      {{1, 1}, {0, 2}, 0.999999},
      {{0x80000000, 0}, {0x7FFFFFFF, 0}, 1.0},
      {{0xFFFFFFFF, 0}, {0, 0}, 4294967295.0},
      {{0, 0}, {0xFFFFFFFF, 0}, -4294967295.0},
      {{0xFFFFFFFF, 999999}, {0, 0}, 4294967295.999999},
      {{0, 0}, {0xFFFFFFFF, 999999}, -4294967295.999999},
      {{1794740854, 42517}, {1794740853, 42516}, 1.000001},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(raw(row.left) + " - " + raw(row.right));
    EXPECT_DOUBLE_EQ(row.left - row.right, row.expected);
  }
}

TEST(DateTimeDifference, IsExactToTheLastBit) {
  const struct {
    rawTime left;
    rawTime right;
    double expected;
  } cases[] = {
      // In double precision throughout, each of these would be one bit off.
      {{0, 5}, {0, 0}, 5e-6},          {{0, 33}, {0, 0}, 3.3e-5},
      {{0, 0}, {0, 33}, -3.3e-5},      {{1794740854, 50}, {1794740854, 7}, 4.3e-5},
      {{1, 199982}, {0, 0}, 1.199982}, {{0, 0}, {1, 999910}, -1.99991},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(raw(row.left) + " - " + raw(row.right));
    EXPECT_EQ(row.left - row.right, row.expected);
  }
}

TEST(DateTimeDifference, IsNoneWhenATimeIsInvalid) {
  const rawTime time(1000, 0);
  EXPECT_EQ(time - DateTime::BAD_TIME, 0.0);
  EXPECT_EQ(DateTime::BAD_TIME - time, 0.0);
  EXPECT_EQ(DateTime::BAD_TIME - DateTime::BAD_TIME, 0.0);
  EXPECT_EQ(rawTime(0xFFFFFFFF, 0xFFFFFFFF) - time, 0.0);
}

// --- NTP time stamps ---------------------------------------------------------

std::string hex(const unsigned char* bytes, int count) {
  static const char digits[] = "0123456789abcdef";
  std::string result;
  for (int i = 0; i < count; i++) {
    result += digits[bytes[i] >> 4];
    result += digits[bytes[i] & 15];
  }
  return result;
}

TEST(DateTimeNTP, WritesEightBytes) {
  const struct {
    rawTime time;
    const char* expected;
  } cases[] = {
      {{0, 0}, "83aa7e8000000000"},
      {{1, 1}, "83aa7e81000010c6"},
      {{1794740854, 42517}, "eea410f60ae1c43e"},
      {{0, 500000}, "83aa7e807ff89ec0"},
      {{0x7C558180, 0}, "0000000000000000"},
      {{0x7C55817F, 0}, "ffffffff00000000"},
      {{0xFFFFFFFF, 999999}, "83aa7e7ffff12cba"},
      {{0, 0xFFFFFFFF}, "83aa7e80ffffef3a"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(raw(row.time));
    unsigned char bytes[10];
    std::fill(bytes, bytes + 10, static_cast<unsigned char>(0xA5));
    EXPECT_TRUE(row.time.NTPtime(bytes + 1));
    EXPECT_EQ(hex(bytes + 1, 8), row.expected);
    EXPECT_EQ(bytes[0], 0xA5);
    EXPECT_EQ(bytes[9], 0xA5);
  }
}

TEST(DateTimeNTP, ReadsEightBytes) {
  const struct {
    unsigned char bytes[8];
    const char* expected;
  } cases[] = {
      {{0x83, 0xAA, 0x7E, 0x80, 0, 0, 0, 0}, "0.000000"},
      {{0x83, 0xAA, 0x7E, 0x7F, 0, 0, 0, 0}, "4294967295.000000"},
      {{0, 0, 0, 0, 0, 0, 0, 0}, "2085978496.000000"},
      {{0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0}, "2085978495.000000"},
      {{0x80, 0, 0, 0, 0, 0, 0, 0}, "4233462144.000000"},
      {{0x83, 0xAA, 0x7E, 0x80, 0, 0, 0x10, 0xC6}, "0.000000"},
      {{0x83, 0xAA, 0x7E, 0x80, 0, 0, 0x10, 0xC7}, "0.000001"},
      {{0x83, 0xAA, 0x7E, 0x80, 0x80, 0, 0, 0}, "0.499996"},
      {{0x83, 0xAA, 0x7E, 0x80, 0xFF, 0xFF, 0xFF, 0xFF}, "0.999992"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(hex(row.bytes, 8));
    const DateTime time(row.bytes);
    EXPECT_TRUE(time.okay());
    EXPECT_EQ(raw(time), row.expected);
  }
}

TEST(DateTimeNTP, LosesAFewMicrosecondsOnTheWayThere) {
  // Writing and reading scale by different factors.
  const struct {
    rawTime time;
    const char* back;
  } cases[] = {
      {{1794740854, 0}, "1794740854.000000"},      {{1794740854, 1}, "1794740854.000000"},
      {{1794740854, 42517}, "1794740854.042507"},  {{1794740854, 500000}, "1794740854.499883"},
      {{0xFFFFFFFF, 999999}, "4294967295.999766"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(raw(row.time));
    unsigned char bytes[8];
    EXPECT_TRUE(row.time.NTPtime(bytes));
    EXPECT_EQ(raw(DateTime(bytes)), row.back);
  }
}

}  // namespace

}  // namespace datetime_arithmetic_test
