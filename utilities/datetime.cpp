// SPDX-License-Identifier: MIT
#include "datetime.h"

#include <array>
#include <cmath>
#include <cstring>
#include <ostream>  // IWYU pragma: keep
#include <utility>

#include "ascii.h"
#include "bytearray.h"
#include "conversion.h"
#include "rounding.h"

constinit const DateTime DateTime::BAD_TIME(0, INVALID);
constinit const DateTime DateTime::MIN_TIME(0, 0);
constinit const DateTime DateTime::UNIX_DATUM(0, 0);
constinit const DateTime DateTime::LAST_DAY(4294944000, 0);
constinit const DateTime DateTime::MAX_TIME(0xFFFFFFFF, 999999);

namespace {

constexpr std::uint32_t SECONDS_PER_DAY = 86400;
constexpr std::int64_t MILLION = 1000000;        // microseconds a second
constexpr std::uint32_t NTP_DATUM = 2208988800;  // 1970-01-01 in seconds since 1900

// Index 0 is the weekday of 1970-01-01.
constexpr std::array<const char*, 7> dayNames = {"Thu", "Fri", "Sat", "Sun", "Mon", "Tue", "Wed"};
constexpr std::array<const char*, 12> monthNames = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                    "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

// Reads at most `maxDigits` digits and the one separator after them.  White space
// is a separator only with `skipBlank`.
int getInt(const char*& text, int maxDigits, int defaultValue, bool skipBlank) {
  if (!internal::isDigit(*text)) {
    return defaultValue;
  }
  int result = 0;
  for (; maxDigits > 0 && internal::isDigit(*text); maxDigits--) {
    result = 10 * result + (*text++ - '0');
  }
  if (*text != '\0' && !internal::isDigit(*text) && (skipBlank || !internal::isSpace(*text))) {
    text++;
  }
  return result;
}

// Reads the digits of a fraction in units of 1 / scale.
int getFraction(const char*& text, int scale) {
  int result = 0;
  for (; scale > 9 && internal::isDigit(*text); text++) {
    scale /= 10;
    result += (*text - '0') * scale;
  }
  return result;
}

// Appends the lowest `digits` decimal digits.
void putInt(std::string& out, std::int32_t value, unsigned int digits) {
  auto rest = static_cast<std::uint32_t>(value);
  out.append(digits, '0');
  for (auto p = out.rbegin(); digits > 0; p++, digits--) {
    *p = static_cast<char>('0' + rest % 10);
    rest /= 10;
  }
}

void putFraction(std::string& out, std::int32_t microseconds) {
  putInt(out, microseconds, 6);
}

void putDay(std::string& out, std::int32_t day) {
  if (day > 9) {
    putInt(out, day, 2);
  } else {
    out += ' ';
    putInt(out, day, 1);
  }
}

// The 32-bit value that wrapping arithmetic leaves of a wider one.
std::int32_t wrap(std::int64_t value) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
}

// Days since 1970-01-01 of a calendar date, by the classic day-number formula in
// 32-bit arithmetic that wraps.  (2472663 is its offset 32075 plus 2440588, the
// day number of 1970-01-01.)  A division needs wrapped operands; sums and
// products may wrap later.
std::uint32_t dayNumber(const gregorianDate& date) {
  const std::int64_t a = wrap(std::int64_t{14} - date.month) / 12;
  const std::int64_t year = wrap(date.year - a);
  const std::int64_t days = std::int64_t{date.day} + wrap(year * 1461 + 7012800) / 4 +
                            wrap(367 * (date.month + 12 * a) - 734) / 12 -
                            wrap(3 * std::int64_t{wrap(year + 4900) / 100}) / 4 - 2472663;
  return static_cast<std::uint32_t>(days);
}

// Writes what "%" and `field` stand for.
void putField(std::string& out, char field, const gregorianDate& date) {
  switch (field) {
    case 'Y':
      putInt(out, date.year, 4);
      break;
    case 'y':
      putInt(out, date.year, 2);
      break;
    case 'm':
      putInt(out, date.month, 2);
      break;
    case 'd':
      putInt(out, date.day, 2);
      break;
    case 'e':
      putDay(out, date.day);
      break;
    case 'H':
      putInt(out, date.hour, 2);
      break;
    case 'M':
      putInt(out, date.minute, 2);
      break;
    case 'S':
      putInt(out, date.second, 2);
      break;
    case 'N':
      putInt(out, date.second, 2);
      out += '.';
      putFraction(out, date.mseconds);
      break;
    case 'f':
      out += dayNames[dayNumber(date) % 7];
      break;
    case 'i':
      out += date.month >= 1 && date.month <= 12
                 ? monthNames[static_cast<std::size_t>(date.month - 1)]
                 : "???";
      break;
    case '%':
      out += '%';
      break;
    default:
      out += '%';
      out += field;
  }
}

}  // namespace

// --- gregorianDate ---------------------------------------------------------

gregorianDate::gregorianDate(const DateTime& time) {
  const std::uint32_t days = time.m_seconds / SECONDS_PER_DAY;
  const std::uint32_t offset = days + 2509157;
  const std::uint32_t century = offset * 4 / 146097;
  const std::uint32_t dayOfCentury = offset - (century * 146097 + 3) / 4;
  const std::uint32_t yearOfCentury = (dayOfCentury * 4000 + 4000) / 1461001;
  const std::uint32_t dayOfYear = dayOfCentury - yearOfCentury * 1461 / 4 + 31;
  const std::uint32_t shiftedMonth = dayOfYear * 80 / 2447;
  const std::uint32_t carry = shiftedMonth / 11;
  const std::uint32_t timeOfDay = time.m_seconds - days * SECONDS_PER_DAY;
  year = static_cast<std::int32_t>(100 * century + yearOfCentury + carry - 4900);
  month = static_cast<std::int32_t>(shiftedMonth + 2 - 12 * carry);
  day = static_cast<std::int32_t>(dayOfYear - shiftedMonth * 2447 / 80);
  hour = static_cast<std::int32_t>(timeOfDay / 3600);
  minute = static_cast<std::int32_t>(timeOfDay % 3600 / 60);
  second = static_cast<std::int32_t>(timeOfDay % 60);
  mseconds = static_cast<std::int32_t>(time.m_microseconds);
}

gregorianDate::gregorianDate(const char*& text) : year(1972), mseconds(-1) {
  // 1972 is a leap year, so Feb 29 is accepted.
  for (month = text != nullptr ? 1 : 13; month <= 12; month++) {
    if (std::strncmp(text, monthNames[static_cast<std::size_t>(month - 1)], 3) == 0) {
      break;
    }
  }
  if (month > 12) {
    return;
  }
  text += 3;
  while (*text == ' ') {
    text++;
  }
  day = getInt(text, 2, 99, true);
  hour = getInt(text, 2, 99, false);
  minute = getInt(text, 2, 99, false);
  second = getInt(text, 2, 99, false);
  if (day < 32 && hour < 60 && minute < 60 && second < 60) {  // callers rely on hours up to 59
    mseconds = 0;
  }
}

gregorianDate& gregorianDate::normalise() {
  return *this = gregorianDate(DateTime(*this));
}

std::string gregorianDate::format(const std::string& pattern) const {
  std::string result;
  result.reserve(pattern.size() + 8);
  for (std::size_t i = 0; i < pattern.size(); i++) {
    if (pattern[i] != '%') {
      result += pattern[i];
    } else if (++i < pattern.size()) {
      putField(result, pattern[i], *this);
    } else {
      result += '%';
    }
  }
  return result;
}

std::ostream& operator<<(std::ostream& out, const gregorianDate& date) {
  // One text, so that no flag and no locale of the stream changes it.
  std::string text;
  int2decimal(text, date.year);
  const std::array<std::pair<char, std::int32_t>, 5> fields = {{{'/', date.month},
                                                                {'/', date.day},
                                                                {'@', date.hour},
                                                                {':', date.minute},
                                                                {':', date.second}}};
  for (const auto& [separator, field] : fields) {
    text += separator;
    int2decimal(text, field);
  }
  text += '.';
  putFraction(text, date.mseconds);
  out << text;
  out.fill(' ');
  return out;
}

// --- DateTime --------------------------------------------------------------

DateTime::DateTime(const std::string& text) {
  const char* p = text.c_str();
  gregorianDate date;
  date.year = getInt(p, 4, 1970, false);
  date.month = getInt(p, 2, 1, false);
  date.day = getInt(p, 2, 1, false);
  date.hour = getInt(p, 2, 0, false);
  date.minute = getInt(p, 2, 0, false);
  date.second = getInt(p, 2, 0, false);
  date.mseconds = getFraction(p, 1000000);
  *this = date;
}

DateTime::DateTime(const gregorianDate& date) {
  *this = date;
}

DateTime& DateTime::operator=(const gregorianDate& date) {
  m_seconds = dayNumber(date) * SECONDS_PER_DAY + static_cast<std::uint32_t>(date.hour) * 3600 +
              static_cast<std::uint32_t>(date.minute) * 60 +
              static_cast<std::uint32_t>(date.second);
  m_microseconds = static_cast<std::uint32_t>(date.mseconds);
  return *this;
}

DateTime::DateTime(const unsigned char* ntp)
    : m_seconds(getU32(ntp) - NTP_DATUM), m_microseconds(getU32(ntp + 4) / 4295) {}

std::string DateTime::format(dateStyle style) const {
  static constexpr std::array<const char*, 10> patterns = {
      "%Y%m%dT%H%M%S",
      "%Y%m%dT%H%M%N",
      nullptr,
      "%Y%m%d%H%M%SZ",
      "%i %e %H:%M:%S",
      "%H:%M:%S, %d/%m/%y",
      "%d/%m/%y, %H:%M:%N",
      nullptr,
      "%f %i %d %H:%M:%S %Y",
      "%f, %d %i %Y %H:%M:%S UTC",
  };
  if (!okay()) {
    return "<bad time>";
  }
  switch (style) {
    case DS_NULL:
      return std::string();
    case DS_RADIX64:
      return formatRadix64();
    case DS_RADIX37:
      return formatRadix37();
    default:
      break;
  }
  const auto index = static_cast<std::size_t>(style);
  return index < patterns.size() ? gregorianDate(*this).format(patterns[index])
                                 : "<Invalid date style>";
}

std::string DateTime::formatRadix64() const {
  unsigned char packed[6];
  setU32(m_seconds, packed);
  setU16(static_cast<unsigned short>(m_microseconds >> 4), packed + 4);
  return ByteArray(sizeof packed, packed).format(64);
}

std::string DateTime::formatRadix37() const {
  std::string result(10, 'A');
  std::uint64_t rest = std::uint64_t{m_seconds} * 1000000 + m_microseconds;
  for (std::size_t i = result.size(); i-- > 0;) {
    result[i] = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_"[rest % 37];
    rest /= 37;
  }
  return result;
}

std::uint64_t DateTime::VNCtime() const {
  return std::uint64_t{m_seconds} * 10000000 + std::uint64_t{m_microseconds} * 10 +
         116444736000000000;
}

bool DateTime::NTPtime(unsigned char* out) const {
  setU32(m_seconds + NTP_DATUM, out);
  setU32(m_microseconds * 4294, out + 4);  // 4294, not the 4295 of reading
  return true;
}

DateTime DateTime::now(const std::string& zone) {
  return now(timezone(zone));
}

int DateTime::timezone(const std::string& zone) {
  const char* p = zone.c_str();
  switch (*p) {
    case 'L':
    case 'l':
      return LOCAL_TIME;
    case 'P':
    case 'p':
      return PRECISE_TIME;
    default:
      break;
  }
  const bool negative = *p == '-';
  if (negative || *p == '+') {
    p++;
  }
  const int hours = getInt(p, 2, 0, false);
  const int minutes = getInt(p, 2, 0, false);
  const int offset = hours * 60 + minutes;
  return negative ? -offset : offset;
}

DateTime& DateTime::operator+=(double seconds) {
  if (!okay()) {
    return *this;
  }
  constexpr double BEYOND = 0x1p33;  // moves every instant out of the range
  const double total =
      std::abs(seconds) <= BEYOND
          ? internal::rounding::sum(std::int64_t{m_seconds} * MILLION + m_microseconds, seconds)
          : seconds;
  if (total > 4294967295.999998) {
    *this = DateTime(0xFFFFFFFF, INVALID);
  } else if (total >= 0) {
    m_seconds = static_cast<std::uint32_t>(total);
    m_microseconds =
        static_cast<std::uint32_t>(internal::rounding::millionTimes(total - m_seconds));
  } else {
    *this = BAD_TIME;  // too early, or not a number
  }
  return *this;
}

DateTime& DateTime::operator-=(double seconds) {
  return *this += -seconds;
}

DateTime DateTime::operator+(double seconds) const {
  DateTime result(*this);
  result += seconds;
  return result;
}

DateTime DateTime::operator-(double seconds) const {
  return *this + -seconds;
}

DateTime& DateTime::operator++() {
  if (!okay()) {
    return *this;
  }
  if (m_microseconds < 999999) {
    m_microseconds++;
  } else if (m_seconds < 0xFFFFFFFF) {
    m_microseconds = 0;
    m_seconds++;
  } else {
    m_microseconds = INVALID;
  }
  return *this;
}

double DateTime::operator-(const DateTime& other) const {
  if (!okay() || !other.okay()) {
    return 0.0;
  }
  const std::int64_t seconds = std::int64_t{m_seconds} - other.m_seconds;
  const std::int64_t microseconds = std::int64_t{m_microseconds} - other.m_microseconds;
  return internal::rounding::sum(seconds * MILLION + microseconds, 0.0);
}

bool DateTime::operator<(const DateTime& other) const {
  return m_seconds != other.m_seconds ? m_seconds < other.m_seconds
                                      : m_microseconds < other.m_microseconds;
}

std::ostream& operator<<(std::ostream& out, const DateTime& time) {
  return out << time.format(DS_ISO8601);
}
