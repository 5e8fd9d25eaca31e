// SPDX-License-Identifier: MIT
// Fields of comma-separated lines.  For every text without NUL bytes:
//
// - A text without double quote, comma, carriage return and line feed is written as it
//   is; any other in double quotes, and all double quotes inside are doubled.
// - What is written reads back, alone and among other fields of a line, and reading
//   ends exactly after it.
//
// For every text read as a line:
//
// - Reading never moves back or past the end, and comes to the end.
// - A field is no longer than what it was read from.

#include <algorithm>
#include <vector>

#include "conversion.h"
#include "fuzz.h"

namespace {

void checkWritten(const std::string& field) {
  const std::string written = CSVescape(field);
  if (field.find_first_of("\"\r\n,") == field.npos) {
    checkSame(written, field, "a plain field is written as it is");
  } else {
    check(written.size() >= 2 && written.front() == '"' && written.back() == '"',
          "a field with special characters is in double quotes", written);
    const std::string_view inside = std::string_view(written).substr(1, written.size() - 2);
    const auto quotes = std::count(inside.begin(), inside.end(), '"');
    check(quotes == 2 * std::count(field.begin(), field.end(), '"'), "double quotes are doubled",
          written);
  }
  const char* p = written.c_str();
  checkSame(CSVunescape(p), field, "a field reads back", written);
  check(*p == '\0', "reading ends after the field", written);
}

void checkLine(const std::vector<std::string>& fields) {
  std::string line;
  for (const std::string& field : fields) {
    line += &field == &fields.front() ? "" : ",";
    line += CSVescape(field);
  }
  const char* p = line.c_str();
  for (const std::string& field : fields) {
    checkSame(CSVunescape(p), field, "the fields of a line read back", line);
  }
  check(*p == '\0', "reading ends after the last field", line);
}

void checkReading(const std::string& line) {
  const char* p = line.c_str();
  const char* const end = p + line.size();
  while (*p != '\0') {
    const char* const start = p;
    const std::string field = CSVunescape(p);
    check(p > start && p <= end, "reading a field moves on, not past the end", line);
    check(field.size() <= static_cast<std::size_t>(p - start),
          "a field is no longer than what it was read from", line, field);
  }
  check(CSVunescape(p).empty() && p == end, "an empty text gives an empty field", line);
}

}  // namespace

void fuzz(std::string_view input) {
  const std::string text(input.substr(0, input.find('\0')));
  checkWritten(text);
  checkLine(stringToVector(text, '|'));
  checkReading(text);
}
