#include "conversion.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <ostream>

#include "ascii.h"
#include "c_locale.h"

namespace {

// The digits of the magnitude, so that the smallest int works as well.
std::string digits(int value, unsigned int base) {
  auto rest = static_cast<std::uint32_t>(value);
  if (value < 0) {
    rest = 0 - rest;
  }
  std::string result;
  do {
    result += "0123456789ABCDEF"[rest % base];
    rest /= base;
  } while (rest != 0);
  std::reverse(result.begin(), result.end());
  return result;
}

// The sign counts as one of the `width` characters.
std::string padded(int value, unsigned int base, int width) {
  std::string result = digits(value, base);
  const std::size_t sign = value < 0 ? std::size_t{1} : 0;
  const std::size_t wanted = width > 0 ? static_cast<std::size_t>(width) : 0;
  if (wanted > result.size() + sign) {
    result.insert(0, wanted - result.size() - sign, '0');
  }
  if (value < 0) {
    result.insert(0, 1, '-');
  }
  return result;
}

}  // namespace

// --- Numbers ---------------------------------------------------------------

int decimal2Int(const char*& text) {
  if (text == nullptr || !isDigit(*text)) {
    return -1;
  }
  std::int64_t result = 0;
  const char* p = text;
  for (; isDigit(*p); p++) {
    result = 10 * result + (*p - '0');
    if (result > INT32_MAX) {
      return -1;
    }
  }
  text = p;
  return static_cast<int>(result);
}

int decimal2Int(const char* const& text) {
  const char* p = text;
  return decimal2Int(p);
}

int decimal2Int(const std::string& text) {
  const char* p = text.c_str();
  return decimal2Int(p);
}

void int2decimal(std::string& out, int value) {
  out += padded(value, 10, 1);
}

std::string int2decimal(int value) {
  return padded(value, 10, 1);
}

std::string int2decimal(int value, int width) {
  return padded(value, 10, width);
}

void int2hex(std::string& out, int value) {
  out += padded(value, 16, 1);
}

std::string int2hex(int value, int digits) {
  return padded(value, 16, digits);
}

int hexDigit(signed char c) {
  if (c >= '0' && c <= '9') {
    return c - '0';
  }
  if (c >= 'A' && c <= 'F') {
    return c - 'A' + 10;
  }
  if (c >= 'a' && c <= 'f') {
    return c - 'a' + 10;
  }
  return -1;
}

bool allNumeric(const char* text) {
  if (text == nullptr || !isDigit(*text)) {
    return false;
  }
  while (isDigit(*text)) {
    text++;
  }
  return *text == '\0';
}

// --- Byte buffers ----------------------------------------------------------

std::uint32_t getU32(const unsigned char* bytes) {
  return static_cast<std::uint32_t>(bytes[0]) << 24 | static_cast<std::uint32_t>(bytes[1]) << 16 |
         static_cast<std::uint32_t>(bytes[2]) << 8 | bytes[3];
}

void setU32(unsigned int value, unsigned char* bytes) {
  bytes[0] = static_cast<unsigned char>(value >> 24);
  bytes[1] = static_cast<unsigned char>(value >> 16);
  bytes[2] = static_cast<unsigned char>(value >> 8);
  bytes[3] = static_cast<unsigned char>(value);
}

std::uint16_t getU16(const unsigned char* bytes) {
  return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
}

std::uint16_t getU16(const char* bytes) {
  const unsigned char copy[2] = {static_cast<unsigned char>(bytes[0]),
                                 static_cast<unsigned char>(bytes[1])};
  return getU16(copy);
}

void setU16(unsigned short value, unsigned char* bytes) {
  bytes[0] = static_cast<unsigned char>(value >> 8);
  bytes[1] = static_cast<unsigned char>(value);
}

// --- Text ------------------------------------------------------------------

std::string quote(const std::string& text) {
  std::string result;
  result.reserve(text.size() + 2);
  result += '"';
  for (const char c : text) {
    const auto byte = static_cast<signed char>(c);  // bytes from 128 up are below 32
    if (byte >= 32 && byte != 127) {
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

// Reads a field behind its opening quote.
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
  while (start > 0 && isDigit(Name[start - 1])) {
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
    text[i] = static_cast<char>(up ? toupper_l(c, cLocale()) : tolower_l(c, cLocale()));
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
