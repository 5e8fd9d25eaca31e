#include "bytearray.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <string_view>

#include "asserts.h"
#include "conversion.h"

namespace {

constexpr std::string_view hexDigits = "0123456789abcdefABCDEF";
constexpr std::string_view radix64Digits =
    "=ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The value of each ASCII character in radix 64, -1 outside the alphabet.
constexpr std::array<signed char, 128> radix64lookup = [] {
  std::array<signed char, 128> table{};
  table.fill(-1);
  for (std::size_t i = 1; i < radix64Digits.size(); i++) {
    table[static_cast<unsigned char>(radix64Digits[i])] = static_cast<signed char>(i - 1);
  }
  return table;
}();

constexpr int radix64Digit(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < radix64lookup.size() ? radix64lookup[byte] : -1;
}

constexpr char radix64Char(unsigned int value) {
  return radix64Digits[1 + (value & 63)];
}

unsigned int hexValue(char c) {
  return static_cast<unsigned int>(hexDigit(static_cast<signed char>(c)));
}

// The radix that a text is written in, 0 when it is neither.
unsigned int detectRadix(std::string_view text) {
  if (text.size() % 2 != 0 || text.find_first_not_of(radix64Digits) != std::string_view::npos) {
    return 0;
  }
  return text.find_first_not_of(hexDigits) == std::string_view::npos ? 16 : 64;
}

void appendHex(std::string& out, unsigned char byte) {
  out += hexDigits[byte >> 4];
  out += hexDigits[byte & 15];
}

}  // namespace

ByteArray::ByteArray(unsigned int size, const char* bytes)
    : ByteArray(size, reinterpret_cast<const unsigned char*>(bytes)) {}

ByteArray::ByteArray(unsigned int size, const unsigned char* bytes) {
  if (reserve(size) && bytes != nullptr) {
    std::copy_n(bytes, size, content);
  }
}

ByteArray::ByteArray(const char* text, unsigned int radix) {
  if (!set(text, radix)) {
    length = 0;
  }
}

ByteArray::ByteArray(const ByteArray& other) : ByteArray(other.length, other.content) {}

ByteArray& ByteArray::operator=(const ByteArray& other) {
  if (this != &other && reserve(other.length)) {
    std::copy_n(other.content, length, content);
  }
  return *this;
}

ByteArray::~ByteArray() {
  delete[] content;
}

bool ByteArray::reserve(unsigned int size) {
  if (allocated < size) {
    delete[] content;
    content = new (std::nothrow) unsigned char[size];
    allocated = content != nullptr ? size : 0;
  }
  length = std::min(size, allocated);
  return length == size;
}

bool ByteArray::set(const char* text, unsigned int radix) {
  if (text == nullptr) {
    return false;
  }
  if (radix == 0) {
    radix = detectRadix(text);
  }
  switch (radix) {
    case 16:
      return setHex(text);
    case 64:
      return setRadix64(text);
    default:
      return false;
  }
}

bool ByteArray::setHex(const char* text) {
  const char* end = text;
  while (hexDigit(static_cast<signed char>(*end)) >= 0) {
    end++;
  }
  const auto n = static_cast<unsigned int>(end - text);
  if (!reserve((n + 1) / 2)) {
    return false;
  }
  unsigned char* out = content;
  if (n % 2 != 0) {
    *out++ = static_cast<unsigned char>(hexValue(*text++));
  }
  for (; text < end; text += 2) {
    *out++ = static_cast<unsigned char>(hexValue(text[0]) << 4 | hexValue(text[1]));
  }
  return true;
}

bool ByteArray::setRadix64(const char* text) {
  const char* end = text;
  while (radix64Digit(*end) >= 0) {
    end++;
  }
  const auto n = static_cast<unsigned int>(end - text);
  const auto padding = static_cast<unsigned int>(std::strspn(end, "="));
  if (padding > 2 || (n + padding) % 4 != 0 || !reserve(n / 4 * 3 + n % 4 * 3 / 4)) {
    return false;
  }
  unsigned char* out = content;
  const auto value = [](char c) { return static_cast<unsigned int>(radix64Digit(c)); };
  for (; end - text >= 4; text += 4) {
    const unsigned int bits =
        value(text[0]) << 18 | value(text[1]) << 12 | value(text[2]) << 6 | value(text[3]);
    *out++ = static_cast<unsigned char>(bits >> 16);
    *out++ = static_cast<unsigned char>(bits >> 8);
    *out++ = static_cast<unsigned char>(bits);
  }
  if (padding > 0) {  // two characters remain, or three
    const unsigned int bits =
        value(text[0]) << 12 | value(text[1]) << 6 | (padding == 1 ? value(text[2]) : 0);
    *out++ = static_cast<unsigned char>(bits >> 10);
    if (padding == 1) {
      *out++ = static_cast<unsigned char>(bits >> 2);
    }
  }
  return true;
}

std::string ByteArray::format(unsigned int radix) const {
  switch (radix) {
    case 16:
      return formatHex();
    case 64:
      return formatRadix64();
    default:
      return std::string();
  }
}

std::string ByteArray::formatHex() const {
  std::string result;
  result.reserve(std::size_t{2} * length);
  for (unsigned int i = 0; i < length; i++) {
    appendHex(result, content[i]);
  }
  return result;
}

std::string ByteArray::formatRadix64() const {
  std::string result;
  result.reserve((std::size_t{length} + 2) / 3 * 4);
  unsigned int i = 0;
  for (; length - i >= 3; i += 3) {
    const unsigned int bits = static_cast<unsigned int>(content[i]) << 16 |
                              static_cast<unsigned int>(content[i + 1]) << 8 | content[i + 2];
    result += radix64Char(bits >> 18);
    result += radix64Char(bits >> 12);
    result += radix64Char(bits >> 6);
    result += radix64Char(bits);
  }
  if (length - i == 1) {
    const unsigned int bits = static_cast<unsigned int>(content[i]) << 4;
    result += radix64Char(bits >> 6);
    result += radix64Char(bits);
    result += "==";
  } else if (length - i == 2) {
    const unsigned int bits = static_cast<unsigned int>(content[i]) << 10 |
                              static_cast<unsigned int>(content[i + 1]) << 2;
    result += radix64Char(bits >> 12);
    result += radix64Char(bits >> 6);
    result += radix64Char(bits);
    result += '=';
  }
  return result;
}

std::string ByteArray::OMBRformat(int prefixBytes) const {
  if (prefixBytes < 1 || (prefixBytes < 4 && length >> (8 * prefixBytes) != 0)) {
    return std::string();
  }
  const std::size_t resultSize = (std::size_t{length} + static_cast<std::size_t>(prefixBytes)) * 2;
  std::string result;
  result.reserve(resultSize);
  // From the ninth digit on the shift count is taken modulo 32, so that the low
  // digits repeat: readers rely on it.
  for (unsigned int digit = 2 * static_cast<unsigned int>(prefixBytes); digit-- > 0;) {
    result += hexDigits[length >> (4 * digit % 32) & 15];
  }
  result += formatHex();
  ASSERT(resultSize == result.size());
  return result;
}

std::string ByteArray::text() const {
  return length != 0 ? std::string(reinterpret_cast<const char*>(content), length) : std::string();
}

namespace {

// What an index beyond the end refers to.
unsigned char& spareByte() {
  static unsigned char spare;
  spare = 0;
  return spare;
}

}  // namespace

unsigned char& ByteArray::operator[](unsigned int index) {
  return index < length ? content[index] : spareByte();
}

const unsigned char& ByteArray::operator[](unsigned int index) const {
  return index < length ? content[index] : spareByte();
}

bool ByteArray::operator==(const ByteArray& other) const {
  return std::equal(content, content + length, other.content, other.content + other.length);
}

bool ByteArray::operator<(const ByteArray& other) const {
  return std::lexicographical_compare(content, content + length, other.content,
                                      other.content + other.length);
}
