// SPDX-License-Identifier: MIT
// Reads the tables that make_calendar.py wrote to the folder TEST_DATA.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "datetime.h"
#include "datetime_probe.h"
#include "texts.h"

namespace datetime_calendar_test {

namespace {

constexpr int DAYS = 49711;  // from 1970-01-01 to 2106-02-07

struct yearLine {
  std::int32_t year;
  unsigned long firstDay;  ///< days from 1970-01-01 to the first day of the year
  std::string weekday;     ///< of that day
  std::vector<std::int32_t> months;
};

// The lines of a table, without those of comments.
std::vector<std::string> rowsOf(const std::string& name) {
  std::vector<std::string> result = linesOf(readFile(TEST_DATA "/" + name));
  std::erase_if(result, [](const std::string& line) { return line.empty() || line[0] == '#'; });
  return result;
}

std::vector<yearLine> calendarLines() {
  std::vector<yearLine> result;
  for (const std::string& line : rowsOf("calendar.txt")) {
    std::istringstream in(line);
    yearLine year;
    in >> year.year >> year.firstDay >> year.weekday;
    for (std::int32_t length; in >> length;) year.months.push_back(length);
    result.push_back(year);
  }
  return result;
}

/// Calls `visit(day, year, month, dayOfMonth)` for every day of the table, until
/// it fails fatally.  Returns the number of days.
template <class Visit>
int forEveryDay(Visit visit) {
  int count = 0;
  for (const yearLine& line : calendarLines()) {
    unsigned long day = line.firstDay;
    for (std::size_t month = 0; month < line.months.size(); month++) {
      for (std::int32_t dayOfMonth = 1; dayOfMonth <= line.months[month]; dayOfMonth++) {
        visit(day++, line.year, static_cast<std::int32_t>(month) + 1, dayOfMonth);
        if (testing::Test::HasFatalFailure()) return count;
        count++;
      }
    }
  }
  return count;
}

std::string twoDigits(std::int32_t number) {
  return (number < 10 ? "0" : "") + std::to_string(number);
}

TEST(Calendar, TurnsEveryDayIntoSeconds) {
  const int days =
      forEveryDay([](unsigned long day, std::int32_t year, std::int32_t month, std::int32_t mday) {
        const DateTime midnight(date(year, month, mday));
        ASSERT_EQ(midnight.UNIXtime(), day * 86400)
            << "the seconds of " << year << '-' << month << '-' << mday;
        ASSERT_TRUE(midnight.okay());
        if (day == DAYS - 1) return;  // the range ends before the end of this day
        const DateTime end(date(year, month, mday, 23, 59, 59, 999999));
        ASSERT_EQ(end.UNIXtime(), day * 86400 + 86399)
            << "the seconds of the end of " << year << '-' << month << '-' << mday;
      });
  EXPECT_EQ(days, DAYS);
}

TEST(Calendar, TurnsTheSecondsOfEveryDayIntoItsDate) {
  const int days =
      forEveryDay([](unsigned long day, std::int32_t year, std::int32_t month, std::int32_t mday) {
        for (const unsigned long second : {0UL, 22095UL, 86399UL}) {
          if (day == DAYS - 1 && second > 22095) continue;
          const gregorianDate fields(rawTime(day * 86400 + second, 7));
          ASSERT_TRUE(fields.year == year && fields.month == month && fields.day == mday)
              << "second " << second << " of day " << day << " is in " << year << '-' << month
              << '-' << mday << ", and reads as " << raw(fields);
          const bool timeIsRight =
              second == 0       ? fields.hour == 0 && fields.minute == 0 && fields.second == 0
              : second == 22095 ? fields.hour == 6 && fields.minute == 8 && fields.second == 15
                                : fields.hour == 23 && fields.minute == 59 && fields.second == 59;
          ASSERT_TRUE(timeIsRight && fields.mseconds == 7)
              << "second " << second << " of day " << day << " reads as " << raw(fields);
        }
      });
  EXPECT_EQ(days, DAYS);
}

TEST(Calendar, WritesAndReadsEveryDayAsText) {
  const int days =
      forEveryDay([](unsigned long day, std::int32_t year, std::int32_t month, std::int32_t mday) {
        const std::string text =
            std::to_string(year) + twoDigits(month) + twoDigits(mday) + "T010203";
        const unsigned long seconds = day * 86400 + 3723;
        ASSERT_EQ(rawTime(seconds, 0).format(DS_ISO8601), text) << "day " << day;
        ASSERT_EQ(DateTime(text).UNIXtime(), seconds) << text;
      });
  EXPECT_EQ(days, DAYS);
}

TEST(Calendar, KnowsTheWeekdayOfEveryDay) {
  const std::vector<std::string> names = {"Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"};
  std::size_t weekday = 3;  // of 1970-01-01
  const int days =
      forEveryDay([&](unsigned long day, std::int32_t year, std::int32_t month, std::int32_t mday) {
        ASSERT_EQ(gregorianDate(rawTime(day * 86400, 0)).format("%f"), names[weekday])
            << year << '-' << month << '-' << mday;
        weekday = (weekday + 1) % 7;
      });
  EXPECT_EQ(days, DAYS);
  for (const yearLine& line : calendarLines()) {
    EXPECT_EQ(date(line.year, 1, 1).format("%f"), line.weekday) << line.year;
  }
}

TEST(Calendar, WritesEveryStyleOfManyInstants) {
  int count = 0;
  for (const std::string& line : rowsOf("date_styles.txt")) {
    SCOPED_TRACE(line);
    const std::vector<std::string> fields = split(line, '\t');
    ASSERT_EQ(fields.size(), 12U) << "a line of the table";
    const rawTime time(std::stoul(fields[0]), std::stoul(fields[1]));
    for (std::size_t style = 0; style < 10; style++) {
      EXPECT_EQ(time.format(static_cast<dateStyle>(style)), fields[style + 2]) << "style " << style;
    }
    EXPECT_EQ(time.format(DS_NULL), "");
    count++;
  }
  EXPECT_GE(count, 100);
}

TEST(Calendar, ReadsTheCompactTextsOfManyInstants) {
  int count = 0;
  for (const std::string& line : rowsOf("date_styles.txt")) {
    SCOPED_TRACE(line);
    const std::vector<std::string> fields = split(line, '\t');
    ASSERT_EQ(fields.size(), 12U) << "a line of the table";
    const std::string seconds = fields[0];
    const std::string micros = std::string(6 - fields[1].size(), '0') + fields[1];
    EXPECT_EQ(raw(DateTime(fields[2])), seconds + ".000000");
    EXPECT_EQ(raw(DateTime(fields[3])), seconds + "." + micros);
    EXPECT_EQ(raw(DateTime(fields[5])), seconds + ".000000");
    count++;
  }
  EXPECT_GE(count, 100);
}

}  // namespace

}  // namespace datetime_calendar_test
