// SPDX-License-Identifier: MIT
// Date and time.
//
// A `DateTime` is an instant: unsigned 32-bit seconds since 1970-01-01 00:00:00
// (1970 to 2106) plus microseconds, with one reserved state for "invalid".  A
// `gregorianDate` is the same instant broken down into calendar fields.  Both are
// plain values without a time zone; a zone is an offset that is applied when the
// clock is read, and nothing else.  There is no leap second and no time-zone
// database.
//
// Nothing here throws.  Invalid values propagate: they print as "<bad time>",
// arithmetic leaves them alone.  The class constants are constant-initialised;
// everything may be used before `main`, in a forked child and at exit.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>

#pragma GCC visibility push(default)

/// Time-zone codes in addition to plain offsets in minutes, for `DateTime::now`.
constexpr int LOCAL_TIME = -9999;     ///< the offset of `gettimeofday`: none, so UTC, with glibc
constexpr int PRECISE_TIME = -9998;   ///< the clock as it is
constexpr int BAD_TIMEZONE = -99999;  ///< marks a zone that is not to be used

/// How an instant is written.
enum dateStyle : int {
  DS_ISO8601 = 0,   ///< 20261115T110734
  DS_ISO8601P = 1,  ///< 20261115T110734.042517
  DS_RADIX64 = 2,   ///< 8 characters of base64, to 16 microseconds
  DS_LDAP = 3,      ///< 20261115110734Z (RFC 4517 section 3.3.13)
  DS_SYSLOG = 4,    ///< Nov  5 11:07:34 (RFC 3164 section 4.1.2)
  DS_GUI = 5,       ///< 11:07:34, 15/11/26
  DS_GUIP = 6,      ///< 15/11/26, 11:07:34.042517
  DS_RADIX37 = 7,   ///< 10 characters of A-Z, 0-9 and "_"
  DS_CTIME = 8,     ///< Sun Nov 15 11:07:34 2026
  DS_COOKIE = 9,    ///< Sun, 15 Nov 2026 11:07:34 UTC
  DS_NULL = 10      ///< nothing
};

class DateTime;

/// An instant as fields of the Gregorian calendar.
struct gregorianDate {
  std::int32_t year = 1970;   ///< the full year
  std::int32_t month = 1;     ///< 1 to 12
  std::int32_t day = 1;       ///< 1 to 31
  std::int32_t hour = 0;      ///< 0 to 23
  std::int32_t minute = 0;    ///< 0 to 59
  std::int32_t second = 0;    ///< 0 to 59
  std::int32_t mseconds = 0;  ///< microseconds; -1 marks a failed parse

  /// 1970-01-01 00:00:00.000000.
  gregorianDate() = default;

  /// The calendar fields of an instant.  An invalid one gives `mseconds` -1.
  explicit gregorianDate(const DateTime& time);

  /// Reads a stamp such as "Nov  5 11:07:34" at `text` and moves `text` past
  /// it.  The stamp has no year; the leap year 1972 is used, so that Feb 29 is
  /// accepted.
  ///
  /// - The month is one of the English three-letter names, case-sensitive.
  ///   Without one, and for null, `text` is not moved, `month` is 13 and `mseconds` -1.
  /// - The other fields have at most two digits, each followed by any one
  ///   character that is no digit and, but after the day, no white space; blanks
  ///   may come before the day.
  /// - `mseconds` is 0 when day < 32, hour, minute and second < 60, and else -1.
  ///   (The hour is bounded by 60 on purpose.)
  explicit gregorianDate(const char*& text);

  /// Rolls fields that are out of range over into a real date.
  gregorianDate& normalise();

  /// Writes the date by a pattern.
  ///
  /// - %Y %y: year, 4 or 2 digits.  %m %d: month, day.  %e: day, blank-padded.
  /// - %H %M %S: hour, minute, second.  %N: seconds, ".", microseconds.
  /// - %f %i: English name of the weekday and the month, three letters ("???"
  ///   for a month outside 1 to 12).
  /// - %%: a per-cent sign.  "%" and any other character stand for themselves,
  ///   as does a "%" at the end.
  ///
  /// A field of n digits shows the lowest n digits of its number.
  std::string format(const std::string& pattern) const;
};

/// Writes `year/month/day@hour:minute:second.microseconds`, unpadded except for the
/// microseconds, for example `2026/11/15@11:7:34.042517`, whatever flags and locale the
/// stream has.
std::ostream& operator<<(std::ostream& out, const gregorianDate& date);

/// An instant.
class DateTime {
 public:
  static const DateTime BAD_TIME;    ///< the invalid time
  static const DateTime MIN_TIME;    ///< the earliest time, 0 seconds
  static const DateTime UNIX_DATUM;  ///< 1970-01-01 00:00:00
  static const DateTime LAST_DAY;    ///< 2106-02-07 00:00:00, the last midnight
  static const DateTime MAX_TIME;    ///< the latest time, 0xFFFFFFFF.999999

  /// The invalid time.
  constexpr DateTime() = default;

  /// Reads a compact date such as 20261115T110734 or 2026-11-15T11:07:34.5.
  ///
  /// - Fields are read in the order year (up to 4 digits), month, day, hour,
  ///   minute, second (up to 2 each), fraction (up to 6); one that is missing
  ///   keeps its value of 1970-01-01 00:00:00.
  /// - After a field one separator is skipped: any character but a digit and
  ///   white space.  Reading ends where a field does not start with a digit, so
  ///   a blank ends it.
  /// - Nothing is range-checked; the seconds wrap in 32 bits.
  explicit DateTime(const std::string& text);

  /// The instant of calendar fields, none of them range-checked: the arithmetic
  /// wraps in 32 bits.
  explicit DateTime(const gregorianDate& date);
  DateTime& operator=(const gregorianDate& date);

  /// Reads an 8-byte NTP time stamp (RFC 5905 section 6, era 0 folded into the
  /// years from 1970).
  explicit DateTime(const unsigned char* ntp);

  /// True for a valid time.
  bool okay() const { return m_microseconds < INVALID; }

  /// The time in a style: "<bad time>" for the invalid time, else
  /// "<Invalid date style>" for a value outside the enumeration.
  std::string format(dateStyle style) const;

  /// 100-nanosecond units since 1601-01-01.
  std::uint64_t VNCtime() const;

  /// Writes the time as an 8-byte NTP time stamp to `out`.  Returns true.
  /// (Writing multiplies by 4294 and reading divides by 4295, so that a value
  /// never grows on the round trip.)
  bool NTPtime(unsigned char* out) const;

  /// Whole seconds since 1970-01-01 00:00:00.
  unsigned long UNIXtime() const { return m_seconds; }

  /// The current time.  `zone` is `LOCAL_TIME`, `PRECISE_TIME`, or minutes that
  /// are *subtracted* from the clock: +60 gives a time one hour earlier, 0 UTC.
  /// Invalid when the clock cannot be read.  A clock before 1970 or after 2106 is taken
  /// modulo 2^32 seconds, and so shows a time between.
  static DateTime now(int zone);
  /// The same for a zone's text.
  static DateTime now(const std::string& zone);

  /// The zone of a text, by its first character.
  ///
  /// - "L" or "l": `LOCAL_TIME`.  "P" or "p": `PRECISE_TIME`.
  /// - "+", "-" or a digit: an offset of hours and minutes.
  /// - Anything else, an empty text included: 0.
  ///
  ///     timezone("-05:00")   // -300
  static int timezone(const std::string& zone);

  /// Moves the time by `seconds`, to the microsecond below.  The sum is the double nearest to
  /// the exact one, and its fraction times 1,000,000 is rounded to a double, too, on every
  /// machine.  Before `MIN_TIME` or past 4294967295.999998 seconds, just short of
  /// `MAX_TIME`, it becomes invalid; an invalid time stays as it is.
  DateTime& operator+=(double seconds);
  DateTime& operator-=(double seconds);
  DateTime operator+(double seconds) const;
  DateTime operator-(double seconds) const;

  /// One microsecond later; the step past `MAX_TIME` makes the time invalid.
  DateTime& operator++();

  /// The difference in seconds, the double nearest to the exact one on every machine; 0.0
  /// when either time is invalid.
  double operator-(const DateTime& other) const;

  /// By seconds, then microseconds.  There is no equality.
  bool operator<(const DateTime& other) const;

  /// Sleeps until this time; signals do not cut it short.  True once it has come,
  /// at once for a time in the past.  False at once for an invalid time, and
  /// after an `OSevent` when the system cannot sleep.
  bool wait() const;

 protected:
  /// The microseconds of the invalid time.
  static constexpr std::uint32_t INVALID = 0xFFFFFFFF;

  /// A time of its parts, both cut to 32 bits.
  constexpr DateTime(unsigned long seconds, unsigned long microseconds)
      : m_seconds(static_cast<std::uint32_t>(seconds)),
        m_microseconds(static_cast<std::uint32_t>(microseconds)) {}

 private:
  friend struct gregorianDate;

  std::string formatRadix64() const;
  std::string formatRadix37() const;

  std::uint32_t m_seconds = 0;
  std::uint32_t m_microseconds = INVALID;
};

/// Writes the time in the style `DS_ISO8601`.
std::ostream& operator<<(std::ostream& out, const DateTime& time);

#pragma GCC visibility pop
