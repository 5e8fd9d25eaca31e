// SPDX-License-Identifier: MIT
// Dates.  For every instant:
//
// - Its calendar fields and its weekday are those that the C library gives, and make the
//   same instant again.
// - The compact styles parse back to the instant, as far as they write it; a stamp in the
//   style of the system log parses back to month, day and time.
// - The styles in radix 64 and 37 hold seconds and microseconds (in units of 16).
// - An NTP time stamp reads back with the same seconds, and 1 to 233 microseconds less if
//   there are any.
// - The next microsecond is later, valid below the last time, and 0.000001 away.
// - Adding seconds gives that difference, to the rounding of a double; results are valid
//   exactly within the range.
// - The order is consistent, and agrees with `VNCtime`.
// - The invalid time prints as such in every style, and stays as it is.
//
// For every text:
//
// - A compact date is valid; normalising its fields a second time changes nothing.
// - A stamp in the style of the system log is read within its text: without a month it
//   does not move, and what it accepts has fields in range.
// - A zone is local time for "l", the precise clock for "p", each in either case, or at
//   most 99 hours and 99 minutes away; without a sign or digit it is 0.
// - A pattern without "%" is written as it is; two patterns, the first of which does not
//   end with "%", are written one after the other.  Any fields can be written.

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <sstream>

#include "bytearray.h"
#include "conversion.h"
#include "datetime.h"
#include "fuzz.h"

namespace {

/// An instant made of its fields.
class instant : public DateTime {
 public:
  instant(std::uint32_t seconds, std::uint32_t microseconds) : DateTime(seconds, microseconds) {}
};

std::string shown(const DateTime& time) {
  return time.format(DS_ISO8601P);
}

bool same(const DateTime& a, const DateTime& b) {
  return !(a < b) && !(b < a);
}

std::string firstLetters(const gregorianDate& date) {
  return date.format("%f %i");
}

void checkCalendar(const DateTime& time) {
  const gregorianDate date(time);
  check(same(DateTime(date), time), "calendar fields make the same instant again", shown(time));
  const auto seconds = static_cast<std::time_t>(time.UNIXtime());
  if (seconds < 0) {
    return;  // more than the C library's type holds
  }
  std::tm expected = {};
  gmtime_r(&seconds, &expected);
  check(date.year == expected.tm_year + 1900 && date.month == expected.tm_mon + 1 &&
            date.day == expected.tm_mday && date.hour == expected.tm_hour &&
            date.minute == expected.tm_min && date.second == expected.tm_sec,
        "calendar fields are those of the C library", shown(time));
  char letters[16] = "";
  std::strftime(letters, sizeof letters, "%a %b", &expected);
  checkSame(firstLetters(date), letters, "and so are the names", shown(time));
}

void checkStyles(const DateTime& time, std::uint32_t microseconds) {
  const auto seconds = static_cast<std::uint32_t>(time.UNIXtime());
  const instant whole(seconds, 0);
  check(same(DateTime(time.format(DS_ISO8601P)), time), "the precise style parses back",
        shown(time));
  check(same(DateTime(time.format(DS_ISO8601)), whole), "the compact style parses back",
        shown(time));
  check(same(DateTime(time.format(DS_LDAP)), whole), "the directory style parses back",
        shown(time));

  const std::string stamp = time.format(DS_SYSLOG);
  const char* p = stamp.c_str();
  const gregorianDate read(p);
  const gregorianDate date(time);
  check(*p == '\0' && read.mseconds == 0 && read.month == date.month && read.day == date.day &&
            read.hour == date.hour && read.minute == date.minute && read.second == date.second,
        "the style of the system log parses back", stamp);

  const ByteArray packed(time.format(DS_RADIX64).c_str(), 64);
  check(packed.size() == 6 && getU32(packed.data()) == seconds &&
            getU16(packed.data() + 4) == microseconds / 16,
        "radix 64 holds seconds and microseconds", shown(time));

  std::uint64_t value = 0;
  const std::string digits = time.format(DS_RADIX37);
  for (const char c : digits) {
    const std::size_t digit = std::string_view("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_").find(c);
    check(digit < 37, "radix 37 has 37 digits", digits);
    value = value * 37 + digit;
  }
  check(digits.size() == 10 && value == std::uint64_t{seconds} * 1000000 + microseconds,
        "radix 37 holds seconds and microseconds", shown(time), digits);
  check(time.format(DS_NULL).empty(), "the empty style is empty");
  checkSame(time.format(static_cast<dateStyle>(11)), "<Invalid date style>", "there is no more");
}

void checkNTP(const DateTime& time, std::uint32_t microseconds) {
  unsigned char stamp[8];
  check(time.NTPtime(stamp), "every time has a stamp");
  const DateTime read(stamp);
  const auto back = static_cast<std::uint32_t>(gregorianDate(read).mseconds);
  check(read.UNIXtime() == time.UNIXtime() && microseconds - back <= 233 &&
            (back < microseconds || microseconds == 0),
        "a stamp reads back a little earlier", shown(time), shown(read));
}

void checkArithmetic(const DateTime& time, double delta) {
  DateTime next = time;
  ++next;
  if (time < DateTime::MAX_TIME) {
    check(next.okay() && time < next && std::abs(next - time - 1e-6) < 1e-9,
          "the next microsecond is one later", shown(time), shown(next));
  } else {
    check(!next.okay(), "there is nothing after the last time");
  }
  const double expected = (time - DateTime::MIN_TIME) + delta;
  const DateTime moved = time + delta;
  if (expected > 0.001 && expected < 4294967295.99) {
    check(moved.okay() && std::abs((moved - time) - delta) < 3e-6, "adding gives that difference",
          shown(time), shown(moved), std::to_string(delta));
  } else if (!(expected >= -0.001 && expected <= 4294967296.0)) {
    check(!moved.okay(), "what is out of range is invalid", shown(time), std::to_string(delta));
  }
  check(same(time - delta, time + -delta), "subtracting is adding the negative", shown(time));
}

void checkInvalid(double delta) {
  DateTime bad;
  for (int style = DS_ISO8601; style <= DS_NULL + 1; style++) {
    checkSame(bad.format(static_cast<dateStyle>(style)), "<bad time>", "the invalid time says so");
  }
  ++bad;
  bad += delta;
  check(!bad.okay() && bad - DateTime::MAX_TIME == 0.0, "the invalid time stays");
}

void checkCompact(const std::string& text) {
  const DateTime time(text);
  check(time.okay(), "every compact date is valid", text);
  gregorianDate once(time);
  once.normalise();
  const std::string first = once.format("%Y-%m-%d %H:%M:%N");
  checkSame(once.normalise().format("%Y-%m-%d %H:%M:%N"), first, "normal fields stay", text);
}

void checkStamp(const std::string& text) {
  const char* p = text.c_str();
  const char* const start = p;
  const gregorianDate date(p);
  check(p >= start && p <= start + text.size(), "a stamp is read within its text", text);
  if (date.month == 13) {
    check(p == start && date.mseconds == -1, "without a month nothing is read", text);
  } else {
    check(p >= start + 3 && date.month >= 1 && date.month <= 12, "a month is one of twelve", text);
  }
  check(date.mseconds == -1 || (date.mseconds == 0 && date.day < 32 && date.hour < 60 &&
                                date.minute < 60 && date.second < 60),
        "accepted fields are in range", text);
}

void checkZone(const std::string& text) {
  const int zone = DateTime::timezone(text);
  const char first = text.empty() ? '\0' : text.front();
  if (first == 'L' || first == 'l') {
    check(zone == LOCAL_TIME, "L is local time", text);
  } else if (first == 'P' || first == 'p') {
    check(zone == PRECISE_TIME, "P is the precise clock", text);
  } else if (only({&first, 1}, "+-0123456789")) {
    check(std::abs(zone) <= 99 * 60 + 99 && (first == '-' ? zone <= 0 : zone >= 0),
          "an offset is bounded and has its sign", text);
  } else {
    check(zone == 0, "anything else is UTC", text);
  }
}

void checkPattern(const gregorianDate& date, const std::string& pattern) {
  const std::string written = date.format(pattern);
  if (pattern.find('%') == pattern.npos) {
    checkSame(written, pattern, "a pattern without % is written as it is");
  }
  if (pattern.empty() || pattern.back() != '%') {
    const std::string rest = "<%Y%y%m%d%e%H%M%S%N%f%i%%%q";
    checkSame(date.format(pattern + rest), written + date.format(rest),
              "patterns are written one after the other", pattern);
  }
}

// A reader of numbers from the bytes of an input, which it starts over at the end.
class numbers {
 public:
  explicit numbers(std::string_view bytes) : m_bytes(bytes) {}
  std::uint32_t next() {
    std::uint32_t result = 0;
    for (int i = 0; i < 4 && !m_bytes.empty(); i++) {
      result = result << 8 | static_cast<unsigned char>(m_bytes[m_position++ % m_bytes.size()]);
    }
    return result;
  }
  std::int32_t field() { return static_cast<std::int32_t>(next()); }

 private:
  std::string_view m_bytes;
  std::size_t m_position = 0;
};

void checkInstants(numbers& source) {
  const std::uint32_t microseconds = source.next() % 1000000;
  const instant time(source.next(), microseconds);
  const instant other(source.next(), source.next() % 1000000);
  const instant third(static_cast<std::uint32_t>(time.UNIXtime()), source.next() % 1000000);
  const double delta = source.field() / 1024.0 + source.field();
  checkCalendar(time);
  checkStyles(time, microseconds);
  checkNTP(time, microseconds);
  checkArithmetic(time, delta);
  checkInvalid(delta);
  checkOrder<DateTime>(time, other, third, [](const DateTime& x, const DateTime& y) {
    check((x < y) == (x.VNCtime() < y.VNCtime()), "both scales have the same order", shown(x),
          shown(y));
    return x < y ? -1 : y < x ? 1 : 0;
  });
}

}  // namespace

void fuzz(std::string_view input) {
  const auto [compact, stamp, zone, pattern, bytes] = parts<5>(input);
  checkCompact(compact);
  checkStamp(stamp);
  checkZone(zone);

  numbers source(input.substr(input.size() - bytes.size()));
  checkInstants(source);

  gregorianDate date;
  for (std::int32_t* field : {&date.year, &date.month, &date.day, &date.hour, &date.minute,
                              &date.second, &date.mseconds}) {
    *field = source.field();
  }
  checkPattern(date, pattern);
  date.normalise();
  std::ostringstream out;
  out << date << DateTime(compact);
}
