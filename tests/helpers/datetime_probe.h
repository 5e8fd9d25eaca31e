// SPDX-License-Identifier: MIT
// Makes instants and calendar dates for tests, and looks into them.
#pragma once

#include <cstdint>
#include <iomanip>
#include <sstream>
#include <string>

#include "datetime.h"

/// An instant made of its raw fields.
class rawTime : public DateTime {
 public:
  constexpr rawTime(unsigned long seconds, unsigned long microseconds)
      : DateTime(seconds, microseconds) {}
};

/// A date made of its fields.
inline gregorianDate date(std::int32_t year, std::int32_t month, std::int32_t day,
                          std::int32_t hour = 0, std::int32_t minute = 0, std::int32_t second = 0,
                          std::int32_t mseconds = 0) {
  gregorianDate result;
  result.year = year;
  result.month = month;
  result.day = day;
  result.hour = hour;
  result.minute = minute;
  result.second = second;
  result.mseconds = mseconds;
  return result;
}

/// The fields of an instant, for example "1794740854.042517" or "0.invalid".
inline std::string raw(const DateTime& time) {
  std::ostringstream result;
  result << time.UNIXtime() << '.';
  if (time.okay()) {
    result << std::setw(6) << std::setfill('0') << gregorianDate(time).mseconds;
  } else {
    result << "invalid";
  }
  return result.str();
}

/// The fields of a date, for example "2026-11-15 11:7:34 42517".
inline std::string raw(const gregorianDate& date) {
  std::ostringstream result;
  result << date.year << '-' << date.month << '-' << date.day << ' ' << date.hour << ':'
         << date.minute << ':' << date.second << ' ' << date.mseconds;
  return result.str();
}
