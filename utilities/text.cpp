// SPDX-License-Identifier: MIT
// Quoting, fields, suffixes and pieces of text.

#include <algorithm>
#include <cctype>
#include <cstring>
#include <list>
#include <ostream>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "ascii.h"
#include "c_locale.h"
#include "conversion.h"

std::string quote(const std::string& text) {
  std::string result;
  result.reserve(text.size() + 2);
  result += '"';
  for (const char c : text) {
    if (internal::isPrintable(c)) {
      if (c == '"' || c == '\\') {
        result += '\\';
      }
      result += c;
      continue;
    }
    result += '\\';
    if (c == '\n') {
      result += 'n';
    } else if (c == '\r') {
      result += 'r';
    } else if (c == '\t') {
      result += 't';
    } else {
      const auto octal = static_cast<unsigned char>(c);
      result += static_cast<char>('0' + (octal >> 6));
      result += static_cast<char>('0' + (octal >> 3 & 7));
      result += static_cast<char>('0' + (octal & 7));
    }
  }
  result += '"';
  return result;
}

std::string CSVescape(const std::string& text) {
  if (text.find_first_of("\"\r\n,") == std::string::npos) {
    return text;
  }
  std::string result;
  result.reserve(text.size() + 2);
  result += '"';
  for (const char c : text) {
    if (c == '"') {
      result += '"';
    }
    result += c;
  }
  result += '"';
  return result;
}

namespace {

// Reads a field after its opening quote.
std::string quotedField(const char*& ptr) {
  std::string result;
  for (; *ptr != '\0'; ptr++) {
    if (*ptr != '"') {
      result += *ptr;
      continue;
    }
    ptr++;
    if (*ptr == '"') {
      result += '"';
      continue;
    }
    if (*ptr != '\0' && *ptr != ',') {
      ptr++;
    }
    if (*ptr == ',') {
      ptr++;
    }
    return result;
  }
  return result;
}

}  // namespace

std::string CSVunescape(const char*& ptr) {
  if (ptr == nullptr) {
    return std::string();
  }
  if (*ptr == '"') {
    ptr++;
    return quotedField(ptr);
  }
  const char* const start = ptr;
  ptr += std::strcspn(ptr, ",");
  std::string result(start, ptr);
  if (*ptr == ',') {
    ptr++;
  }
  return result;
}

std::string trimSuffix(const std::string& Name, int* N) {
  std::size_t start = Name.size();
  while (start > 0 && internal::isDigit(Name[start - 1])) {
    start--;
  }
  const bool suffix = start < Name.size() && start > 0 && Name[start - 1] == '-';
  if (N != nullptr) {
    *N = suffix ? decimal2Int(Name.c_str() + start) : 0;
  }
  return suffix ? Name.substr(0, start - 1) : Name;
}

std::string addSuffix(const std::string& prefix, unsigned int N, unsigned int maxSize) {
  const std::string number = std::to_string(N);
  const std::size_t suffixSize = number.size() + 1;
  std::string result(prefix, 0, maxSize > suffixSize ? maxSize - suffixSize : 0);
  result += '-';
  result += number;
  return result;
}

void setCase(char* text, int length, bool up) {
  const std::size_t n = length < 0 ? std::strlen(text) : static_cast<std::size_t>(length);
  for (std::size_t i = 0; i < n; i++) {
    const auto c = static_cast<unsigned char>(text[i]);
    text[i] = static_cast<char>(up ? toupper_l(c, internal::cLocale())
                                   : tolower_l(c, internal::cLocale()));
  }
}

namespace {

template <class Add>
void split(const std::string& text, char separator, const Add& add) {
  std::size_t start = 0;
  for (;;) {
    const std::size_t end = text.find(separator, start);
    if (end == std::string::npos) {
      add(text.substr(start));
      return;
    }
    add(text.substr(start, end - start));
    start = end + 1;
  }
}

}  // namespace

std::vector<std::string> stringToVector(const std::string& text, char separator) {
  std::vector<std::string> result;
  split(text, separator, [&result](std::string piece) { result.push_back(std::move(piece)); });
  return result;
}

std::list<std::string> stringToList(const std::string& text, char separator) {
  std::list<std::string> result;
  split(text, separator, [&result](std::string piece) { result.push_back(std::move(piece)); });
  return result;
}

std::set<std::string> stringToSet(const std::string& text, char separator) {
  std::set<std::string> result;
  split(text, separator, [&result](std::string piece) { result.insert(std::move(piece)); });
  return result;
}

std::vector<std::string> vectorOfStrings(const char* const* array) {
  std::vector<std::string> result;
  for (; array != nullptr && *array != nullptr; array++) {
    result.emplace_back(*array);
  }
  return result;
}

char* copyString(const char* text) {
  if (text == nullptr) {
    return nullptr;
  }
  const std::size_t size = std::strlen(text) + 1;
  return static_cast<char*>(std::memcpy(new char[size], text, size));
}

char* copyString(const std::string& text) {
  const std::size_t size = text.size() + 1;
  return static_cast<char*>(std::memcpy(new char[size], text.c_str(), size));
}

std::ostream& operator<<(std::ostream& out, const std::vector<std::string>& strings) {
  out << "{ ";
  for (const std::string& text : strings) {
    out << quote(text) << ' ';
  }
  return out << '}';
}
