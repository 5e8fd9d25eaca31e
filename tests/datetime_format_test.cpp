// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdint>
#include <iomanip>
#include <sstream>
#include <string>

#include "datetime.h"
#include "datetime_probe.h"

namespace datetime_format_test {

namespace {

// Sunday 2026-11-15 11:07:34.042517.
constexpr rawTime AN_INSTANT(1794740854, 42517);
// Thursday 2026-11-05 01:02:03.000009.
constexpr rawTime EARLY_IN_THE_MONTH(1793840523, 9);

TEST(DateTimeFormat, WritesAllStyles) {
  const struct {
    dateStyle style;
    const char* at;
    const char* early;
  } cases[] = {
      {DS_ISO8601, "20261115T110734", "20261105T010203"},
      {DS_ISO8601P, "20261115T110734.042517", "20261105T010203.000009"},
      {DS_RADIX64, "avmSdgph", "auvViwAA"},
      {DS_LDAP, "20261115110734Z", "20261105010203Z"},
      {DS_SYSLOG, "Nov 15 11:07:34", "Nov  5 01:02:03"},
      {DS_GUI, "11:07:34, 15/11/26", "01:02:03, 05/11/26"},
      {DS_GUIP, "15/11/26, 11:07:34.042517", "05/11/26, 01:02:03.000009"},
      {DS_RADIX37, "N39U8X37QZ", "N30DBDK5FU"},
      {DS_CTIME, "Sun Nov 15 11:07:34 2026", "Thu Nov 05 01:02:03 2026"},
      {DS_COOKIE, "Sun, 15 Nov 2026 11:07:34 UTC", "Thu, 05 Nov 2026 01:02:03 UTC"},
      {DS_NULL, "", ""},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE("style " + std::to_string(row.style));
    EXPECT_EQ(AN_INSTANT.format(row.style), row.at);
    EXPECT_EQ(EARLY_IN_THE_MONTH.format(row.style), row.early);
  }
}

TEST(DateTimeFormat, NumbersTheStylesFromZero) {
  EXPECT_EQ(DS_ISO8601, 0);
  EXPECT_EQ(DS_ISO8601P, 1);
  EXPECT_EQ(DS_RADIX64, 2);
  EXPECT_EQ(DS_LDAP, 3);
  EXPECT_EQ(DS_SYSLOG, 4);
  EXPECT_EQ(DS_GUI, 5);
  EXPECT_EQ(DS_GUIP, 6);
  EXPECT_EQ(DS_RADIX37, 7);
  EXPECT_EQ(DS_CTIME, 8);
  EXPECT_EQ(DS_COOKIE, 9);
  EXPECT_EQ(DS_NULL, 10);
}

TEST(DateTimeFormat, SaysBadTimeForAnInvalidTimeInEveryStyle) {
  for (int style = -1; style <= 12; style++) {
    SCOPED_TRACE("style " + std::to_string(style));
    EXPECT_EQ(DateTime().format(static_cast<dateStyle>(style)), "<bad time>");
    EXPECT_EQ(rawTime(0xFFFFFFFF, 0xFFFFFFFF).format(static_cast<dateStyle>(style)), "<bad time>");
  }
}

TEST(DateTimeFormat, SaysInvalidDateStyleForAStyleOutsideTheEnumeration) {
  for (const int style : {11, 12, 255, 0x7FFFFFFF, -1}) {
    SCOPED_TRACE("style " + std::to_string(style));
    EXPECT_EQ(AN_INSTANT.format(static_cast<dateStyle>(style)), "<Invalid date style>");
  }
}

TEST(DateTimeFormat, WritesTheFirstAndTheLastTimeInRadix37) {
  EXPECT_EQ(DateTime::MIN_TIME.format(DS_RADIX37), "AAAAAAAAAA");
  EXPECT_EQ(DateTime::MAX_TIME.format(DS_RADIX37), "7B2XELU05G");
}

TEST(DateTimeFormat, KeepsSixteenMicrosecondsApartInRadix64) {
  EXPECT_EQ(DateTime::MIN_TIME.format(DS_RADIX64), "AAAAAAAA");
  EXPECT_EQ(rawTime(0, 15).format(DS_RADIX64), "AAAAAAAA");
  EXPECT_EQ(rawTime(0, 16).format(DS_RADIX64), "AAAAAAAB");
  EXPECT_EQ(rawTime(1, 0).format(DS_RADIX64), "AAAAAQAA");
  EXPECT_EQ(DateTime::MAX_TIME.format(DS_RADIX64), "//////Qj");
}

TEST(DateTimeFormat, StreamsTheCompactStyle) {
  std::ostringstream out;
  out << AN_INSTANT << ' ' << DateTime::BAD_TIME << ' ' << DateTime::MIN_TIME;
  EXPECT_EQ(out.str(), "20261115T110734 <bad time> 19700101T000000");
}

TEST(GregorianDateFormat, WritesEveryLetter) {
  const struct {
    const char* pattern;
    const char* at;
    const char* early;
  } cases[] = {
      {"%Y", "2026", "2026"}, {"%y", "26", "26"},   {"%m", "11", "11"},
      {"%d", "15", "05"},     {"%e", "15", " 5"},   {"%H", "11", "01"},
      {"%M", "07", "02"},     {"%S", "34", "03"},   {"%N", "34.042517", "03.000009"},
      {"%f", "Sun", "Thu"},   {"%i", "Nov", "Nov"}, {"%%", "%", "%"},
  };
  const gregorianDate at(AN_INSTANT);
  const gregorianDate early(EARLY_IN_THE_MONTH);
  for (const auto& row : cases) {
    SCOPED_TRACE(row.pattern);
    EXPECT_EQ(at.format(row.pattern), row.at);
    EXPECT_EQ(early.format(row.pattern), row.early);
  }
}

TEST(GregorianDateFormat, CopiesWhatIsNoLetterOfItsOwn) {
  const struct {
    const char* pattern;
    const char* result;
  } cases[] = {
      {"", ""},
      {"no letters", "no letters"},
      {"%q", "%q"},
      {"%", "%"},
      {"on%", "on%"},
      {"%Y%", "2026%"},
      {"%%Y", "%Y"},
      {"%%%Y", "%2026"},
      {"%%%", "%%"},
      {"% Y", "% Y"},
      {"%q%Y", "%q2026"},
      {"%E%h%s%n%F%I", "%E%h%s%n%F%I"},
      {"\xC3\xA9%\xC3\xA9%d",
       "\xC3\xA9%\xC3\xA9"
       "15"},
      {"%Y-%m-%dT%H:%M:%N", "2026-11-15T11:07:34.042517"},
      {"[%f %i %d %H:%M:%S %Y] ", "[Sun Nov 15 11:07:34 2026] "},
  };
  const gregorianDate at(AN_INSTANT);
  for (const auto& row : cases) {
    SCOPED_TRACE(row.pattern);
    EXPECT_EQ(at.format(row.pattern), row.result);
  }
}

TEST(GregorianDateFormat, WritesALongPatternWhole) {
  std::string pattern;
  std::string expected;
  for (int i = 0; i < 1000; i++) {
    pattern += "%Y%N,";
    expected += "202634.042517,";
  }
  EXPECT_EQ(gregorianDate(AN_INSTANT).format(pattern), expected);
}

TEST(GregorianDateFormat, KeepsTheLowestDigitsOfANumberThatIsTooLong) {
  EXPECT_EQ(date(12026, 1, 1).format("%Y %y"), "2026 26");
  EXPECT_EQ(date(7, 1, 1).format("%Y %y"), "0007 07");
  EXPECT_EQ(date(2100, 1, 1).format("%y"), "00");
  EXPECT_EQ(date(2026, 104, 1).format("%m"), "04");
  EXPECT_EQ(date(2026, 1, 132, 203, 104, 299).format("%d %H %M %S"), "32 03 04 99");
}

TEST(GregorianDateFormat, PadsADayOfOneDigitWithABlank) {
  EXPECT_EQ(date(2026, 1, 5).format("%e"), " 5");
  EXPECT_EQ(date(2026, 1, 9).format("%e"), " 9");
  EXPECT_EQ(date(2026, 1, 10).format("%e"), "10");
  EXPECT_EQ(date(2026, 1, 31).format("%e"), "31");
}

TEST(GregorianDateFormat, WritesAllSixDigitsOfTheFraction) {
  EXPECT_EQ(date(2026, 1, 1, 0, 0, 5, 0).format("%N"), "05.000000");
  EXPECT_EQ(date(2026, 1, 1, 0, 0, 5, 123456).format("%N"), "05.123456");
  EXPECT_EQ(date(2026, 1, 1, 0, 0, 59, 999999).format("%N"), "59.999999");
  EXPECT_EQ(date(2026, 1, 1, 0, 0, 59, 100000).format("%N"), "59.100000");
}

TEST(GregorianDateFormat, KnowsTheMonths) {
  const char* const names[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                               "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  std::int32_t month = 1;
  for (const char* const name : names) EXPECT_EQ(date(2026, month++, 1).format("%i"), name);
}

TEST(GregorianDateFormat, HasNoNameForAMonthOutsideTheYear) {
  for (const std::int32_t month : {0, 13, -1, 0x7FFFFFFF}) {
    SCOPED_TRACE(month);
    EXPECT_EQ(date(2026, month, 1).format("<%i>"), "<?\?\?>");
  }
}

TEST(GregorianDateFormat, KnowsTheWeekdays) {
  const char* const names[] = {"Thu", "Fri", "Sat", "Sun", "Mon", "Tue", "Wed", "Thu"};
  std::int32_t day = 1;
  for (const char* const name : names) EXPECT_EQ(date(1970, 1, day++).format("%f"), name);
  EXPECT_EQ(date(2026, 11, 15).format("%f"), "Sun");
  EXPECT_EQ(date(2026, 11, 15, 23, 59, 59, 999999).format("%f"), "Sun");
  EXPECT_EQ(date(2106, 2, 7).format("%f"), "Sun");
}

TEST(GregorianDateStream, WritesAllFieldsUnpaddedButTheMicroseconds) {
  std::ostringstream out;
  out << gregorianDate(AN_INSTANT);
  EXPECT_EQ(out.str(), "2026/11/15@11:7:34.042517");

  out.str("");
  out << gregorianDate() << ' ' << date(7, 1, 2, 3, 4, 5, 999999);
  EXPECT_EQ(out.str(), "1970/1/1@0:0:0.000000 7/1/2@3:4:5.999999");
}

TEST(GregorianDateStream, LeavesABlankAsTheFillCharacter) {
  std::ostringstream out;
  out << gregorianDate(AN_INSTANT);
  EXPECT_EQ(out.fill(), ' ');
  out << std::setw(3) << 7;
  EXPECT_EQ(out.str(), "2026/11/15@11:7:34.042517  7");

  out.fill('*');
  out << gregorianDate();
  EXPECT_EQ(out.fill(), ' ');
}

}  // namespace

}  // namespace datetime_format_test
