// SPDX-License-Identifier: MIT
#include "conversion.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "ascii.h"

namespace {

// The digits of the magnitude.  So the smallest int works as well.
std::string digits(int value, unsigned int base) {
  auto rest = static_cast<std::uint32_t>(value);
  if (value < 0) {
    rest = 0 - rest;
  }
  std::string result;
  do {
    result += internal::HEX_DIGITS[rest % base];
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
  if (text == nullptr || !internal::isDigit(*text)) {
    return -1;
  }
  std::int64_t result = 0;
  const char* p = text;
  for (; internal::isDigit(*p); p++) {
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
  return internal::hexValue(static_cast<char>(c));
}

bool allNumeric(const char* text) {
  if (text == nullptr || !internal::isDigit(*text)) {
    return false;
  }
  while (internal::isDigit(*text)) {
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
