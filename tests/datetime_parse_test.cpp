// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "datetime.h"
#include "datetime_probe.h"

namespace datetime_parse_test {

namespace {

struct textCase {
  const char* text;
  const char* expected;
};

// --- The compact form --------------------------------------------------------

template <std::size_t N>
void expectTimes(const textCase (&cases)[N]) {
  for (const auto& row : cases) {
    SCOPED_TRACE(row.text);
    const DateTime time((std::string(row.text)));
    EXPECT_TRUE(time.okay());
    EXPECT_EQ(raw(gregorianDate(time)), row.expected);
  }
}

TEST(DateTimeFromText, ReadsDatesWithAndWithoutSeparators) {
  expectTimes({
      {"20261115T110734", "2026-11-15 11:7:34 0"},
      {"2026-11-15T11:07:34", "2026-11-15 11:7:34 0"},
      {"2026-11-15T11:07:34.5", "2026-11-15 11:7:34 500000"},
      {"20261115T110734.042517", "2026-11-15 11:7:34 42517"},
      {"20261115110734Z", "2026-11-15 11:7:34 0"},
      {"20261115110734", "2026-11-15 11:7:34 0"},
      {"2026/11/15@11:7:34.042517", "2026-11-15 11:7:34 42517"},
      {"2026-1-5T1:2:3", "2026-1-5 1:2:3 0"},
      {"20261115T1107", "2026-11-15 11:7:0 0"},
      {"20261115T11", "2026-11-15 11:0:0 0"},
      {"21060207T062815.999999", "2106-2-7 6:28:15 999999"},
  });
}

TEST(DateTimeFromText, KeepsTheDefaultOfAFieldThatIsMissing) {
  expectTimes({
      {"", "1970-1-1 0:0:0 0"},
      {"2026", "2026-1-1 0:0:0 0"},
      {"202611", "2026-11-1 0:0:0 0"},
      {"20261115", "2026-11-15 0:0:0 0"},
      {"2026-", "2026-1-1 0:0:0 0"},
      {"20261115T", "2026-11-15 0:0:0 0"},
  });
}

TEST(DateTimeFromText, ReadsNoFieldThatDoesNotStartWithADigit) {
  expectTimes({
      {"x2026", "1970-1-1 0:0:0 0"},
      {"-2026-11-15", "1970-1-1 0:0:0 0"},
      {"+2026", "1970-1-1 0:0:0 0"},
      {".5", "1970-1-1 0:0:0 0"},
      // Only one separator is skipped, so the second one ends the reading, and all
      // later fields are missing.
      {"2026--11-15", "2026-1-1 0:0:0 0"},
      {"2026-11-15TT11:07:34", "2026-11-15 0:0:0 0"},
      {"2026-11-15T11:07:34..5", "2026-11-15 11:7:34 0"},
  });
}

TEST(DateTimeFromText, StopsAtWhiteSpace) {
  expectTimes({
      {"2026-11-15 11:07:34", "2026-11-15 0:0:0 0"},
      {"2026-11-15\t11:07:34", "2026-11-15 0:0:0 0"},
      {"2026-11-15\n11:07:34", "2026-11-15 0:0:0 0"},
      {"2026-11-15\v11:07:34", "2026-11-15 0:0:0 0"},
      {"2026-11-15\f11:07:34", "2026-11-15 0:0:0 0"},
      {"2026-11-15\r11:07:34", "2026-11-15 0:0:0 0"},
      {" 20261115", "1970-1-1 0:0:0 0"},
      {"2026 11 15", "2026-1-1 0:0:0 0"},
      {"20261115T110734 5", "2026-11-15 11:7:34 0"},
  });
}

TEST(DateTimeFromText, SkipsAnyOtherCharacterAsASeparator) {
  expectTimes({
      {"2026x11y15z11_07,34;25", "2026-11-15 11:7:34 250000"},
      {"2026\xE9"
       "11\xFF"
       "15\x80"
       "11\x01"
       "07\x7F"
       "34",
       "2026-11-15 11:7:34 0"},
      // The two bytes of a UTF-8 character are two characters.
      {"2026\xC3\xA9"
       "11",
       "2026-1-1 0:0:0 0"},
  });
}

TEST(DateTimeFromText, ReadsAtMostFourDigitsOfTheYearAndTwoOfOtherFields) {
  expectTimes({
      {"20261", "2026-1-1 0:0:0 0"},
      {"2026111", "2026-11-1 0:0:0 0"},
      {"2026-011-15", "2026-1-1 15:0:0 0"},
      {"1999123123595901", "1999-12-31 23:59:59 10000"},
      {"1999T3", "1999-3-1 0:0:0 0"},
  });
}

TEST(DateTimeFromText, ReadsUpToSixDigitsOfAFraction) {
  expectTimes({
      {"20261115T110734.5", "2026-11-15 11:7:34 500000"},
      {"20261115T110734.05", "2026-11-15 11:7:34 50000"},
      {"20261115T110734.000001", "2026-11-15 11:7:34 1"},
      {"20261115T110734.123456", "2026-11-15 11:7:34 123456"},
      {"20261115T110734.1234567", "2026-11-15 11:7:34 123456"},
      {"20261115T110734.0000009", "2026-11-15 11:7:34 0"},
      {"20261115T110734.9999999999", "2026-11-15 11:7:34 999999"},
      {"20261115T110734.12x4", "2026-11-15 11:7:34 120000"},
      {"20261115T110734.12 4", "2026-11-15 11:7:34 120000"},
      {"20261115T110734.", "2026-11-15 11:7:34 0"},
      {"20261115T110734,25", "2026-11-15 11:7:34 250000"},
      {"20261115110734Z5", "2026-11-15 11:7:34 500000"},
      // After seconds of two digits the separator may be missing.
      {"20261115T110734123456", "2026-11-15 11:7:34 123456"},
  });
}

TEST(DateTimeFromText, RollsFieldsOverThatAreOutOfRange) {
  expectTimes({
      {"20261332T256199", "2027-2-2 2:2:39 0"},
      {"20260229", "2026-3-1 0:0:0 0"},
      {"20240229", "2024-2-29 0:0:0 0"},
      {"20260001", "2025-12-1 0:0:0 0"},
      {"20260100", "2025-12-31 0:0:0 0"},
  });
}

TEST(DateTimeFromText, WrapsYearsOutsideTheRange) {
  const struct {
    const char* text;
    unsigned long seconds;
  } cases[] = {
      {"21060207T062816", 0},   {"21070101", 28315904},   {"19691231T235959", 4294967295},
      {"19000301", 2091076096}, {"16010101", 1240428288}, {"99991231T235959", 4294197631},
      {"70-1-2", 171484544},    {"00010101", 2288912640}, {"00000000T000000", 2254525440},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.text);
    const DateTime time((std::string(row.text)));
    EXPECT_TRUE(time.okay());
    EXPECT_EQ(time.UNIXtime(), row.seconds);
  }
}

TEST(DateTimeFromText, ReadsTheLastMidnight) {
  EXPECT_EQ(DateTime("21060207T000000").UNIXtime(), 4294944000UL);
}

// --- The system-log stamp ----------------------------------------------------

struct stampCase {
  const char* text;
  const char* fields;  ///< the date read
  const char* rest;    ///< what is left of the text
};

template <std::size_t N>
void expectStamps(const stampCase (&cases)[N]) {
  for (const auto& row : cases) {
    SCOPED_TRACE(row.text);
    const char* text = row.text;
    const gregorianDate stamp(text);
    EXPECT_EQ(raw(stamp), row.fields);
    EXPECT_STREQ(text, row.rest);
  }
}

TEST(SyslogStamp, ReadsAStampAndStopsBehindIt) {
  expectStamps({
      {"Nov 15 11:07:34", "1972-11-15 11:7:34 0", ""},
      {"Nov  5 11:07:34", "1972-11-5 11:7:34 0", ""},
      {"Nov 05 11:07:34", "1972-11-5 11:7:34 0", ""},
      {"Feb 29 10:00:00", "1972-2-29 10:0:0 0", ""},
      {"Jan  1 00:00:00", "1972-1-1 0:0:0 0", ""},
      {"Dec 31 23:59:59", "1972-12-31 23:59:59 0", ""},
      {"Nov 15 1:2:3", "1972-11-15 1:2:3 0", ""},
  });
}

TEST(SyslogStamp, SkipsOneSeparatorButNoWhiteSpaceBehindTheSeconds) {
  expectStamps({
      {"Nov 15 11:07:34 host", "1972-11-15 11:7:34 0", " host"},
      {"Nov 15 11:07:34\thost", "1972-11-15 11:7:34 0", "\thost"},
      {"Nov 15 11:07:34: host", "1972-11-15 11:7:34 0", " host"},
      {"Nov 15 11:07:34.5", "1972-11-15 11:7:34 0", "5"},
      {"Nov 15 11:07:34::", "1972-11-15 11:7:34 0", ":"},
      {"Nov 15 11:07:3456", "1972-11-15 11:7:34 0", "56"},
  });
}

TEST(SyslogStamp, AllowsBlanksBeforeTheDayOnly) {
  expectStamps({
      {"Nov     5 11:07:34", "1972-11-5 11:7:34 0", ""},
      {"Nov5 11:07:34", "1972-11-5 11:7:34 0", ""},
      {"Nov\t5 11:07:34", "1972-11-99 99:99:99 -1", "\t5 11:07:34"},
      // One blank after the day is its separator; a second one is too many.
      {"Nov 5  11:07:34", "1972-11-5 99:99:99 -1", " 11:07:34"},
      {"Nov 5:11:07:34", "1972-11-5 11:7:34 0", ""},
      {"Nov 15 11 07:34", "1972-11-15 11:99:99 -1", " 07:34"},
      {"Nov 15 11:07 34", "1972-11-15 11:7:99 -1", " 34"},
      {"Nov 15 11: 07:34", "1972-11-15 11:99:99 -1", " 07:34"},
      {"Nov 15110734", "1972-11-15 11:7:34 0", ""},
  });
}

TEST(SyslogStamp, KnowsTheMonths) {
  expectStamps({
      {"Jan 2 03:04:05", "1972-1-2 3:4:5 0", ""},
      {"Feb 2 03:04:05", "1972-2-2 3:4:5 0", ""},
      {"Mar 2 03:04:05", "1972-3-2 3:4:5 0", ""},
      {"Apr 2 03:04:05", "1972-4-2 3:4:5 0", ""},
      {"May 2 03:04:05", "1972-5-2 3:4:5 0", ""},
      {"Jun 2 03:04:05", "1972-6-2 3:4:5 0", ""},
      {"Jul 2 03:04:05", "1972-7-2 3:4:5 0", ""},
      {"Aug 2 03:04:05", "1972-8-2 3:4:5 0", ""},
      {"Sep 2 03:04:05", "1972-9-2 3:4:5 0", ""},
      {"Oct 2 03:04:05", "1972-10-2 3:4:5 0", ""},
      {"Nov 2 03:04:05", "1972-11-2 3:4:5 0", ""},
      {"Dec 2 03:04:05", "1972-12-2 3:4:5 0", ""},
  });
}

TEST(SyslogStamp, LeavesATextThatNamesNoMonthAlone) {
  expectStamps({
      {"", "1972-13-1 0:0:0 -1", ""},
      {"N", "1972-13-1 0:0:0 -1", "N"},
      {"No", "1972-13-1 0:0:0 -1", "No"},
      {"nov 15 11:07:34", "1972-13-1 0:0:0 -1", "nov 15 11:07:34"},
      {"NOV 15 11:07:34", "1972-13-1 0:0:0 -1", "NOV 15 11:07:34"},
      {" Nov 15 11:07:34", "1972-13-1 0:0:0 -1", " Nov 15 11:07:34"},
      {"Xyz 15 11:07:34", "1972-13-1 0:0:0 -1", "Xyz 15 11:07:34"},
      {"15 Nov 11:07:34", "1972-13-1 0:0:0 -1", "15 Nov 11:07:34"},
  });
}

TEST(SyslogStamp, ReadsAMonthNameWithoutLookingBehindItsEnd) {
  // The end of the text comes right after the third letter.
  expectStamps({
      {"Nov", "1972-11-99 99:99:99 -1", ""},
      {"Nov ", "1972-11-99 99:99:99 -1", ""},
      {"Nov 15", "1972-11-15 99:99:99 -1", ""},
      {"Nov 15 11:07:", "1972-11-15 11:7:99 -1", ""},
      {"November 15 11:07:34", "1972-11-99 99:99:99 -1", "ember 15 11:07:34"},
  });
}

TEST(SyslogStamp, BoundsTheFields) {
  expectStamps({
      {"Nov 31 11:07:34", "1972-11-31 11:7:34 0", ""},
      {"Nov 32 11:07:34", "1972-11-32 11:7:34 -1", ""},
      {"Nov  0 11:07:34", "1972-11-0 11:7:34 0", ""},
      // The hour has the same bound as the minute.
      {"Nov 15 24:07:34", "1972-11-15 24:7:34 0", ""},
      {"Nov 15 59:07:34", "1972-11-15 59:7:34 0", ""},
      {"Nov 15 60:07:34", "1972-11-15 60:7:34 -1", ""},
      {"Nov 15 11:59:34", "1972-11-15 11:59:34 0", ""},
      {"Nov 15 11:60:34", "1972-11-15 11:60:34 -1", ""},
      {"Nov 15 11:07:59", "1972-11-15 11:7:59 0", ""},
      {"Nov 15 11:07:60", "1972-11-15 11:7:60 -1", ""},
      {"Nov 15 99:99:99", "1972-11-15 99:99:99 -1", ""},
  });
}

TEST(SyslogStamp, MakesAnInstantOnlyWhenItWasRead) {
  const char* good = "Feb 29 10:00:00";
  EXPECT_EQ(raw(DateTime(gregorianDate(good))), "68205600.000000");

  const char* bad = "Feb 29 10:00:60";
  EXPECT_FALSE(DateTime(gregorianDate(bad)).okay());

  const char* nothing = "29.2. 10:00:00";
  EXPECT_FALSE(DateTime(gregorianDate(nothing)).okay());
}

TEST(SyslogStamp, ReadsWhatTheStyleWrites) {
  const std::string written = rawTime(1794740854, 0).format(DS_SYSLOG);
  const char* text = written.c_str();
  EXPECT_EQ(raw(gregorianDate(text)), "1972-11-15 11:7:34 0");
  EXPECT_EQ(text, written.c_str() + written.size());
}

}  // namespace

}  // namespace datetime_parse_test
